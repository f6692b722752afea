#include "ActionTestKit.h"
#include "DemoVolume.h"
#include "actions/TarnDatabaseFiles.h"
#include "support/TarnFileName.h"
#include "support/TarnTrash.h"

// The Trash as the delete action uses it, and the database files that go there.
using namespace actiontest;
using testsupport::exists;

namespace {

#ifndef Q_OS_DARWIN

// The Trash of freedesktop.org systems.
struct TrashTest : ::testing::Test {
    testsupport::TempDir home;
    testsupport::ScopedEnv data{"XDG_DATA_HOME", home.path() + "/data"};
    QString trash() const { return home.path() + "/data/Trash"; }
    bool trashed(const QString& path) {
        int code = 0;
        QString description;
        const bool ok = TarnTrash::moveToTrash(path, &code, &description);
        EXPECT_EQ(ok, code == 0) << code << " " << description.toStdString();
        return ok;
    }
};

TEST_F(TrashTest, EachFileGoesInUnderAFreeNameWithItsOriginalPath) {
    const QString media = home.path() + "/media";
    const QString raw = media + "/" + TarnFileName::decode("\xFF\xFE_folder");
    const struct Case {
        QString folder, name, trashedAs;
        QByteArray pathText;  // the info file's Path, after the folder
    } cases[] = {
        {media, "clip.mxf", "clip.mxf", "/media/clip.mxf"},
        {media + "/2", "clip.mxf", "clip.2.mxf", "/media/2/clip.mxf"},
        {media + "/3", "clip.mxf", "clip.3.mxf", "/media/3/clip.mxf"},
        {media, "no extension", "no extension", "/media/no%20extension"},
        {media + "/2", "no extension", "no extension.2", "/media/2/no%20extension"},
        {raw, TarnFileName::decode("caf\xE9 100%.mxf"), TarnFileName::decode("caf\xE9 100%.mxf"),
         "/media/%FF%FE_folder/caf%E9%20100%25.mxf"},
    };
    // A missing file stays missing and reserves no name.
    EXPECT_FALSE(trashed(home.path() + "/nothing.mxf"));
    EXPECT_TRUE(QDir(trash() + "/info").isEmpty());
    for (const Case& c : cases) {
        SCOPED_TRACE(TarnFileName::displayText(c.trashedAs).toStdString());
        const QString path = c.folder + "/" + c.name;
        ASSERT_TRUE(writeFile(path, c.trashedAs.toUtf8()));
        ASSERT_TRUE(trashed(path));
        EXPECT_FALSE(exists(path));
        EXPECT_EQ(contentOf(trash() + "/files/" + c.trashedAs), c.trashedAs.toUtf8());
        const QByteArray info = contentOf(trash() + "/info/" + c.trashedAs + ".trashinfo");
        EXPECT_TRUE(info.startsWith("[Trash Info]\nPath=" + QFile::encodeName(home.path()) +
                                    c.pathText + "\nDeletionDate="))
            << info.constData();
    }
}

// A file on another volume than the home Trash goes to that volume's own
// Trash, by a rename: it is never copied across.
TEST_F(TrashTest, FilesOnAnotherVolumeGoToThatVolumesTrash) {
    QTemporaryDir other(QStringLiteral("/dev/shm/tarn-trash-XXXXXX"));
    if (!other.isValid() || !shmIsAnotherVolume(home.path()))
        GTEST_SKIP() << "no second volume to try";
    const QString topTrash = QStringLiteral("/dev/shm/.Trash-%1").arg(::getuid());
    const bool hadTopTrash = exists(topTrash);
    const QString name = QFileInfo(other.path()).fileName() + ".mxf";
    const QString path = other.path() + "/" + name;
    ASSERT_TRUE(writeFile(path, "far away"));
    ASSERT_TRUE(trashed(path));
    EXPECT_FALSE(exists(path));
    EXPECT_EQ(contentOf(topTrash + "/files/" + name), "far away");
    EXPECT_TRUE(contentOf(topTrash + "/info/" + name + ".trashinfo")
                    .contains("Path=" + QFile::encodeName(path)));
    EXPECT_FALSE(exists(trash() + "/files/" + name));
    QFile::remove(topTrash + "/files/" + name);
    QFile::remove(topTrash + "/info/" + name + ".trashinfo");
    if (!hadTopTrash) QDir(topTrash).removeRecursively();
}

#endif

// (Which files of the demo volume, and trashing them: the databases command's
// and the database window's tests.)
struct DatabaseFiles : ::testing::Test {
    QTemporaryDir tmp;
    QString volume() const { return tmp.path() + "/Vol"; }
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
        {"Avid MediaFiles/msmFMID.pmr", false}  // above the MXF root
    };
    QStringList expected;
    for (const auto& c : cases) {
        ASSERT_TRUE(writeFile(volume() + "/" + c.path, "x"));
        if (c.listed) expected << QString::fromUtf8(c.path);
    }
    expected.sort();
    QStringList listed;
    for (const auto& file : TarnDatabaseFiles::list({volume()}))
        listed << QDir(volume()).relativeFilePath(file.path);
    EXPECT_EQ(listed, expected);
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
