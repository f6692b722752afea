// Scans of written volumes: what the walk finds (unusual names, links and
// folders that cannot be read included), what the readers complete, what is
// logged and what the view and the status line are told.
#include <gtest/gtest.h>

#include <QDir>
#include <QProcess>
#include <QUrl>

#include <atomic>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "AvbWriter.h"
#include "DatabaseTestSupport.h"
#include "FixtureFiles.h"
#include "MdbWriter.h"
#include "MxfWriter.h"
#include "PmrWriter.h"
#include "database/TarnScanner.h"
#include "status/TarnStatusViewController.h"
#include "support/TarnFileName.h"

using fixtures::makePmrEntry;

namespace {

// Writes a media folder: its index listing `entries`, a file of 100 bytes for
// each listed entry and the `unlisted` files of 10 bytes.
void writeMediaFolder(const QString& folder, const QList<fixtures::PmrEntry>& entries,
                      const QStringList& unlisted = {}) {
    QDir().mkpath(folder);
    fixtures::writeFile(folder + QStringLiteral("/msmFMID.pmr"), fixtures::writePmr(entries));
    for (const auto& entry : entries)
        fixtures::writeFile(folder + '/' + entry.name, QByteArray(100, 'm'));
    for (const auto& name : unlisted) fixtures::writeFile(folder + '/' + name, QByteArray(10, 'u'));
}

// A volume in a temporary folder, a database and its scanner.
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
    // Every item as "path below the root (size)", -1 for a missing file; sorted.
    QStringList itemLines() const {
        QStringList lines;
        for (const auto& item : core.ItemsUnsorted())
            lines << QStringLiteral("%1 (%2)")
                         .arg(item->DB_itemPath.mid(root.size() + 1))
                         .arg(item->DB_FileExists ? qint64(item->DB_filesize.value_or(0)) : -1);
        lines.sort();
        return lines;
    }

    testsupport::TempDir dir;
    QString root = dir.path();
    TarnCore core;
    TarnScanner scanner{&core};
};

