#include <gtest/gtest.h>

#include <functional>

#include "DatabaseTestSupport.h"

using dbtest::makeItem;

namespace {

class FilterTest : public ::testing::Test, public dbtest::DatabaseTest {};

// Three stages, all of which must pass: the type stage lets through any
// enabled type, the problem stage needs one enabled problem, the search looks
// in bin name, file name, project (with its fall-back name) and path,
// ignoring case. Nothing enabled lets everything through.
TEST_F(FilterTest, EveryStageMustPass) {
    auto audio = [](TarnItemPtr item) {
        std::memcpy(item->CompressionFourCC, "_AUD", 4);
        return item;
    };
    auto set = [](TarnItemPtr item, const std::function<void(TarnDatabaseItem&)>& change) {
        change(*item);
        return item;
    };
    const QList<TarnItemPtr> items = {
        makeItem(1, "plain.mxf", "P"),
        set(makeItem(2, "imported.mxf", "P"), [](auto& i) { i.DB_usageCode = 15; }),
        set(makeItem(3, "precompute.mxf", "P"), [](auto& i) { i.DB_usageCode = 1; }),
        audio(set(makeItem(4, "apre.wav", "P"), [](auto& i) { i.DB_usageCode = 1; })),
        audio(set(makeItem(5, "voice.wav", "P"), [](auto& i) { i.DB_isReferenced = false; })),
        set(makeItem(6, "np.mxf", "P"), [](auto& i) { i.DB_isPortableFilename = false; }),
        set(makeItem(7, "bad.mxf", "P"), [](auto& i) { i.DB_isGoodUUID = false; }),
        set(makeItem(8, "a.mxf", "P"), [](auto& i) { i.DB_NameInBin = "Interview TAKE 3"; }),
        makeItem(9, "take_b.mxf", "P"),
        makeItem(10, "c.mxf", "BIGTAKEPROJECT"),
        set(makeItem(11, "d.mxf", "P"), [](auto& i) { i.DB_itemPath = "/Vol/Takes/d.mxf"; }),
        makeItem(12, "f.mxf"),
    };
    TarnFilter* filter = TarnFilter::sharedFilter();
    struct Case {
        const char* label;
        std::function<void()> setUp;
        QStringList passing;  // "*": every item
    };
    const Case cases[] = {
        {"nothing enabled", [] {}, {"*"}},
        {"an empty search", [&] { filter->setFilterString(QString("")); }, {"*"}},
        {"precomputes or audio",
         [&] {
             filter->setFilterFlagPrecomputes(true);
             filter->setFilterFlagAudioMedia(true);
         },
         {"precompute.mxf", "apre.wav", "voice.wav"}},
        {"imported", [&] { filter->setFilterFlagImportedMedia(true); }, {"imported.mxf"}},
        {"non-portable or unreferenced",
         [&] {
             filter->setFilterFlagNonPortableFiles(true);
             filter->setFilterFlagUnreferenced(true);
         },
         {"voice.wav", "np.mxf"}},
        {"bad UMID", [&] { filter->setFilterFlagBadUMID(true); }, {"bad.mxf"}},
        {"search",
         [&] { filter->setFilterString("take"); },
         {"a.mxf", "take_b.mxf", "c.mxf", "d.mxf"}},
        {"search a fall-back project name",
         [&] { filter->setFilterString("_null_project"); },
         {"f.mxf"}},
        {"audio, unreferenced and a search",
         [&] {
             filter->setFilterFlagAudioMedia(true);
             filter->setFilterFlagUnreferenced(true);
             filter->setFilterString("VOICE");
         },
         {"voice.wav"}},
        {"audio, unreferenced and another search",
         [&] {
             filter->setFilterFlagAudioMedia(true);
             filter->setFilterFlagUnreferenced(true);
             filter->setFilterString("apre");
         },
         {}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        filter->ResetFilter();
        c.setUp();
        QStringList passing;
        for (const auto& item : items)
            if (filter->itemPassFilter(item.get())) passing << item->DB_ClipName;
        if (c.passing == QStringList{"*"})
            EXPECT_EQ(passing.size(), items.size());
        else
            EXPECT_EQ(passing, c.passing);
        EXPECT_FALSE(filter->itemPassFilter(nullptr));
    }
}

}  // namespace
