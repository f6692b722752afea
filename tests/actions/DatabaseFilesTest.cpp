#include "ActionTestKit.h"
#include "DemoVolume.h"
#include "actions/TarnDatabaseFiles.h"

using namespace actiontest;

namespace {

// (Which files of the demo volume, and trashing them: the databases command's
// and the database window's tests.)
struct DatabaseFiles : ::testing::Test {
    QTemporaryDir tmp;
    QString volume() const { return tmp.path() + "/Vol"; }
    QStringList relative(const QList<TarnDatabaseFiles::Entry>& files) const {
        QStringList out;
        for (const auto& file : files) out << QDir(volume()).relativeFilePath(file.path);
        return out;
    }
};

TEST_F(DatabaseFiles, OnlyTheFourNamesInTheMediaFolderRoots) {
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

TEST_F(DatabaseFiles, AFileGoneBeforeItsTurnIsSkippedAndLogged) {
    QString error;
    ASSERT_TRUE(fixtures::DemoVolume::write(volume(), &error)) << error.toStdString();
    testsupport::ScopedEnv data("XDG_DATA_HOME", tmp.path() + "/data");
    const QList<TarnDatabaseFiles::Entry> all = TarnDatabaseFiles::list({volume()});
    ASSERT_EQ(all.size(), 6);
    ASSERT_TRUE(QFile::remove(all.at(4).path));
    testsupport::LogCapture log;
    const TarnDatabaseFiles::Result result = TarnDatabaseFiles::moveToTrash({all.at(3), all.at(4)});
    EXPECT_EQ(std::tuple(result.deleted, result.missing, result.failed), std::tuple(1, 1, 0));
    EXPECT_EQ(testsupport::trashedPaths(tmp.path() + "/data"), QStringList{all.at(3).path});
    EXPECT_TRUE(result.actionLog.contains(":: Action :: Delete \n:: 1 :: items \n"));
    EXPECT_EQ(result.actionLog.count(":: DELETING :: " + all.at(3).path + " \n:: SUCCEED ::"), 1);
    EXPECT_TRUE(log.contains("Database file missing, skipped: " + all.at(4).path));
    EXPECT_EQ(TarnDatabaseFiles::confirmationText(1), "Really delete 1 database file?");
}

}  // namespace
