#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

#include "FixtureFiles.h"
#include "TestSupport.h"
#include "support/TarnFileName.h"
#include "support/TarnTrash.h"

// The Trash of freedesktop.org systems, as the delete action uses it.
namespace {

#ifndef Q_OS_DARWIN

using testsupport::contentOf;
using testsupport::exists;

dev_t deviceOf(const QString& path) {
    struct stat st {};
    return ::stat(TarnFileName::encode(path).constData(), &st) == 0 ? st.st_dev : dev_t(-1);
}

class TrashTest : public ::testing::Test {
  protected:
    void SetUp() override {
        saved_ = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", QFile::encodeName(home.path() + "/data"));
    }
    void TearDown() override { qputenv("XDG_DATA_HOME", saved_); }
    QString trash() const { return home.path() + "/data/Trash"; }

    testsupport::TempDir home;
    QByteArray saved_;
};

TEST_F(TrashTest, EachFileGoesInUnderAFreeNameWithItsOriginalPath) {
    struct Case {
        QString folder;
        QString name;
        QString trashedAs;
        QByteArray pathText;  // the info file's Path, after the folder
    };
    const QString media = home.path() + "/media";
    const QString raw = media + "/" + TarnFileName::decode("\xFF\xFE_folder");
    const Case cases[] = {
        {media, "clip.mxf", "clip.mxf", "/media/clip.mxf"},
        {media + "/2", "clip.mxf", "clip.2.mxf", "/media/2/clip.mxf"},
        {media + "/3", "clip.mxf", "clip.3.mxf", "/media/3/clip.mxf"},
        {media, "no extension", "no extension", "/media/no%20extension"},
        {media + "/2", "no extension", "no extension.2", "/media/2/no%20extension"},
        {raw, TarnFileName::decode("caf\xE9 100%.mxf"), TarnFileName::decode("caf\xE9 100%.mxf"),
         "/media/%FF%FE_folder/caf%E9%20100%25.mxf"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(TarnFileName::displayText(c.trashedAs).toStdString());
        const QString path = c.folder + "/" + c.name;
        ASSERT_TRUE(fixtures::writeFile(path, c.trashedAs.toUtf8()));
        int code = 0;
        QString description;
        ASSERT_TRUE(TarnTrash::moveToTrash(path, &code, &description))
            << code << " " << description.toStdString();
        EXPECT_FALSE(exists(path));
        EXPECT_EQ(contentOf(trash() + "/files/" + c.trashedAs), c.trashedAs.toUtf8());
        const QByteArray info = contentOf(trash() + "/info/" + c.trashedAs + ".trashinfo");
        EXPECT_TRUE(info.startsWith("[Trash Info]\nPath=")) << info.constData();
        EXPECT_TRUE(info.contains(c.pathText + "\nDeletionDate=")) << info.constData();
    }
}

TEST_F(TrashTest, AMissingFileStaysMissingAndNothingIsReserved) {
    int code = 0;
    QString description;
    EXPECT_FALSE(TarnTrash::moveToTrash(home.path() + "/nothing.mxf", &code, &description));
    EXPECT_EQ(code, ENOENT);
    EXPECT_FALSE(description.isEmpty());
    EXPECT_TRUE(QDir(trash() + "/info").isEmpty());
}

// A file on another volume than the home Trash goes to that volume's own
// Trash, by a rename: it is never copied across.
TEST_F(TrashTest, FilesOnAnotherVolumeGoToThatVolumesTrash) {
    QTemporaryDir other(QStringLiteral("/dev/shm/tarn-trash-XXXXXX"));
    if (!other.isValid() || deviceOf(other.path()) == deviceOf(home.path()))
        GTEST_SKIP() << "no second volume to try";
    const QString topTrash = QStringLiteral("/dev/shm/.Trash-%1").arg(::getuid());
    const bool hadTopTrash = exists(topTrash);
    const QString name = QFileInfo(other.path()).fileName() + ".mxf";
    const QString path = other.path() + "/" + name;
    ASSERT_TRUE(fixtures::writeFile(path, "far away"));

    int code = 0;
    QString description;
    ASSERT_TRUE(TarnTrash::moveToTrash(path, &code, &description)) << description.toStdString();
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

}  // namespace
