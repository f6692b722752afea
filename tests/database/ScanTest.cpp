#include <gtest/gtest.h>

#include <QUrl>

#include <atomic>
#include <thread>

#include "DatabaseTestSupport.h"
#include "TestSupport.h"
#include "database/TarnScanner.h"

using fixtures::makePmrEntry;

namespace {

class ScanTest : public ::testing::Test, public dbtest::DatabaseTest {
  protected:
    bool scan(TarnScanner::Kind kind, const QStringList& inputs) {
        return scanner.run(kind, inputs);
    }
    bool scanFolder(const QString& folder) {
        return scan(TarnScanner::Kind::SingleFolder, {folder});
    }
    TarnItemPtr itemNamed(const QString& name) const {
        for (const auto& item : core.ItemsUnsorted())
            if (item->DB_ClipName == name) return item;
        return nullptr;
    }
    QStringList allNames() const {
        QStringList names;
        for (const auto& item : core.ItemsUnsorted()) names << item->DB_ClipName;
        names.sort();
        return names;
    }

    QTemporaryDir dir;
    QString root = dir.path();
    TarnCore core;
    TarnScanner scanner{&core};
};

TEST_F(ScanTest, IndexedAndUnlistedFilesBecomeItems) {
    const QString folder = root + "/Avid MediaFiles/MXF/1";
    dbtest::writeMediaFolder(folder,
                             {makePmrEntry(1, "A01.mxf", "Doc"), makePmrEntry(2, "A02.mxf", "Doc")},
                             {"stray.mxf"});
    QDir().mkpath(folder + "/sub");
    fixtures::writeFile(folder + "/sub/inner.mxf", "x");
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
    auto stray = itemNamed("stray.mxf");
    EXPECT_FALSE(stray->DB_isReferenced);
    EXPECT_EQ(stray->DB_ProjectName, TarnDatabaseItem::GetProjectNameUnmanaged());
    // The view is ready: every item shown, in the default order.
    EXPECT_EQ(core.getItemsCount(), 3);
    EXPECT_EQ(core.getProjectsCount(), 2);
}

// makeUnique drops an item only when identifier and path are both equal.
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

TEST_F(ScanTest, PickingOneIndexFileScansJustItsFolder) {
    dbtest::writeMediaFolder(root + "/1", {makePmrEntry(1, "a.mxf", "P")}, {"u.mxf"});
    dbtest::writeMediaFolder(root + "/2", {makePmrEntry(2, "b.mxf", "P")});
    ASSERT_TRUE(scanFolder(root + "/1/msmFMID.pmr"));
    EXPECT_EQ(allNames(), QStringList({"a.mxf", "u.mxf"}));
    // Picked items add to what is there.
    ASSERT_TRUE(scanFolder(root + "/2/msmFMID.pmr"));
    EXPECT_EQ(allNames(), QStringList({"a.mxf", "b.mxf", "u.mxf"}));
}

TEST_F(ScanTest, DamagedEntryStopsTheIndexButKeepsEarlierItemsAndTheFiles) {
    auto damaged = makePmrEntry(2, "b.mxf", "P");
    damaged.nameLength = 0;
    const QString folder = root + "/1";
    dbtest::writeMediaFolder(
        folder, {makePmrEntry(1, "a.mxf", "P"), damaged, makePmrEntry(3, "c.mxf", "P")});
    fixtures::writeFile(folder + "/extra.mxf", "e");

    testsupport::LogCapture log;
    ASSERT_TRUE(scanFolder(folder));
    const QString pmr = folder + "/msmFMID.pmr";
    EXPECT_TRUE(log.contains("Error:: PMR ::" + pmr + "\n"));
    EXPECT_TRUE(log.contains("Error:: PMR ::" + QUrl::fromLocalFile(pmr).toString() + "\n"));
    EXPECT_TRUE(log.contains("Item :: 00000001 of 00000003 \n"));
    EXPECT_EQ(allNames(), QStringList({"a.mxf", "b.mxf", "c.mxf", "extra.mxf"}));
    EXPECT_EQ(itemNamed("a.mxf")->DB_ProjectName, "P");
    EXPECT_EQ(itemNamed("c.mxf")->DB_ProjectName, TarnDatabaseItem::GetProjectNameUnmanaged());
}

TEST_F(ScanTest, UnreadableIndexAddsNothingForItsFolder) {
    const QString folder = root + "/1";
    fixtures::writeFile(folder + "/msmFMID.pmr", QByteArray(29, '\0'));
    fixtures::writeFile(folder + "/a.mxf", "a");
    testsupport::LogCapture log;
    ASSERT_TRUE(scanFolder(root));
    EXPECT_TRUE(log.contains("**** Warning **** can't open " + folder + "/msmFMID.pmr\n"));
    EXPECT_EQ(core.getAllItemsCount(), 0);
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

TEST(ScanChaining, AFinishedScanMayStartTheNextFromItsSignal) {
    dbtest::DatabaseTest reset;
    QTemporaryDir dir;
    dbtest::writeMediaFolder(dir.path() + "/1", {makePmrEntry(1, "a.mxf", "P")});
    TarnCore core;
    TarnScanner scanner(&core);
    std::atomic<int> finished{0};
    QObject::connect(&scanner, &TarnScanner::scanFinished, [&](double) {
        if (++finished == 1) scanner.start(TarnScanner::Kind::SingleFolder, {dir.path()});
    });
    ASSERT_TRUE(scanner.start(TarnScanner::Kind::SingleFolder, {dir.path()}));
    while (finished.load() < 2) std::this_thread::yield();
    scanner.waitForFinished();
    EXPECT_EQ(core.getAllItemsCount(), 1);
}

}  // namespace
