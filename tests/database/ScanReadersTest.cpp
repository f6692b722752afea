#include <gtest/gtest.h>

#include "AvbWriter.h"
#include "DatabaseTestSupport.h"
#include "MdbWriter.h"
#include "MxfWriter.h"
#include "TestSupport.h"
#include "database/TarnScanner.h"
#include "items/TarnVocabulary.h"

using fixtures::makePmrEntry;

// Scans whose items are completed by the readers, and the bin set operations
// against bins written like the editing system's.
namespace {

class ScanReadersTest : public ::testing::Test, public dbtest::DatabaseTest {
  protected:
    void scanFolder(const QString& folder) {
        ASSERT_TRUE(scanner.run(TarnScanner::Kind::SingleFolder, {folder}));
    }
    TarnItemPtr itemNamed(const QString& name) const {
        for (const auto& item : core.ItemsUnsorted())
            if (item->DB_ClipName == name) return item;
        return nullptr;
    }
    QString writeBin(const QString& name, const QList<quint64>& uids) {
        const QString path = root + "/bins/" + name;
        fixtures::writeFile(path, fixtures::writeBin(uids));
        return path;
    }

    QTemporaryDir dir;
    QString root = dir.path();
    TarnCore core;
    TarnScanner scanner{&core};
};

fixtures::MdbClip videoClip(quint64 uid, const QString& name) {
    fixtures::MdbClip clip;
    clip.fileShortUID = uid;
    clip.materialShortUID = uid + 1;
    clip.clipName = name;
    clip.project = QStringLiteral("Feature");
    clip.frameRate = {25, 1};
    clip.resolutionID = 1237;
    std::memcpy(clip.fourCC, "AVdn", 4);
    clip.bits = 8;
    return clip;
}

TEST_F(ScanReadersTest, MediaDatabaseCompletesTheItemsWhenScanMDBIsOn) {
    const QString folder = root + "/1";
    dbtest::writeMediaFolder(
        folder, {makePmrEntry(10, "V01.mxf", "Feature"), makePmrEntry(20, "A01.mxf", "Feature")});
    fixtures::MdbClip audio = videoClip(20, "Interview A1");
    audio.audio = true;
    audio.resolutionID = 0;
    std::memset(audio.fourCC, 0, 4);
    fixtures::writeFile(folder + "/msmMMOB.mdb",
                        fixtures::writeMdb({videoClip(10, "Interview"), audio}));

    scanFolder(folder);
    ASSERT_EQ(core.getAllItemsCount(), 2);
    auto video = itemNamed("V01.mxf");
    EXPECT_EQ(video->DB_NameInBin, "Interview");
    EXPECT_EQ(video->DB_CompressionString, core.vocabulary().resolutionIDDictionary().at(1237));
    EXPECT_EQ(video->DB_framerate().numerator, 25u);
    // Completed from the media database, the item stays a listed one.
    EXPECT_TRUE(video->DB_isReferenced);
    EXPECT_EQ(itemNamed("A01.mxf")->DB_CompressionString, "Audio");

    setPreference(TarnPreferences::kScanMDB, 0);
    core.clear();
    scanFolder(folder);
    EXPECT_TRUE(itemNamed("V01.mxf")->DB_NameInBin.isEmpty());
    EXPECT_TRUE(itemNamed("V01.mxf")->DB_CompressionString.isEmpty());
}

TEST_F(ScanReadersTest, UnlistedMXFFilesAreReadWhenScanMXFIsOn) {
    const QString folder = root + "/1";
    dbtest::writeMediaFolder(folder, {makePmrEntry(1, "listed.mxf", "P")});
    fixtures::MxfSpec mxf;
    mxf.clipName = QStringLiteral("Lost Take");
    mxf.projectName = QStringLiteral("Lost Project");
    ASSERT_TRUE(fixtures::writeMxfFile(folder + "/unlisted.mxf", mxf));

    scanFolder(folder);
    auto unlisted = itemNamed("unlisted.mxf");
    ASSERT_TRUE(unlisted);
    EXPECT_EQ(unlisted->DB_NameInBin, "Lost Take");
    EXPECT_EQ(unlisted->DB_ProjectName, "Lost Project");
    EXPECT_FALSE(unlisted->DB_isReferenced);

    setPreference(TarnPreferences::kScanMXF, 0);
    core.clear();
    scanFolder(folder);
    EXPECT_TRUE(itemNamed("unlisted.mxf")->DB_NameInBin.isEmpty());
    EXPECT_EQ(itemNamed("unlisted.mxf")->DB_ProjectName,
              TarnDatabaseItem::GetProjectNameUnmanaged());
}

TEST_F(ScanReadersTest, BinsIntersectSubtractAndAddTheirMedia) {
    QList<fixtures::PmrEntry> entries;
    for (quint64 uid : {1, 2, 3, 4})
        entries << makePmrEntry(uid * 10, QStringLiteral("m%1.mxf").arg(uid), "P");
    dbtest::writeMediaFolder(root + "/1", entries);
    scanFolder(root + "/1");
    ASSERT_EQ(core.getItemsCount(), 4);

    const QString both = writeBin("both.avb", {20, 30});
    const QString third = writeBin("third.avb", {30});
    const QString fourth = writeBin("fourth.avb", {40, 40});
    const QString nothing = writeBin("nothing.avb", {});
    const QString foreign = writeBin("foreign.avb", {12345});
    fixtures::writeFile(root + "/bins/broken.avb", "not a bin");

    core.AVBArray_IntersectWith({both, root + "/bins/broken.avb"});
    EXPECT_EQ(dbtest::shownNames(core), QStringList({"m2.mxf", "m3.mxf"}));
    core.AVBArray_Subtract({third});
    EXPECT_EQ(dbtest::shownNames(core), QStringList({"m2.mxf"}));
    core.AVBArray_Add({fourth, third});
    EXPECT_EQ(dbtest::shownNames(core), QStringList({"m2.mxf", "m3.mxf", "m4.mxf"}));

    // Bins that reference nothing in the database.
    core.AVBArray_Subtract({foreign});
    EXPECT_EQ(core.getItemsCount(), 3);
    core.AVBArray_Subtract({nothing});
    EXPECT_EQ(core.getItemsCount(), 3);
    core.AVBArray_IntersectWith({nothing});  // nothing read: nothing changes
    EXPECT_EQ(core.getItemsCount(), 3);
    core.AVBArray_IntersectWith({foreign});
    EXPECT_EQ(core.getItemsCount(), 0);

    // AMA links are only looked for; the view stays as it is.
    EXPECT_TRUE(core.parseAMAfromAVBs({both}).isEmpty());
    EXPECT_EQ(core.getItemsCount(), 0);
}

}  // namespace
