#include <gtest/gtest.h>

#include <QUrl>

#include <atomic>
#include <thread>

#include "AvbWriter.h"
#include "DatabaseTestSupport.h"
#include "MdbWriter.h"
#include "MxfWriter.h"
#include "items/TarnVocabulary.h"

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
    QDir().mkpath(folder + "/Creating");

    ASSERT_TRUE(scanFolder(root));
    EXPECT_EQ(allNames(), QStringList({"A01.mxf", "A02.mxf", "stray.mxf"}));
    auto listed = itemNamed("A01.mxf");
    // Without a media database the file itself completes the item, which then
    // counts as unreferenced.
    EXPECT_FALSE(listed->DB_isReferenced);
    EXPECT_TRUE(listed->DB_FileExists);
    EXPECT_EQ(listed->DB_ProjectName, "Doc");
    EXPECT_EQ(listed->DB_itemPath, folder + "/A01.mxf");
    EXPECT_EQ(listed->shortFileUID(), 1u);
    EXPECT_EQ(listed->DB_filesize.value_or(0), 100u);
    EXPECT_EQ(itemNamed("stray.mxf")->DB_ProjectName, TarnDatabaseItem::GetProjectNameUnmanaged());
    // The view is ready: every item shown.
    EXPECT_EQ(core.getItemsCount(), 3);
    EXPECT_EQ(core.getProjectsCount(), 2);
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

