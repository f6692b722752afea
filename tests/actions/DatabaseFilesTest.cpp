#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>

#include "ActionTestKit.h"
#include "DemoVolume.h"
#include "TestSupport.h"
#include "actions/TarnDatabaseFiles.h"

using namespace actiontest;

namespace {

struct DatabaseFilesFixture : ::testing::Test {
    QTemporaryDir tmp;
    QString volume() const { return tmp.path() + "/Vol"; }
    QString dataHome() const { return tmp.path() + "/data"; }
    QStringList relative(const QList<TarnDatabaseFiles::Entry>& files) const {
        QStringList out;
        for (const auto& file : files) out << QDir(volume()).relativeFilePath(file.path);
        return out;
    }
    void writeDemo() {
        QString error;
        ASSERT_TRUE(fixtures::DemoVolume::write(volume(), &error)) << error.toStdString();
    }
};

TEST_F(DatabaseFilesFixture, OnlyTheFourNamesInTheMediaFolderRoots) {
    const struct {
        const char* path;
        bool listed;
    } cases[] = {
        {"Avid MediaFiles/MXF/5/amaFMID.pmr", true},
        {"Avid MediaFiles/MXF/5/AMAMMOB.MDB", true},  // volumes that ignore case
        {"MXF/MXF/1/msmMMOB.mdb", true},
        {"Users/Shared/AvidMediaComposer/Avid MediaFiles/MXF/1/msmFMID.pmr", true},
        {"Users/Shared/AvidMediaComposer/MXF/MXF/1/msmFMID.pmr", true},
        {"Avid MediaFiles/UME/1/msmFMID.pmr", true},
        {"OMFI MediaFiles/sub/msmFMID.pmr", true},
        {"Avid MediaFiles/MXF/5/msmMMOB.mdb.bak", false},
        {"Avid MediaFiles/MXF/5/clip.mxf", false},
        {"Avid Projects/Harbour/msmMMOB.mdb", false},
        {"msmFMID.pmr", false},
        {"Avid MediaFiles/msmFMID.pmr", false},  // above the MXF root
    };
    QStringList expected;
    for (const auto& c : cases) {
        ASSERT_TRUE(writeFile(volume() + "/" + c.path, "x"));
        if (c.listed) expected << QString::fromUtf8(c.path);
    }
    expected.sort();
    EXPECT_EQ(relative(TarnDatabaseFiles::list({volume()})), expected);
    EXPECT_TRUE(TarnDatabaseFiles::list({tmp.path() + "/nothing-here"}).isEmpty());
}

TEST_F(DatabaseFilesFixture, DeleteTrashesExactlyTheChosenFilesAndSkipsMissingOnes) {
    writeDemo();
    testsupport::ScopedEnv data("XDG_DATA_HOME", dataHome());
    const QList<TarnDatabaseFiles::Entry> all = TarnDatabaseFiles::list({volume()});
    ASSERT_EQ(all.size(), 6);
    // Each entry describes its file (which files: the databases command's test).
    for (const auto& file : all) {
        const QFileInfo info(file.path);
        EXPECT_EQ(file.folder, info.absolutePath());
        EXPECT_EQ(file.fileName, info.fileName());
        EXPECT_EQ(file.size, info.size());
        EXPECT_GT(file.size, 0);
        EXPECT_TRUE(file.date.isValid());
    }
    const QList<TarnDatabaseFiles::Entry> chosen = {all.at(0), all.at(3), all.at(4)};
    ASSERT_TRUE(QFile::remove(all.at(4).path));  // gone before its turn
    const QByteArray kept = readFile(all.at(0).path);

    testsupport::LogCapture log;
    const TarnDatabaseFiles::Result result = TarnDatabaseFiles::moveToTrash(chosen);
    EXPECT_EQ(result.deleted, 2);
    EXPECT_EQ(result.missing, 1);
    EXPECT_EQ(result.failed, 0);
    EXPECT_EQ(testsupport::trashedPaths(dataHome()), QStringList({all.at(0).path, all.at(3).path}));
    EXPECT_EQ(readFile(dataHome() + "/Trash/files/" + all.at(0).fileName), kept);
    for (int i : {1, 2, 5}) EXPECT_TRUE(QFileInfo::exists(all.at(i).path)) << i;
    EXPECT_EQ(relative(TarnDatabaseFiles::list({volume()})),
              relative({all.at(1), all.at(2), all.at(5)}));
    // The run is an action: its log names each file.
    EXPECT_TRUE(result.actionLog.contains(":: Action :: Delete"));
    EXPECT_EQ(result.actionLog.count(":: DELETING :: "), 2);
    EXPECT_EQ(result.actionLog.count(":: SUCCEED ::"), 2);
    EXPECT_TRUE(log.contains("Database file missing, skipped: " + all.at(4).path));
    EXPECT_TRUE(log.contains(":: DELETING :: " + all.at(3).path));
}

TEST(DatabaseFilesText, ConfirmationCountsTheFiles) {
    EXPECT_EQ(TarnDatabaseFiles::confirmationText(1), "Really delete 1 database file?");
    EXPECT_EQ(TarnDatabaseFiles::confirmationText(3), "Really delete 3 database files?");
}

}  // namespace
