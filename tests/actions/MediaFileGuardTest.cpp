#include <sys/sysmacros.h>

#include "ActionTestKit.h"
#include "actions/TarnMediaFileGuard.h"

using namespace actiontest;

namespace {

// A volume whose media folder holds, next to a media file, a device, and a
// sub-folder that is a link to a folder outside. (Folders, links and pipes a
// damaged index names: the damaged-index command test.)
struct GuardFixture : ::testing::Test {
    QTemporaryDir tmp;
    QString vol() const { return tmp.path() + "/vol"; }
    QString root() const { return vol() + "/Avid MediaFiles/MXF"; }
    QString projects() const { return vol() + "/Avid Projects"; }
    bool device = false;

    void SetUp() override {
        writeFile(root() + "/1/A.mxf", content("A.mxf"));
        writeFile(projects() + "/Doc.avb", content("Doc.avb"));
        writeFile(projects() + "/A.mxf", content("outside"));
        writeFile(vol() + "/outside.mxf", content("outside.mxf"));
        ASSERT_TRUE(QFile::link(projects(), root() + "/Elsewhere"));
        device = ::mknod(QFile::encodeName(root() + "/1/Null").constData(), S_IFCHR | 0600,
                         makedev(1, 3)) == 0;
    }
};

TEST_F(GuardFixture, OnlyRegularFilesInsideARootPass) {
    const QString outside = QStringLiteral("Outside the media folders of the scan");
    const struct Case {
        QString path;
        QString reason;  // empty: accepted
    } cases[] = {{root() + "/1/A.mxf", ""},
                 {root() + "/1/../1/A.mxf", ""},
                 {root() + "/1/Null", device ? "Not a regular file" : "No such file or directory"},
                 {root() + "/Elsewhere/Doc.avb", outside},
                 {root() + "/1/../../../Avid Projects", outside},
                 {root() + "/1/../../../outside.mxf", outside},
                 {root() + "/1/..", "Not a file name"},
                 {root() + "/1/.", "Not a file name"},
                 {root() + "/1/", "Not a file name"},
                 {root(), outside},
                 {vol() + "/outside.mxf", outside},
                 {"/dev/null", outside},
                 {root() + "/1/Missing.mxf", "No such file or directory"}};
    TarnMediaFileGuard guard({root() + "/", vol() + "/no such root"});
    EXPECT_EQ(guard.roots(), QStringList{root()});
    for (const Case& c : cases) {
        TarnMediaFileGuard::Checked checked;
        QString reason;
        EXPECT_EQ(guard.check(c.path, &checked, &reason), c.reason.isEmpty())
            << c.path.toStdString();
        EXPECT_EQ(reason, c.reason) << c.path.toStdString();
        EXPECT_EQ(checked.path, c.reason.isEmpty() ? root() + "/1/A.mxf" : QString())
            << c.path.toStdString();
    }
    // Without roots nothing passes.
    TarnMediaFileGuard::Checked checked;
    QString reason;
    EXPECT_FALSE(TarnMediaFileGuard({}).check(root() + "/1/A.mxf", &checked, &reason));
    EXPECT_EQ(reason, outside);
}

TEST_F(GuardFixture, ActsOnlyOnTheFileThatWasChecked) {
    const QString file = root() + "/1/A.mxf";
    // What happens to the file between the check and the act; the refusal.
    enum Change { Unchanged, Folder, Link, Another, Gone };
    const std::pair<Change, QString> cases[] = {{Unchanged, ""},
                                                {Folder, "Is a directory"},
                                                {Link, "Is a symbolic link"},
                                                {Another, "Replaced since it was checked"},
                                                {Gone, "No such file or directory"}};
    for (const auto& [change, refusal] : cases) {
        SCOPED_TRACE(int(change));
        // (a link is removed as a link, never followed)
        if (QFileInfo(file).isDir() && !QFileInfo(file).isSymLink()) QDir(file).removeRecursively();
        QFile::remove(file);
        writeFile(file, content("A.mxf"));
        TarnMediaFileGuard guard({root()});
        TarnMediaFileGuard::Checked checked;
        QString reason;
        ASSERT_TRUE(guard.check(file, &checked, &reason)) << reason.toStdString();
        if (change == Another)  // (the old file stays, so its number is not reused)
            QFile::rename(file, file + ".old");
        else if (change != Unchanged)
            QFile::remove(file);
        if (change == Folder) writeFile(file + "/inside.mxf", "keep");
        if (change == Link) QFile::link(projects(), file);
        if (change == Another) writeFile(file, "another");
        EXPECT_EQ(guard.stillSame(checked, &reason), refusal.isEmpty());
        int error = 0;
        EXPECT_EQ(guard.renameFile(checked, root() + "/renamed", &error, &reason),
                  refusal.isEmpty());
        if (refusal.isEmpty()) {
            ASSERT_TRUE(guard.check(root() + "/renamed", &checked, &reason));
        }
        EXPECT_EQ(guard.removeFile(checked, &reason), refusal.isEmpty());
        EXPECT_EQ(reason, refusal);
        EXPECT_FALSE(QFileInfo::exists(root() + "/renamed"));
        EXPECT_EQ(contentOf(projects() + "/A.mxf"), content("outside"));
        EXPECT_EQ(contentOf(projects() + "/Doc.avb"), content("Doc.avb"));
    }
}

TEST_F(GuardFixture, AFolderSwappedForALinkDoesNotRedirectTheAct) {
    const QString file = root() + "/1/A.mxf";
    TarnMediaFileGuard first({root()});
    TarnMediaFileGuard::Checked checked;
    QString reason;
    ASSERT_TRUE(first.check(file, &checked, &reason));
    // The media folder goes away and a link to the projects folder, which
    // holds a file of the same name, takes its place.
    ASSERT_EQ(::rename(QFile::encodeName(root() + "/1").constData(),
                       QFile::encodeName(root() + "/1-old").constData()),
              0);
    ASSERT_TRUE(QFile::link(projects(), root() + "/1"));
    // A guard that opens the folder afresh refuses the link on the way.
    TarnMediaFileGuard fresh({root()});
    EXPECT_FALSE(fresh.removeFile(checked, &reason));
    EXPECT_TRUE(reason == "Not a directory" || reason == "Too many levels of symbolic links")
        << reason.toStdString();
    // The first guard still holds the folder it checked: the act stays there.
    EXPECT_TRUE(first.removeFile(checked, &reason)) << reason.toStdString();
    EXPECT_FALSE(QFileInfo::exists(root() + "/1-old/A.mxf"));
    EXPECT_EQ(contentOf(projects() + "/A.mxf"), content("outside"));
}

}  // namespace
