#include <QProcess>
#include <QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

#include "ActionTestKit.h"
#include "TestSupport.h"
#include "actions/TarnActionOperation.h"

using namespace actiontest;

namespace {

// Makes a file that the engine must treat as not movable: read-only for a
// normal user; immutable for root, who may write anything else.
class Unmovable {
  public:
    explicit Unmovable(const QString& path) : path_(path) {
        if (::geteuid() != 0) {
            ok_ = ::chmod(QFile::encodeName(path).constData(), 0444) == 0;
            return;
        }
        ok_ = QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("+i"), path}) == 0;
        immutable_ = ok_;
    }
    ~Unmovable() {
        if (immutable_) QProcess::execute(QStringLiteral("chattr"), {QStringLiteral("-i"), path_});
    }
    bool ok() const { return ok_; }

  private:
    QString path_;
    bool ok_ = false;
    bool immutable_ = false;
};

struct MoveFixture : ::testing::Test {
    QTemporaryDir tmp;
    QString src() const { return tmp.path() + QStringLiteral("/Vol/Avid MediaFiles/MXF/1"); }
    QString dst() const { return tmp.path() + QStringLiteral("/Dst"); }
    TarnActionOptions options(const QList<TarnItemPtr>& items) {
        TarnActionOptions o(items);
        o.Action = QStringLiteral("Move");
        o.Destination = dst();
        o.mediaFolderRoots = {tmp.path() + QStringLiteral("/Vol")};
        return o;
    }
    TarnItemPtr file(const QString& name, int size = 4096) {
        EXPECT_TRUE(writeFile(src() + "/" + name, content(name, size)));
        return makeItem(src() + "/" + name);
    }
};

TEST_F(MoveFixture, MoveIntoItsOwnFolderIsSkippedButCountedAndLeavesTheFile) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    TarnActionOptions o = options({a});
    o.Destination = src();
    o.Create_projects_folders = o.Create_mxf_folders = false;
    TarnActionOperation op(o);
    op.start();
    EXPECT_TRUE(untimed(op.actionLog())
                    .contains(QStringLiteral("T :: SKIPPING - the same src&dst :: move :: %1 \n")
                                  .arg(a->DB_itemPath)));
    EXPECT_FALSE(op.actionLog().contains(QStringLiteral("STARTING")));
    EXPECT_EQ(op.BytesDone(), 4096u);
    EXPECT_TRUE(QFileInfo::exists(a->DB_itemPath));
    EXPECT_TRUE(a->DB_FileExists);
}

TEST_F(MoveFixture, FastMoveOnOneVolumeLogsNoDoneAndMarksTheItemMissing) {
    QDir().mkpath(dst());
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    testsupport::LogCapture console;
    TarnActionOperation op(options({a}));
    op.start();
    const QString target = dst() + QStringLiteral("/Doc/MXF/A.mxf");
    EXPECT_EQ(untimed(op.actionLog()),
              QStringLiteral("T :: TarnAction init \n"
                             ":: Action :: Move \n"
                             ":: 1 :: items \n"
                             ":: destination :: %1 \n"
                             "T :: TarnAction queued\n"
                             "T :: TarnAction Execution Started\n"
                             "T :: STARTING ::\n:: move\nfrom :: %2 \nto :: %3\n"
                             "T :: TarnAction Finished\n")
                  .arg(dst(), a->DB_itemPath, target));
    EXPECT_TRUE(console.contains(QStringLiteral(":: Fast Move")));
    EXPECT_EQ(readFile(target), content("A.mxf"));
    EXPECT_FALSE(QFileInfo::exists(a->DB_itemPath));
    EXPECT_FALSE(a->DB_FileExists);
    EXPECT_FALSE(a->DB_isValid);
    EXPECT_FALSE(a->DB_isValid_initial);
    EXPECT_EQ(a->DB_itemPath, src() + "/A.mxf");  // the record keeps its old path
    EXPECT_EQ(op.BytesDone(), 4096u);
}