// An item is dropped only when identifier and path are both equal.
TEST_F(ScanTest, ScanningAFolderTwiceKeepsEachItemOnceWithOneWarningPerDuplicate) {
    writeMediaFolder(root + "/1", {makePmrEntry(1, "a.mxf", "P"), makePmrEntry(2, "b.mxf", "P")},
                     {"c.wav"});
    writeMediaFolder(root + "/2", {makePmrEntry(1, "a.mxf", "P")});
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
    const QString shared = "Users/Shared/AvidMediaComposer/";
    const QStringList roots = {
        "Avid MediaFiles/MXF", "MXF/MXF", "Avid MediaFiles/UME", shared + "MXF/MXF",
        shared + "Avid MediaFiles/MXF", "OMFI MediaFiles",
        // not walked:
        shared + "Avid MediaFiles/UME", shared + "MXF/UME", "MXF/UME", "Elsewhere"};
    for (int i = 0; i < roots.size(); ++i) {
        const QString name = QStringLiteral("%1%2.mxf").arg(i < 6 ? "in" : "out").arg(i);
        writeMediaFolder(root + '/' + roots[i] + "/1", {makePmrEntry(i + 1, name, "P")});
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

// An index file scans its folder (not the folders below it) and adds to the
// database.
TEST_F(ScanTest, PickingOneIndexFileScansJustItsFolderAndAddsToWhatIsThere) {
    writeMediaFolder(root + "/1", {makePmrEntry(1, "a.mxf", "P")}, {"u.mxf", "sub/inner.mxf"});
    writeMediaFolder(root + "/2", {makePmrEntry(2, "b.mxf", "P")});
    ASSERT_TRUE(scanFolder(root + "/1/msmFMID.pmr"));
    EXPECT_EQ(itemLines(), QStringList({"1/a.mxf (100)", "1/u.mxf (10)"}));
    EXPECT_EQ(itemNamed("a.mxf")->shortFileUID(), 1u);
    ASSERT_TRUE(scanFolder(root + "/2/msmFMID.pmr"));
    EXPECT_EQ(allNames(), QStringList({"a.mxf", "b.mxf", "u.mxf"}));
}

// A damaged index keeps what was read before the damage (the folder's other
// files count as unlisted); an index too short to read adds nothing for its
// folder, not even the files. A "Creating" folder's index is read, but no line
// tells that it has no media database.
TEST_F(ScanTest, DamagedUnreadableAndCreatingIndexes) {
    auto damaged = makePmrEntry(2, "b.mxf", "P");
    damaged.nameLength = 0;
    writeMediaFolder(root + "/1",
                     {makePmrEntry(1, "a.mxf", "P"), damaged, makePmrEntry(3, "c.mxf", "P")},
                     {"extra.mxf"});
    fixtures::writeFile(root + "/2/msmFMID.pmr", QByteArray(29, '\0'));
    fixtures::writeFile(root + "/2/z.mxf", "z");
    writeMediaFolder(root + "/CREATING", {makePmrEntry(4, "new.mxf", "P")});
    fixtures::writeFile(root + "/3/msmMMOB.mdb", "not read here");
    setPreference(TarnPreferences::kScanMDB, 0);

    testsupport::LogCapture log;
    ASSERT_TRUE(scanFolder(root));
    const QString pmr = root + "/1/msmFMID.pmr", noMdb = "MDB :: doesn't exist in::";
    EXPECT_TRUE(log.contains("Error:: PMR ::" + pmr + "\n"));
    EXPECT_TRUE(log.contains("Error:: PMR ::" + QUrl::fromLocalFile(pmr).toString() + "\n"));
    EXPECT_TRUE(log.contains("Item :: 00000001 of 00000003 \n"));
    EXPECT_TRUE(log.contains("**** Warning **** can't open " + root + "/2/msmFMID.pmr\n"));
    EXPECT_TRUE(log.contains(noMdb + QUrl::fromLocalFile(root + "/1/").toString()));
    EXPECT_FALSE(log.contains(noMdb + QUrl::fromLocalFile(root + "/3/").toString()));
    EXPECT_FALSE(log.contains("CREATING"));
    EXPECT_EQ(allNames(), QStringList({"a.mxf", "b.mxf", "c.mxf", "extra.mxf", "new.mxf"}));
    EXPECT_EQ(itemNamed("a.mxf")->DB_ProjectName, "P");
    EXPECT_EQ(itemNamed("c.mxf")->DB_ProjectName, TarnDatabaseItem::GetProjectNameUnmanaged());
}

TEST_F(ScanTest, TheRunningMarkIsClearedAsSoonAsTheDatabaseIsReady) {
    writeMediaFolder(root + "/1", {makePmrEntry(1, "a.mxf", "P")});
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

// While a scan runs another is refused; in the background the end is
// signalled, and a handler of that signal may start the next scan.
TEST_F(ScanTest, AScanStartsOnlyWhenNoneRuns) {
    writeMediaFolder(root + "/1", {makePmrEntry(1, "a.mxf", "P")});
    auto* status = TarnStatusViewController::getTheController();
    status->setIsRunning(true);
    EXPECT_FALSE(scanFolder(root));
    EXPECT_FALSE(scanner.start(TarnScanner::Kind::SingleFolder, {root}));
    EXPECT_EQ(core.getAllItemsCount(), 0);
    status->setIsRunning(false);

    std::atomic<int> finished{0};
    QObject::connect(&scanner, &TarnScanner::scanFinished, [&](double) {
        if (++finished == 1) scanner.start(TarnScanner::Kind::SingleFolder, {root});
    });
    ASSERT_TRUE(scanner.start(TarnScanner::Kind::SingleFolder, {root}));
    while (finished.load() < 2) std::this_thread::yield();
    scanner.waitForFinished();
    EXPECT_EQ(core.getAllItemsCount(), 1);
    EXPECT_FALSE(status->isRunning());
}

// The media database completes listed items (which then stay listed ones),
// the MXF reader unlisted files, each only while its preference is on.
TEST_F(ScanTest, ReadersCompleteTheItemsWhileTheirPreferencesAreOn) {
    const QString folder = root + "/1";
    writeMediaFolder(folder, {makePmrEntry(10, "V01.mxf", "Feature")});
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
// matches, wherever it is. (The scan command tests run the usual sequences.)
TEST_F(ScanTest, BinsIntersectSubtractAndAddTheirMedia) {
    QList<fixtures::PmrEntry> entries;
    for (quint64 uid : {1, 2, 3, 4})
        entries << makePmrEntry(uid * 10, QStringLiteral("m%1.mxf").arg(uid), "P");
    writeMediaFolder(root + "/1", entries);
    writeMediaFolder(root + "/2", {makePmrEntry(20, "m2-copy.mxf", "P")});
    ASSERT_TRUE(scanFolder(root));

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

// Listed names (100 bytes each) and, beside them, the files their
// percent-decoded forms would name (10 bytes each), which the index does not
// list: each is an item of its own.
TEST_F(ScanTest, NamesWithPercentSignsAreEachAccountedForOnce) {
    QList<fixtures::PmrEntry> entries;
    for (const char* name : {"Mix 100%.wav", "a%41b.wav", "Clip%20One.wav", "two%%.wav", "end%"})
        entries << makePmrEntry(entries.size() + 1, name, "P");
    writeMediaFolder(root + "/1", entries, {"aAb.wav", "Clip One.wav"});
    ASSERT_TRUE(scanFolder(root));
    EXPECT_EQ(itemLines(), QStringList({"1/Clip One.wav (10)", "1/Clip%20One.wav (100)",
                                        "1/Mix 100%.wav (100)", "1/a%41b.wav (100)",
                                        "1/aAb.wav (10)", "1/end% (100)", "1/two%%.wav (100)"}));
}

// Links to a sibling folder, up the tree (a cycle), to the folder itself and
// to the root of the system are not followed; a link to a file is a file.
TEST_F(ScanTest, LinksToFoldersAreNotFollowedAndLinksToFilesAreFiles) {
    writeMediaFolder(root + "/media/1", {makePmrEntry(1, "a.mxf", "P")});
    fixtures::writeFile(root + "/elsewhere/real.wav", QByteArray(77, 'w'));
    const QPair<const char*, const char*> links[] = {{"1", "media/2"},
                                                     {"..", "media/1/up"},
                                                     {"../../media", "media/1/loop"},
                                                     {".", "media/1/here"},
                                                     {".", "media/1/again"},
                                                     {"/", "media/1/everything"},
                                                     {"../../elsewhere/real.wav", "media/1/b.wav"}};
    for (const auto& [target, at] : links) {
        ASSERT_EQ(::symlink(target, TarnFileName::encode(root + '/' + at).constData()), 0) << at;
    }
    ASSERT_TRUE(scanFolder(root + "/media"));
    EXPECT_EQ(itemLines(), QStringList({"media/1/a.mxf (100)", "media/1/b.wav (77)"}));
}

// A chain of folders whose full path is longer than the system takes. `rm`
// removes it: the temporary folder's own removal goes by full paths.
struct DeepFolders {
    explicit DeepFolders(const QString& path) : top(path) {
        QDir().mkpath(top);
        const QByteArray name(200, 'd');
        int fd = ::open(TarnFileName::encode(top).constData(), O_RDONLY | O_DIRECTORY);
        for (int depth = 0; depth < 24 && fd >= 0; ++depth) {
            ::mkdirat(fd, name.constData(), 0755);
            const int next = ::openat(fd, name.constData(), O_RDONLY | O_DIRECTORY);
            ::close(fd);
            fd = next;
        }
        if (fd >= 0) ::close(fd);
    }
    ~DeepFolders() { QProcess::execute(QStringLiteral("rm"), {QStringLiteral("-rf"), top}); }
    QString top;
};

// Before the media in the walk: a folder without permission to read (root
// reads every folder) and a path longer than the system takes.
TEST_F(ScanTest, FoldersThatCannotBeReadAreLoggedAndTheWalkGoesOn) {
    const QByteArray locked = TarnFileName::encode(root + "/media/0");
    QDir().mkpath(root + "/media/0");
    ::chmod(locked.constData(), 0);
    const DeepFolders deep(root + "/media/00");
    writeMediaFolder(root + "/media/1", {makePmrEntry(1, "a.mxf", "P")});
    testsupport::LogCapture log;
    const bool scanned = scanFolder(root + "/media");
    ::chmod(locked.constData(), 0755);
    ASSERT_TRUE(scanned);
    EXPECT_GE(log.count("An error occurred: "), ::geteuid() == 0 ? 1 : 2);
    EXPECT_EQ(itemLines(), QStringList({"media/1/a.mxf (100)"}));
}

TEST_F(ScanTest, NamesThatAreNotUtf8AreScannedAsTheyAreOnDisk) {
    const QString folder = root + "/MXF/" + TarnFileName::decode("\xFF\xFE_folder");
    const QString listed = TarnFileName::decode("caf\xE9.mxf");
    const QString unlisted = TarnFileName::decode("\xE9t\xE9.wav");
    const QString track = TarnFileName::decode("piste \xE9.mxf");
    writeMediaFolder(folder, {makePmrEntry(1, listed, "P")}, {unlisted});
    fixtures::writeFile(folder + "/" + track,
                        fixtures::writeMxf({QStringLiteral("From the MXF"), QStringLiteral("P"),
                                            fixtures::umidFor(7), fixtures::umidFor(8)}));
    fixtures::MdbClip clip;
    clip.fileShortUID = 1;
    clip.materialShortUID = 2;
    clip.clipName = QStringLiteral("From the MDB");
    fixtures::writeFile(folder + "/msmMMOB.mdb", fixtures::writeMdb({clip}));

    // The scan command tests check the listing, sizes and names; here the
    // readers open the files.
    testsupport::LogCapture log;
    ASSERT_TRUE(scanFolder(root + "/MXF"));
    ASSERT_TRUE(itemNamed(listed) && itemNamed(unlisted) && itemNamed(track));
    EXPECT_EQ(itemNamed(listed)->DB_NameInBin, "From the MDB");
    EXPECT_EQ(itemNamed(track)->DB_NameInBin, "From the MXF");
    EXPECT_TRUE(itemNamed(unlisted)->DB_FileExists);
    EXPECT_FALSE(log.contains("can't open"));
}

}  // namespace
