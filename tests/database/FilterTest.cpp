#include <gtest/gtest.h>

#include "DatabaseTestSupport.h"

using dbtest::makeItem;

namespace {

class FilterTest : public ::testing::Test, public dbtest::DatabaseTest {
  protected:
    TarnFilter* filter = TarnFilter::sharedFilter();
};

TarnItemPtr withUsage(TarnItemPtr item, qint32 usage) {
    item->DB_usageCode = usage;
    return item;
}

TarnItemPtr audio(TarnItemPtr item) {
    std::memcpy(item->CompressionFourCC, "_AUD", 4);
    return item;
}

TEST_F(FilterTest, TypeStageLetsThroughAnyEnabledType) {
    auto plain = makeItem(1, "plain.mxf");
    auto imported = withUsage(makeItem(2, "imp.mxf"), 15);
    auto precompute = withUsage(makeItem(3, "pre.mxf"), 1);
    auto audioPrecompute = audio(withUsage(makeItem(4, "apre.wav"), 1));
    auto sound = audio(makeItem(5, "a.wav"));

    // Nothing on: everything passes.
    for (auto& item : {plain, imported, precompute, audioPrecompute, sound})
        EXPECT_TRUE(filter->itemPassFilter(item.get()));

    filter->setFilterFlagPrecomputes(true);
    filter->setFilterFlagAudioMedia(true);
    EXPECT_FALSE(filter->itemPassFilter(plain.get()));
    EXPECT_FALSE(filter->itemPassFilter(imported.get()));
    EXPECT_TRUE(filter->itemPassFilter(precompute.get()));
    EXPECT_TRUE(filter->itemPassFilter(audioPrecompute.get()));
    EXPECT_TRUE(filter->itemPassFilter(sound.get()));

    filter->ResetFilter();
    filter->setFilterFlagImportedMedia(true);
    EXPECT_TRUE(filter->itemPassFilter(imported.get()));
    EXPECT_FALSE(filter->itemPassFilter(precompute.get()));
    EXPECT_FALSE(filter->itemPassFilter(nullptr));
}

TEST_F(FilterTest, SearchLooksInFourFieldsIgnoringCase) {
    auto byBinName = makeItem(1, "a.mxf", "P");
    byBinName->DB_NameInBin = QStringLiteral("Interview TAKE 3");
    auto byFileName = makeItem(2, "take_b.mxf", "P");
    auto byProject = makeItem(3, "c.mxf", "BIGTAKEPROJECT");
    auto byPath = makeItem(4, "d.mxf", "P");
    byPath->DB_itemPath = QStringLiteral("/Vol/Takes/d.mxf");
    auto none = makeItem(5, "e.mxf", "P");
    // The fall-back project names are searched too.
    auto nullProject = makeItem(6, "f.mxf");

    filter->setFilterString(QStringLiteral("take"));
    for (auto& item : {byBinName, byFileName, byProject, byPath})
        EXPECT_TRUE(filter->itemPassFilter(item.get())) << item->DB_ClipName.toStdString();
    EXPECT_FALSE(filter->itemPassFilter(none.get()));
    EXPECT_FALSE(filter->itemPassFilter(nullProject.get()));

    filter->setFilterString(QStringLiteral("_null_project"));
    EXPECT_TRUE(filter->itemPassFilter(nullProject.get()));

    // An empty text is no search at all.
    filter->setFilterString(QString(""));
    EXPECT_TRUE(filter->itemPassFilter(none.get()));
}

TEST_F(FilterTest, ProblemStageNeedsOneEnabledProblem) {
    auto unreferenced = makeItem(1, "u.mxf");
    unreferenced->DB_isReferenced = false;
    auto clean = makeItem(2, "c.mxf");
    auto nonPortable = makeItem(3, "n.mxf");
    nonPortable->DB_isPortableFilename = false;
    auto badUmid = makeItem(4, "b.mxf");
    badUmid->DB_isGoodUUID = false;

    filter->setFilterFlagNonPortableFiles(true);
    filter->setFilterFlagUnreferenced(true);
    EXPECT_TRUE(filter->itemPassFilter(unreferenced.get()));
    EXPECT_TRUE(filter->itemPassFilter(nonPortable.get()));
    EXPECT_FALSE(filter->itemPassFilter(clean.get()));
    EXPECT_FALSE(filter->itemPassFilter(badUmid.get()));

    filter->setFilterFlagBadUMID(true);
    EXPECT_TRUE(filter->itemPassFilter(badUmid.get()));
}

TEST_F(FilterTest, AllThreeStagesMustPass) {
    auto item = audio(makeItem(1, "voice.wav", "Doc"));
    item->DB_isReferenced = false;
    filter->setFilterFlagAudioMedia(true);
    filter->setFilterFlagUnreferenced(true);
    filter->setFilterString(QStringLiteral("VOICE"));
    EXPECT_TRUE(filter->itemPassFilter(item.get()));

    filter->setFilterString(QStringLiteral("music"));
    EXPECT_FALSE(filter->itemPassFilter(item.get()));

    filter->setFilterString(QString());
    item->DB_isReferenced = true;
    EXPECT_FALSE(filter->itemPassFilter(item.get()));

    filter->ResetFilter();
    EXPECT_FALSE(filter->filterFlagAudioMedia());
    EXPECT_TRUE(filter->filterString().isEmpty());
    EXPECT_TRUE(filter->itemPassFilter(item.get()));
}

}  // namespace