TEST_F(MoveFixture, MoveToAnotherFileSystemCopiesThenRemovesTheSource) {
    struct stat here {
    }, shm{};
    if (::stat(QFile::encodeName(tmp.path()).constData(), &here) != 0 ||
        ::stat("/dev/shm", &shm) != 0 || here.st_dev == shm.st_dev)
        GTEST_SKIP() << "the build folder and /dev/shm are one file system here";
    QTemporaryDir other(QStringLiteral("/dev/shm/tarn-move-XXXXXX"));
    ASSERT_TRUE(other.isValid());
    TarnItemPtr a = file(QStringLiteral("A.mxf"), 3 * 1024 * 1024 + 17);
    TarnActionOptions o = options({a});
    o.Destination = other.path();
    testsupport::LogCapture console;
    TarnActionOperation op(o);
    op.start();
    const QString target = other.path() + QStringLiteral("/Doc/MXF/A.mxf");
    EXPECT_TRUE(
        untimed(op.actionLog())
            .contains(
                QStringLiteral("to :: %1\nT :: DONE ::\nT :: TarnAction Finished\n").arg(target)));
    EXPECT_TRUE(console.contains(QStringLiteral(":: Slow move")));
    EXPECT_EQ(readFile(target), content("A.mxf", 3 * 1024 * 1024 + 17));
    EXPECT_FALSE(QFileInfo::exists(a->DB_itemPath));
    EXPECT_FALSE(a->DB_FileExists);
    EXPECT_EQ(entries(other.path() + "/Doc/MXF"), QStringList{"A.mxf"});
}

TEST_F(MoveFixture, VolumesAreToldApartByMountEvenWithoutLabels) {
    TarnActionOperation op(options({}));
    QDir().mkpath(tmp.path() + "/Vol");
    EXPECT_TRUE(op.areURLsOnTheSameVolume(tmp.path(), tmp.path() + "/Vol"));
    struct stat here {
    }, shm{};
    if (::stat(QFile::encodeName(tmp.path()).constData(), &here) == 0 &&
        ::stat("/dev/shm", &shm) == 0 && here.st_dev != shm.st_dev) {
        EXPECT_FALSE(op.areURLsOnTheSameVolume(tmp.path(), QStringLiteral("/dev/shm")));
    }
    EXPECT_FALSE(op.areURLsOnTheSameVolume(tmp.path() + "/no/such", tmp.path()));
    EXPECT_TRUE(op.actionLog().contains(QStringLiteral(":: ERROR :: 2 :: ")));
}

TEST_F(MoveFixture, FiveButtonAnswersDecideAndRemember) {
    // A file where the target folder should be: nothing can be moved there.
    writeFile(dst() + "/Doc", "in the way");
    QList<TarnItemPtr> items;
    for (const char* n : {"A.mxf", "B.mxf", "C.mxf"}) items << file(n);
    const QString question = QStringLiteral("File can not be moved.\nCopy?");

    {  // "Skip All": asked once, every file skipped.
        ScriptedAnswers answers({TarnAlert::kSecondButton /*error: Do NotShow Again*/, 1000});
        TarnActionOperation op(options(items));
        op.start();
        EXPECT_EQ(answers.asked().count(question), 1);
        EXPECT_EQ(answers.buttons().last(), QStringLiteral("Skip All|No|Yes|Yes to All|Cancel"));
        EXPECT_EQ(op.actionLog().count(":: file is not moveable \n"), 3);
        EXPECT_EQ(op.actionLog().count(":: SKIPPING \n"), 1);
        EXPECT_EQ(op.BytesDone(), 3 * 4096u);
    }
    {  // "No" asks again for the next file; "Yes to All" then answers the rest.
        ScriptedAnswers answers({1001, 1001, 1003});
        TarnActionOperation op(options(items));
        op.start();
        EXPECT_EQ(answers.asked().count(question), 2);
        EXPECT_EQ(op.actionLog().count(":: SKIPPING \n"), 1);
        EXPECT_EQ(op.actionLog().count(":: COPYING \n"), 1);
        // The folder could not be made, so nothing is copied whatever the answer.
        EXPECT_FALSE(op.actionLog().contains(":: DONE ::"));
    }
    {  // "Cancel" stops the run at that file.
        ScriptedAnswers answers({1001, 1004});
        TarnActionOperation op(options(items));
        op.start();
        EXPECT_TRUE(op.isCancelled());
        EXPECT_EQ(op.itemsDone(), 1u);
        EXPECT_EQ(op.BytesDone(), 0u);
        EXPECT_TRUE(untimed(op.actionLog())
                        .endsWith("T :: TarnAction Cancelled\nT :: TarnAction Finished\n"));
    }
    for (const TarnItemPtr& item : items) EXPECT_TRUE(QFileInfo::exists(item->DB_itemPath));
    EXPECT_EQ(readFile(dst() + "/Doc"), QByteArray("in the way"));
}

