#include <gtest/gtest.h>

#include "DatabaseTestSupport.h"

// Three stages, all of which must pass: the type stage lets through any
// enabled type, the problem stage needs one enabled problem, the search looks
// in bin name, file name, project (with its fall-back name) and path,
// ignoring case. Nothing enabled lets everything through.
TEST(Filter, EveryStageMustPass) {
    dbtest::DatabaseTest reset;
    QList<TarnItemPtr> items;
    for (const char* name : {"plain.mxf", "imported.mxf", "precompute.mxf", "apre.wav", "voice.wav",
                             "np.mxf", "bad.mxf", "a.mxf", "take_b.mxf", "c.mxf", "d.mxf", "f.mxf"})
        items << dbtest::makeItem(items.size() + 1, name, "P");
    items[1]->DB_usageCode = 15;
    items[2]->DB_usageCode = items[3]->DB_usageCode = 1;
    std::memcpy(items[3]->CompressionFourCC, "_AUD", 4);
    std::memcpy(items[4]->CompressionFourCC, "_AUD", 4);
    items[4]->DB_isReferenced = false;
    items[5]->DB_isPortableFilename = false;
    items[6]->DB_isGoodUUID = false;
    items[7]->DB_NameInBin = QStringLiteral("Interview TAKE 3");
    items[9]->DB_ProjectName = QStringLiteral("BIGTAKEPROJECT");
    items[10]->DB_itemPath = QStringLiteral("/Vol/Takes/d.mxf");
    items[11]->DB_ProjectName = QString();

    TarnFilter* filter = TarnFilter::sharedFilter();
    using Flag = void (TarnFilter::*)(bool);
    const Flag precomputes = &TarnFilter::setFilterFlagPrecomputes,
               audio = &TarnFilter::setFilterFlagAudioMedia,
               unreferenced = &TarnFilter::setFilterFlagUnreferenced;
    const struct {
        const char* label;
        QList<Flag> flags;
        QString search;
        QStringList passing;  // "*": every item
    } cases[] = {
        {"nothing enabled", {}, QString(), {"*"}},
        {"an empty search", {}, "", {"*"}},
        {"precomputes or audio",
         {precomputes, audio},
         QString(),
         {"precompute.mxf", "apre.wav", "voice.wav"}},
        {"imported", {&TarnFilter::setFilterFlagImportedMedia}, QString(), {"imported.mxf"}},
        {"non-portable or unreferenced",
         {&TarnFilter::setFilterFlagNonPortableFiles, unreferenced},
         QString(),
         {"voice.wav", "np.mxf"}},
        {"bad UMID", {&TarnFilter::setFilterFlagBadUMID}, QString(), {"bad.mxf"}},
        {"search", {}, "take", {"a.mxf", "take_b.mxf", "c.mxf", "d.mxf"}},
        {"search a fall-back project name", {}, "_null_project", {"f.mxf"}},
        {"audio, unreferenced and a search", {audio, unreferenced}, "VOICE", {"voice.wav"}},
        {"audio, unreferenced and another search", {audio, unreferenced}, "apre", {}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        filter->ResetFilter();
        for (Flag flag : c.flags) (filter->*flag)(true);
        if (!c.search.isNull()) filter->setFilterString(c.search);
        QStringList passing;
        for (const auto& item : items)
            if (filter->itemPassFilter(item.get())) passing << item->DB_ClipName;
        EXPECT_EQ(passing.size() == items.size() ? QStringList{"*"} : passing, c.passing);
        EXPECT_FALSE(filter->itemPassFilter(nullptr));
    }
}
