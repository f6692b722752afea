#include <gtest/gtest.h>

#include <QUrl>

#include <atomic>
#include <thread>

#include "AvbWriter.h"
#include "DatabaseTestSupport.h"
#include "MdbWriter.h"
#include "MxfWriter.h"

using fixtures::makePmrEntry;

// Scans of written volumes: what the walk finds, what the readers complete,
// what is logged and what the view and the status line are told.
namespace {

using ScanTest = dbtest::ScanFixture;

TEST_F(ScanTest, IndexedAndUnlistedFilesBecomeItems) {
    const QString folder = root + "/Avid MediaFiles/MXF/1";
    dbtest::writeMediaFolder(folder,
                             {makePmrEntry(1, "A01.mxf", "Doc"), makePmrEntry(2, "A02.mxf", "Doc")},
                             {"stray.mxf", "sub/inner.mxf"});

    ASSERT_TRUE(scanFolder(root));
    EXPECT_EQ(itemLines(), QStringList({"Avid MediaFiles/MXF/1/A01.mxf (100)",
                                        "Avid MediaFiles/MXF/1/A02.mxf (100)",
                                        "Avid MediaFiles/MXF/1/stray.mxf (10)"}));
    auto listed = itemNamed("A01.mxf");
    // Without a media database the file itself completes the item, which then
    // counts as unreferenced.
    EXPECT_FALSE(listed->DB_isReferenced);
    EXPECT_EQ(listed->DB_ProjectName, "Doc");
    EXPECT_EQ(listed->shortFileUID(), 1u);
    EXPECT_EQ(itemNamed("stray.mxf")->DB_ProjectName, TarnDatabaseItem::GetProjectNameUnmanaged());
    EXPECT_EQ(core.getItemsCount(), 3);  // the view is ready
}

// An item is dropped only when identifier and path are both equal.
TEST_F(ScanTest, ScanningAFolderTwiceKeepsEachItemOnceWithOneWarningPerDuplicate) {
    dbtest::writeMediaFolder(
        root + "/1", {makePmrEntry(1, "a.mxf", "P"), makePmrEntry(2, "b.mxf", "P")}, {"c.wav"});
    dbtest::writeMediaFolder(root + "/2", {makePmrEntry(1, "a.mxf", "P")});
    ASSERT_TRUE(scanFolder(root));
    ASSERT_EQ(core.getAllItemsCount(), 4);

    testsupport::LogCapture log;
    ASSERT_TRUE(scanFolder(root));
    EXPECT_EQ(core.getAllItemsCount(), 4);
    EXPECT_EQ(log.count("**** Warning **** comparing items ::EQ item found"), 4);
    EXPECT_EQ(
        log.count(
            QStringLiteral("EQ item found \n:: %1/1/a.mxf is equal to :: %1/1/a.mxf").arg(root)),
        1);
}

// The six media roots of a volume are walked, the UME folders and media
// elsewhere are not; a stale database goes first. Only the status line gets
// the time.
TEST_F(ScanTest, AllVolumesScanWalksTheSixMediaRoots) {
    const QStringList roots = {"Avid MediaFiles/MXF",
                               "MXF/MXF",
                               "Avid MediaFiles/UME",
                               "Users/Shared/AvidMediaComposer/MXF/MXF",
                               "Users/Shared/AvidMediaComposer/Avid MediaFiles/MXF",
                               "OMFI MediaFiles",
                               "Users/Shared/AvidMediaComposer/Avid MediaFiles/UME",
                               "Users/Shared/AvidMediaComposer/MXF/UME",
                               "MXF/UME",
                               "Elsewhere"};
    for (int i = 0; i < roots.size(); ++i) {
        const QString name = QStringLiteral("%1%2.mxf").arg(i < 6 ? "in" : "out").arg(i);
        dbtest::writeMediaFolder(root + '/' + roots[i] + "/1", {makePmrEntry(i + 1, name, "P")});
    }
    core.AddItemsFromArray({dbtest::makeItem(4242, "stale.mxf")});
    testsupport::LogCapture log;
    ASSERT_TRUE(scan(TarnScanner::Kind::AllVolumes, {root}));
    EXPECT_EQ(allNames(),
              QStringList({"in0.mxf", "in1.mxf", "in2.mxf", "in3.mxf", "in4.mxf", "in5.mxf"}));
    EXPECT_FALSE(log.contains("Execution Time: "));
    EXPECT_TRUE(
        TarnStatusViewController::getTheController()->statusText().startsWith("Execution Time: "));
}

TEST_F(ScanTest, CreatingFoldersGetNoMDBLineButTheirIndexesAreRead) {
    dbtest::writeMediaFolder(root + "/media/1", {makePmrEntry(1, "a.mxf", "P")});
    dbtest::writeMediaFolder(root + "/media/CREATING", {makePmrEntry(2, "new.mxf", "P")});
    fixtures::writeFile(root + "/media/2/msmMMOB.mdb", "not read here");
    setPreference(TarnPreferences::kScanMDB, 0);

    testsupport::LogCapture log;
    ASSERT_TRUE(scanFolder(root + "/media"));
    const QString missing = "MDB :: doesn't exist in::";
    EXPECT_TRUE(log.contains(missing + QUrl::fromLocalFile(root + "/media/1/").toString()));
    EXPECT_FALSE(log.contains("CREATING"));
    EXPECT_FALSE(log.contains(missing + QUrl::fromLocalFile(root + "/media/2/").toString()));
    EXPECT_EQ(allNames(), QStringList({"a.mxf", "new.mxf"}));
}

TEST_F(ScanTest, PickingOneIndexFileScansJustItsFolderAndAddsToWhatIsThere) {
    dbtest::writeMediaFolder(root + "/1", {makePmrEntry(1, "a.mxf", "P")}, {"u.mxf"});
    dbtest::writeMediaFolder(root + "/2", {makePmrEntry(2, "b.mxf", "P")});
    ASSERT_TRUE(scanFolder(root + "/1/msmFMID.pmr"));
    EXPECT_EQ(allNames(), QStringList({"a.mxf", "u.mxf"}));
    ASSERT_TRUE(scanFolder(root + "/2/msmFMID.pmr"));
    EXPECT_EQ(allNames(), QStringList({"a.mxf", "b.mxf", "u.mxf"}));
}

TEST_F(ScanTest, DamagedOrUnreadableIndexesKeepWhatWasReadBeforeAndTheFiles) {
    auto damaged = makePmrEntry(2, "b.mxf", "P");
    damaged.nameLength = 0;
    const QString folder = root + "/1";
    dbtest::writeMediaFolder(
        folder, {makePmrEntry(1, "a.mxf", "P"), damaged, makePmrEntry(3, "c.mxf", "P")},
        {"extra.mxf"});
    // An index too short to read adds nothing for its folder, not even the files.
    fixtures::writeFile(root + "/2/msmFMID.pmr", QByteArray(29, '\0'));
    fixtures::writeFile(root + "/2/z.mxf", "z");

    testsupport::LogCapture log;
    ASSERT_TRUE(scanFolder(root));
    const QString pmr = folder + "/msmFMID.pmr";
    EXPECT_TRUE(log.contains("Error:: PMR ::" + pmr + "\n"));
    EXPECT_TRUE(log.contains("Error:: PMR ::" + QUrl::fromLocalFile(pmr).toString() + "\n"));
    EXPECT_TRUE(log.contains("Item :: 00000001 of 00000003 \n"));
    EXPECT_TRUE(log.contains("**** Warning **** can't open " + root + "/2/msmFMID.pmr\n"));
    EXPECT_EQ(allNames(), QStringList({"a.mxf", "b.mxf", "c.mxf", "extra.mxf"}));
    EXPECT_EQ(itemNamed("a.mxf")->DB_ProjectName, "P");
    EXPECT_EQ(itemNamed("c.mxf")->DB_ProjectName, TarnDatabaseItem::GetProjectNameUnmanaged());
}

TEST_F(ScanTest, TheRunningMarkIsClearedAsSoonAsTheDatabaseIsReady) {
    dbtest::writeMediaFolder(root + "/1", {makePmrEntry(1, "a.mxf", "P")});
    auto* status = TarnStatusViewController::getTheController();
    // What the view is told, and whether a scan was still running then.
    QStringList told;
    auto note = [&](const QString& what) {
        told << what + (status->isRunning() ? " (running)" : " (idle)");
    };
    const auto texts =
        QObject::connect(status, &TarnStatusViewController::textChanged, [&](const QString& text) {
            if (!text.contains('/')) note(text.section(':', 0, 0));
        });
    const auto counts =
        QObject::connect(&scanner, &TarnScanner::itemCountChanged,
                         [&](qsizetype n) { note(QStringLiteral("count %1").arg(n)); });
    testsupport::LogCapture log;
    ASSERT_TRUE(scanFolder(root));
    QObject::disconnect(texts);
    QObject::disconnect(counts);
    EXPECT_EQ(told, QStringList({"Working (running)", "count 0 (running)", "count 1 (idle)",
                                 "Done (idle)", "Execution Time (idle)"}));
    EXPECT_TRUE(log.contains("Execution Time: "));
    EXPECT_EQ(status->wheelsleft(), TarnStatusViewController::TarnMAXWheels);
}

TEST_F(ScanTest, StartingAScanWhileOneRunsDoesNothing) {
    dbtest::writeMediaFolder(root + "/1", {makePmrEntry(1, "a.mxf", "P")});
    auto* status = TarnStatusViewController::getTheController();
    status->setIsRunning(true);
    EXPECT_FALSE(scanFolder(root));
    EXPECT_FALSE(scanner.start(TarnScanner::Kind::SingleFolder, {root}));
    EXPECT_EQ(core.getAllItemsCount(), 0);
    status->setIsRunning(false);

    // In the background: the end is signalled, and a second start meanwhile is refused.
    std::atomic<int> finished{0};
    QObject::connect(&scanner, &TarnScanner::scanFinished, [&](double) { ++finished; });
    ASSERT_TRUE(scanner.start(TarnScanner::Kind::SingleFolder, {root}));
    const bool second = scanner.start(TarnScanner::Kind::SingleFolder, {root});
    scanner.waitForFinished();
    EXPECT_EQ(finished.load(), second ? 2 : 1);
    EXPECT_EQ(core.getAllItemsCount(), 1);
    EXPECT_FALSE(status->isRunning());
}

TEST_F(ScanTest, AFinishedScanMayStartTheNextFromItsSignal) {
    dbtest::writeMediaFolder(root + "/1", {makePmrEntry(1, "a.mxf", "P")});
    std::atomic<int> finished{0};
    QObject::connect(&scanner, &TarnScanner::scanFinished, [&](double) {
        if (++finished == 1) scanner.start(TarnScanner::Kind::SingleFolder, {root});
    });
    ASSERT_TRUE(scanner.start(TarnScanner::Kind::SingleFolder, {root}));
    while (finished.load() < 2) std::this_thread::yield();
    scanner.waitForFinished();
    EXPECT_EQ(core.getAllItemsCount(), 1);
}

// The media database completes listed items (which then stay listed ones),
// the MXF reader unlisted files, each only while its preference is on.
TEST_F(ScanTest, ReadersCompleteTheItemsWhileTheirPreferencesAreOn) {
    const QString folder = root + "/1";
    dbtest::writeMediaFolder(folder, {makePmrEntry(10, "V01.mxf", "Feature")});
    fixtures::MdbClip clip;
    clip.fileShortUID = 10;
    clip.materialShortUID = 11;
    clip.clipName = QStringLiteral("Interview");
    clip.project = QStringLiteral("Feature");
    fixtures::writeFile(folder + "/msmMMOB.mdb", fixtures::writeMdb({clip}));
    fixtures::MxfClip mxf;
    mxf.clipName = QStringLiteral("Lost Take");
    mxf.projectName = QStringLiteral("Lost Project");
    ASSERT_TRUE(fixtures::writeMxfFile(folder + "/unlisted.mxf", mxf));

    for (int on : {1, 0}) {
        SCOPED_TRACE(on);
        setPreference(TarnPreferences::kScanMDB, on);
        setPreference(TarnPreferences::kScanMXF, on);
        core.clear();
        ASSERT_TRUE(scanFolder(folder));
        ASSERT_EQ(core.getAllItemsCount(), 2);
        const auto listed = itemNamed("V01.mxf"), unlisted = itemNamed("unlisted.mxf");
        EXPECT_EQ(listed->DB_NameInBin, on ? "Interview" : "");
        EXPECT_EQ(listed->DB_isReferenced, on == 1);
        EXPECT_EQ(unlisted->DB_NameInBin, on ? "Lost Take" : "");
        EXPECT_EQ(unlisted->DB_ProjectName,
                  on ? "Lost Project" : TarnDatabaseItem::GetProjectNameUnmanaged());
    }
}

// Bins name media by short identifier: every item with that identifier
// matches, wherever it is.
TEST_F(ScanTest, BinsIntersectSubtractAndAddTheirMedia) {
    QList<fixtures::PmrEntry> entries;
    for (quint64 uid : {1, 2, 3, 4})
        entries << makePmrEntry(uid * 10, QStringLiteral("m%1.mxf").arg(uid), "P");
    dbtest::writeMediaFolder(root + "/1", entries);
    dbtest::writeMediaFolder(root + "/2", {makePmrEntry(20, "m2-copy.mxf", "P")});
    ASSERT_TRUE(scanFolder(root));
    ASSERT_EQ(core.getItemsCount(), 5);

    auto bin = [&](const QString& name, const QList<quint64>& uids) {
        fixtures::writeFile(root + "/bins/" + name, fixtures::writeBin(uids));
        return root + "/bins/" + name;
    };
    const QString both = bin("both.avb", {20, 30}), third = bin("third.avb", {30});
    const QString nothing = bin("nothing.avb", {}), foreign = bin("foreign.avb", {12345});
    fixtures::writeFile(root + "/bins/broken.avb", "not a bin");

    core.AVBArray_IntersectWith({both, root + "/bins/broken.avb"});
    EXPECT_EQ(dbtest::shownNames(core), QStringList({"m2-copy.mxf", "m2.mxf", "m3.mxf"}));
    core.AVBArray_Subtract({third});
    core.AVBArray_Add({bin("fourth.avb", {40, 40})});
    EXPECT_EQ(dbtest::shownNames(core), QStringList({"m2-copy.mxf", "m2.mxf", "m4.mxf"}));

    // Bins that reference nothing in the database; an empty one changes nothing.
    core.AVBArray_Subtract({foreign});
    core.AVBArray_Subtract({nothing});
    core.AVBArray_IntersectWith({nothing});
    EXPECT_EQ(core.getItemsCount(), 3);
    core.AVBArray_IntersectWith({foreign});
    EXPECT_EQ(core.getItemsCount(), 0);

    // AMA links are only looked for; the view stays as it is.
    EXPECT_TRUE(core.parseAMAfromAVBs({both}).isEmpty());
    EXPECT_EQ(core.getItemsCount(), 0);
}

}  // namespace