TEST_F(MoveFixture, AnUnmovableFileIsCopiedOnYesAndStaysInPlace) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    TarnItemPtr b = file(QStringLiteral("B.mxf"));
    Unmovable lockA(a->DB_itemPath);
    Unmovable lockB(b->DB_itemPath);
    if (!lockA.ok() || !lockB.ok()) GTEST_SKIP() << "cannot make a file unmovable here (chattr)";
    ScriptedAnswers answers({1002, 1003});
    testsupport::LogCapture console;
    TarnActionOperation op(options({a, b}));
    op.start();
    const QString folder = dst() + QStringLiteral("/Doc/MXF/");
    EXPECT_EQ(answers.asked().size(), 2);
    EXPECT_EQ(op.actionLog().count(":: file is not moveable \n:: COPYING \n"), 2);
    EXPECT_EQ(untimed(op.actionLog()).count("T :: DONE ::\n"), 2);
    EXPECT_EQ(console.count(":: Slow copy"), 2);
    EXPECT_EQ(readFile(folder + "A.mxf"), content("A.mxf"));
    EXPECT_EQ(readFile(folder + "B.mxf"), content("B.mxf"));
    EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
    EXPECT_TRUE(a->DB_FileExists);  // still there: not marked missing
}

TEST_F(MoveFixture, RefusedOverwriteStillAsksButCopiesNothing) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    const QString target = dst() + QStringLiteral("/Doc/MXF/A.mxf");
    writeFile(target, "old");
    ScriptedAnswers answers({TarnAlert::kFirstButton, 1002});  // No overwrite, then "Yes" copy
    TarnActionOperation op(options({a}));
    op.start();
    EXPECT_EQ(answers.asked(), (QStringList{"File exists at destination.\nOverwrite?",
                                            "File can not be moved.\nCopy?"}));
    EXPECT_TRUE(op.actionLog().contains(
        ":: FILE EXISTS AT DESTINATION \n:: SKIPPING \n:: file is not moveable \n:: COPYING \n"));
    EXPECT_EQ(readFile(target), QByteArray("old"));
    EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
    EXPECT_TRUE(a->DB_FileExists);
}

TEST_F(MoveFixture, OverwriteByFastMoveReplacesTheTargetWhole) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    const QString target = dst() + QStringLiteral("/Doc/MXF/A.mxf");
    writeFile(target, "old");
    ScriptedAnswers answers({TarnAlert::kSecondButton});
    TarnActionOperation op(options({a}));
    op.start();
    EXPECT_TRUE(op.actionLog().contains(":: FILE EXISTS AT DESTINATION \n:: OVERWRITING \n"));
    EXPECT_EQ(readFile(target), content("A.mxf"));
    EXPECT_FALSE(QFileInfo::exists(a->DB_itemPath));
}

}  // namespace

namespace {

// A rename onto another name of the same file succeeds and changes nothing:
// the file is still where it was, so the item stays present.
TEST_F(MoveFixture, AMoveThatLeavesTheFileInPlaceKeepsTheItemPresent) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    QDir().mkpath(dst());
    ASSERT_EQ(::link(QFile::encodeName(a->DB_itemPath).constData(),
                     QFile::encodeName(dst() + "/A.mxf").constData()),
              0);
    TarnActionOptions o = options({a});
    o.Create_projects_folders = o.Create_mxf_folders = false;
    ScriptedAnswers answers({TarnAlert::kSecondButton});  // overwrite: yes
    TarnActionOperation op(o);
    op.start();
    EXPECT_EQ(answers.asked(), QStringList{"File exists at destination.\nOverwrite?"});
    EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
    EXPECT_TRUE(a->DB_FileExists);
    EXPECT_TRUE(a->DB_isValid);
    EXPECT_FALSE(op.actionLog().contains("ERROR"));
}

// A project or folder name from a damaged index never leads out of the
// destination.
TEST_F(MoveFixture, TargetFoldersStayInsideTheDestination) {
    const struct Case {
        QString project;
        QString folder;
    } cases[] = {
        {"..", "/__/MXF"},   {"../../..", "/.._.._../MXF"}, {".", "/_/MXF"},
        {"a/b", "/a_b/MXF"}, {"a\\b", "/a_b/MXF"},          {"Doc", "/Doc/MXF"},
    };
    TarnActionOperation op(options({}));
    for (const Case& c : cases) {
        TarnDatabaseItem item;
        item.DB_itemPath = src() + "/A.mxf";
        item.DB_ProjectName = c.project;
        EXPECT_EQ(op.targetFolderForItem(item), dst() + c.folder) << c.project.toStdString();
    }
}

}  // namespace