TEST_F(ScanTest, AllVolumesScanWalksTheSixRootsAndLeavesUMEOut) {
    const QStringList roots = TarnScanner::mediaFolderRoots(root);
    EXPECT_EQ(roots, QStringList({root + "/Avid MediaFiles/MXF/", root + "/MXF/MXF/",
                                  root + "/Avid MediaFiles/UME/",
                                  root + "/Users/Shared/AvidMediaComposer/MXF/MXF/",
                                  root + "/Users/Shared/AvidMediaComposer/Avid MediaFiles/MXF/",
                                  root + "/OMFI MediaFiles/"}));
    quint64 uid = 1;
    for (const QString& r : roots)
        dbtest::writeMediaFolder(r + "1",
                                 {makePmrEntry(uid, QStringLiteral("m%1.mxf").arg(uid), "P")}),
            ++uid;
    for (const QString& r : TarnScanner::umeFolderRoots(root))
        dbtest::writeMediaFolder(r + "1", {makePmrEntry(100 + uid++, "ume.mxf", "P")});
    // Media outside every root are not found either.
    dbtest::writeMediaFolder(root + "/Elsewhere/1", {makePmrEntry(999, "other.mxf", "P")});

    // A stale database goes away first.
    core.AddItemsFromArray({dbtest::makeItem(4242, "stale.mxf")});
    ASSERT_TRUE(scan(TarnScanner::Kind::AllVolumes, {root}));
    EXPECT_EQ(allNames(),
              QStringList({"m1.mxf", "m2.mxf", "m3.mxf", "m4.mxf", "m5.mxf", "m6.mxf"}));
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

TEST_F(ScanTest, ShowOnlyExistingFilesHidesIndexedFilesThatAreMissing) {
    dbtest::writeMediaFolder(root + "/1", {makePmrEntry(1, "gone.mxf", "P")}, {"here.mxf"},
                             /*listedOnDisk=*/false);
    setPreference(TarnPreferences::kShowOnlyExistingFiles, 1);
    ASSERT_TRUE(scanFolder(root));
    EXPECT_EQ(dbtest::shownNames(core), QStringList({"here.mxf"}));

    setPreference(TarnPreferences::kShowOnlyExistingFiles, 0);
    ASSERT_TRUE(scan(TarnScanner::Kind::SingleFolder, {}));
    EXPECT_EQ(dbtest::shownNames(core), QStringList({"gone.mxf", "here.mxf"}));
    EXPECT_FALSE(itemNamed("gone.mxf")->DB_FileExists);
    EXPECT_TRUE(itemNamed("gone.mxf")->DB_isReferenced);
}

TEST_F(ScanTest, FinishedScanReportsItsTimeAndFreesTheWheels) {
    dbtest::writeMediaFolder(root + "/1", {makePmrEntry(1, "a.mxf", "P")});
    auto* status = TarnStatusViewController::getTheController();
    testsupport::LogCapture log;
    ASSERT_TRUE(scanFolder(root));
    EXPECT_TRUE(log.contains("Execution Time: "));
    EXPECT_TRUE(status->statusText().startsWith("Execution Time: "));
    EXPECT_EQ(status->wheelsleft(), TarnStatusViewController::TarnMAXWheels);

    // The all-volumes scan reports its time only in the status line.
    testsupport::LogCapture quiet;
    ASSERT_TRUE(scan(TarnScanner::Kind::AllVolumes, {root}));
    EXPECT_FALSE(quiet.contains("Execution Time: "));
    EXPECT_TRUE(status->statusText().startsWith("Execution Time: "));
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
    ASSERT_TRUE(scanFolder(root));
    QObject::disconnect(texts);
    QObject::disconnect(counts);
    EXPECT_EQ(told, QStringList({"Working (running)", "count 0 (running)", "count 1 (idle)",
                                 "Done (idle)", "Execution Time (idle)"}));
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

fixtures::MdbClip videoClip(quint64 uid, const QString& name, bool audio = false) {
    fixtures::MdbClip clip;
    clip.fileShortUID = uid;
    clip.materialShortUID = uid + 1;
    clip.clipName = name;
    clip.project = QStringLiteral("Feature");
    clip.frameRate = {25, 1};
    clip.audio = audio;
    clip.resolutionID = audio ? 0 : 1237;
    std::memcpy(clip.fourCC, audio ? "\0\0\0\0" : "AVdn", 4);
    clip.bits = 8;
    return clip;
}

// The media database completes listed items, the MXF reader unlisted files,
// each only while its preference is on.
TEST_F(ScanTest, ReadersCompleteTheItemsWhileTheirPreferencesAreOn) {
    const QString folder = root + "/1";
    dbtest::writeMediaFolder(
        folder, {makePmrEntry(10, "V01.mxf", "Feature"), makePmrEntry(20, "A01.mxf", "Feature")});
    fixtures::writeFile(folder + "/msmMMOB.mdb", fixtures::writeMdb({videoClip(10, "Interview"),
                                                                     videoClip(20, "A1", true)}));
    fixtures::MxfClip mxf;
    mxf.clipName = QStringLiteral("Lost Take");
    mxf.projectName = QStringLiteral("Lost Project");
    ASSERT_TRUE(fixtures::writeMxfFile(folder + "/unlisted.mxf", mxf));

    ASSERT_TRUE(scanFolder(folder));
    ASSERT_EQ(core.getAllItemsCount(), 3);
    auto video = itemNamed("V01.mxf");
    EXPECT_EQ(video->DB_NameInBin, "Interview");
    EXPECT_EQ(video->DB_CompressionString, core.vocabulary().resolutionIDDictionary().at(1237));
    EXPECT_EQ(video->DB_framerate().numerator, 25u);
    // Completed from the media database, the item stays a listed one.
    EXPECT_TRUE(video->DB_isReferenced);
    EXPECT_EQ(itemNamed("A01.mxf")->DB_CompressionString, "Audio");
    auto unlisted = itemNamed("unlisted.mxf");
    EXPECT_EQ(unlisted->DB_NameInBin, "Lost Take");
    EXPECT_EQ(unlisted->DB_ProjectName, "Lost Project");
    EXPECT_FALSE(unlisted->DB_isReferenced);

    setPreference(TarnPreferences::kScanMDB, 0);
    setPreference(TarnPreferences::kScanMXF, 0);
    core.clear();
    ASSERT_TRUE(scanFolder(folder));
    EXPECT_TRUE(itemNamed("V01.mxf")->DB_NameInBin.isEmpty());
    EXPECT_TRUE(itemNamed("V01.mxf")->DB_CompressionString.isEmpty());
    EXPECT_TRUE(itemNamed("unlisted.mxf")->DB_NameInBin.isEmpty());
    EXPECT_EQ(itemNamed("unlisted.mxf")->DB_ProjectName,
              TarnDatabaseItem::GetProjectNameUnmanaged());
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
    EXPECT_EQ(dbtest::shownNames(core), QStringList({"m2-copy.mxf", "m2.mxf"}));
    core.AVBArray_Add({bin("fourth.avb", {40, 40}), third});
    EXPECT_EQ(dbtest::shownNames(core), QStringList({"m2-copy.mxf", "m2.mxf", "m3.mxf", "m4.mxf"}));

    // Bins that reference nothing in the database.
    core.AVBArray_Subtract({foreign});
    core.AVBArray_Subtract({nothing});
    core.AVBArray_IntersectWith({nothing});  // nothing read: nothing changes
    EXPECT_EQ(core.getItemsCount(), 4);
    core.AVBArray_IntersectWith({foreign});
    EXPECT_EQ(core.getItemsCount(), 0);

    // AMA links are only looked for; the view stays as it is.
    EXPECT_TRUE(core.parseAMAfromAVBs({both}).isEmpty());
    EXPECT_EQ(core.getItemsCount(), 0);
}

}  // namespace
