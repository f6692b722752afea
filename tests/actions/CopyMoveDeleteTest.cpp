#include <sys/xattr.h>

#include "ActionTestKit.h"

// One run of the action engine per case over files of a media folder: what
// each action logs, asks and does to the files and their items.
using namespace actiontest;

namespace {

struct CopyTest : ActionFixture {};

// One file through each action: every line of the log, where its bytes end up
// and what its item says afterwards.
TEST_F(CopyTest, EachActionLogsEveryStepAndMarksTheItem) {
    const QString target = dst() + "/Doc/MXF/A.mxf";
    const struct Case {
        QString action;
        bool gone;      // missing before the run (as a re-scan finds it)
        QString steps;  // %1 the source, %2 the target
    } cases[] = {
        {"Copy", false, "T :: STARTING ::\n:: copy\nfrom :: %1 \nto :: %2\nT :: DONE ::\n"},
        // A move on one volume is a rename: no DONE line.
        {"Move", false, "T :: STARTING ::\n:: move\nfrom :: %1 \nto :: %2\n"},
        {"Delete", false, "T :: DELETING :: %1 \n:: SUCCEED ::\n"},
        {"Delete", true, ""},  // nothing to log, but counted
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.action.toStdString() + (c.gone ? " (gone)" : ""));
        QDir(tmp.path()).removeRecursively();
        QDir().mkpath(dst());
        TarnItemPtr a = file("A.mxf");
        if (c.gone) {
            QFile::remove(a->DB_itemPath);
            a->DB_FileExists = false;
            a->DB_filesize = 1234;
        }
        TarnActionOperation op(options({a}, c.action));
        op.start();
        const bool copy = c.action == "Copy", remove = c.action == "Delete";
        EXPECT_EQ(untimed(op.actionLog()),
                  "T :: TarnAction init \n:: Action :: " + c.action + " \n:: 1 :: items \n" +
                      (remove ? "" : ":: destination :: " + dst() + " \n") +
                      "T :: TarnAction queued\nT :: TarnAction Execution Started\n" +
                      QString(c.steps).replace("%1", a->DB_itemPath).replace("%2", target) +
                      "T :: TarnAction Finished\n");
        const QString landing = remove ? dataHome() + "/Trash/files/A.mxf" : target;
        EXPECT_EQ(contentOf(landing), c.gone ? "(missing)" : content("A.mxf"));
        EXPECT_EQ(contentOf(a->DB_itemPath), copy ? content("A.mxf") : "(missing)");
        EXPECT_EQ(a->DB_FileExists, copy);
        EXPECT_EQ(a->DB_isValid, copy || c.gone);
        EXPECT_EQ(a->DB_itemPath, src() + "/A.mxf");  // the record keeps its old path
        EXPECT_EQ(op.BytesDone(), c.gone ? 1234u : 4096u);
        EXPECT_EQ(op.itemsDone(), 1u);
    }
}

// The folder a file goes to: project, type and original folder as the options
// say; a project name from a damaged index never leads out of the destination.
TEST_F(CopyTest, TargetFolderFollowsTheOptionsAndStaysInsideTheDestination) {
    const struct Case {
        bool projects, types, original;
        QString project, name, folder;
    } cases[] = {
        {1, 1, 1, "Doc", "A.mxf", "/Doc/MXF/1"}, {1, 1, 1, "Doc", "NOEXT", "/Doc/_NOEXT_TYPE/1"},
        {1, 1, 0, "Doc", "A.mxf", "/Doc/MXF"},   {1, 1, 0, "Doc", "NOEXT", "/Doc/_NOEXT_TYPE"},
        {1, 0, 0, "Doc", "A.mxf", "/Doc"},       {1, 0, 0, "Doc", "NOEXT", "/Doc"},
        {0, 1, 0, "Doc", "A.mxf", "/MXF"},       {0, 1, 0, "Doc", "NOEXT", "/_NOEXT_TYPE"},
        {0, 0, 1, "Doc", "A.mxf", "/1"},         {0, 0, 1, "Doc", "NOEXT", "/1"},
        {0, 0, 0, "Doc", "A.mxf", ""},           {0, 0, 0, "Doc", "NOEXT", ""},
        {1, 1, 0, "..", "A.mxf", "/__/MXF"},     {1, 1, 0, "../../..", "A.mxf", "/.._.._../MXF"},
        {1, 1, 0, ".", "A.mxf", "/_/MXF"},       {1, 1, 0, "a/b", "A.mxf", "/a_b/MXF"},
        {1, 1, 0, "a\\b", "A.mxf", "/a_b/MXF"},
    };
    for (const Case& c : cases) {
        TarnDatabaseItem item;
        item.DB_itemPath = src() + "/" + c.name;
        item.DB_ProjectName = c.project;
        TarnActionOptions o = options({});
        o.Destination = dst() + "/";  // a trailing separator changes nothing
        o.Create_projects_folders = c.projects;
        o.Create_mxf_folders = c.types;
        o.Keep_original_folders = c.original;
        EXPECT_EQ(TarnActionOperation(o).targetFolderForItem(item), dst() + c.folder)
            << c.project.toStdString() << c.name.toStdString() << c.projects << c.types;
    }
}

TEST_F(CopyTest, OverwriteQuestionHonoursNoYesAndYesToAll) {
    QList<TarnItemPtr> items{file("A.mxf"), file("B.mxf"), file("C.mxf")};
    const QString folder = dst() + "/Doc/MXF/";
    for (const char* n : {"A.mxf", "B.mxf", "C.mxf"}) writeFile(folder + n, "old");

    ScriptedAnswers answers({TarnAlert::kFirstButton, TarnAlert::kSecondButton});
    TarnActionOperation no(options(items.mid(0, 2)));
    no.start();
    EXPECT_EQ(contentOf(folder + "A.mxf"), QByteArray("old"));
    EXPECT_EQ(contentOf(folder + "B.mxf"), content("B.mxf"));
    EXPECT_TRUE(untimed(no.actionLog())
                    .contains(":: FILE EXISTS AT DESTINATION \n:: SKIPPING \nT :: STARTING"));
    EXPECT_EQ(no.actionLog().count(":: FILE EXISTS AT DESTINATION \n:: OVERWRITING \n"), 1);
    EXPECT_EQ(no.BytesDone(), 8192u);  // a skipped file still counts
    EXPECT_EQ(no.filesFailed(), 0u);   // and is no failure
    EXPECT_EQ(answers.asked, QStringList(2, "File exists at destination.\nOverwrite?"));
    EXPECT_EQ(answers.details.first(), folder + "A.mxf");

    writeFile(folder + "B.mxf", "old");
    ScriptedAnswers all({TarnAlert::kThirdButton});
    TarnActionOperation yesToAll(options(items));
    yesToAll.start();
    EXPECT_EQ(all.asked.size(), 1);  // remembered for the rest of the run
    for (const char* n : {"A.mxf", "B.mxf", "C.mxf"}) EXPECT_EQ(contentOf(folder + n), content(n));
    EXPECT_EQ(yesToAll.actionLog().count(":: FILE EXISTS AT DESTINATION \n"), 3);
}

TEST_F(CopyTest, YesToAllForOverwriteAlsoAnswersThePermanentDeleteQuestion) {
    TarnItemPtr a = file("A.mxf");
    writeFile(dst() + "/A.mxf", "old");
    ScriptedAnswers answers({TarnAlert::kThirdButton});
    TarnActionOperation op(options({a}));
    EXPECT_TRUE(op.CheckTargetAndAskToOverwrite(dst() + "/A.mxf"));
    EXPECT_TRUE(op.shouldRemoveItemAtURL(a->DB_itemPath));
    EXPECT_EQ(answers.asked.size(), 1);
    EXPECT_TRUE(op.actionLog().endsWith(":: FILE EXISTS AT DESTINATION \n:: OVERWRITING \n"));
}

TEST_F(CopyTest, NewTargetFolderIsSeededOnceFromTheFirstSourceFolder) {
    const QString other = tmp.path() + "/Vol/Avid MediaFiles/MXF/2";
    QList<TarnItemPtr> items{file("A.mxf"), file("B.mxf"), file("C.mxf", 4096, other)};
    writeFile(src() + "/msmFMID.pmr", "pmr-of-1");
    writeFile(src() + "/msmMMOB.mdb", "mdb-of-1");
    writeFile(other + "/msmFMID.pmr", "pmr-of-2");
    TarnActionOperation(options(items)).start();
    const QString folder = dst() + "/Doc/MXF";
    EXPECT_EQ(contentOf(folder + "/msmFMID.pmr"), QByteArray("pmr-of-1"));
    EXPECT_EQ(contentOf(folder + "/msmMMOB.mdb"), QByteArray("mdb-of-1"));
    EXPECT_EQ(entries(folder).size(), 5);
}

TEST_F(CopyTest, FolderThatCannotBeMadeIsReportedAndSilencedOnRequest) {
    TarnItemPtr a = file("A.mxf");
    writeFile(dst() + "/Doc", "a file in the way");
    ScriptedAnswers answers({TarnAlert::kSecondButton});  // "Do NotShow Again"
    TarnActionOperation op(options({a, file("B.mxf")}));
    op.start();
    EXPECT_EQ(op.actionLog().count(":: ERROR :: Not a directory :: " + dst() + "/Doc/MXF \n"), 2);
    EXPECT_EQ(answers.asked, QStringList{"Not a directory"});
    EXPECT_EQ(untimed(op.actionLog()).count("T :: ERROR ::\n"), 2);
    EXPECT_EQ(op.filesFailed(), 2u);
    EXPECT_EQ(contentOf(dst() + "/Doc"), QByteArray("a file in the way"));
    EXPECT_EQ(contentOf(a->DB_itemPath), content("A.mxf"));
}

TEST_F(CopyTest, CopyCarriesModeTimesAndAttributes) {
    TarnItemPtr a = file("A.mxf");
    const QByteArray path = QFile::encodeName(a->DB_itemPath);
    ASSERT_EQ(::chmod(path.constData(), 0640), 0);
    struct timespec times[2] = {{1000000000, 123}, {1200000000, 456000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.constData(), times, 0), 0);
    const bool xattrs = ::setxattr(path.constData(), "user.tarn", "clip", 4, 0) == 0;
    TarnActionOperation(flat({a})).start();

    const QByteArray copy = QFile::encodeName(dst() + "/A.mxf");
    for (const QByteArray& file : {path, copy}) {  // the source keeps them too
        struct stat st {};
        ASSERT_EQ(::stat(file.constData(), &st), 0);
        EXPECT_EQ(std::tuple(st.st_mode & 07777, st.st_mtim.tv_sec, st.st_mtim.tv_nsec,
                             st.st_atim.tv_sec),
                  std::tuple(0640u, 1200000000, 456000, 1000000000))
            << file.constData();
        EXPECT_EQ(contentOf(QFile::decodeName(file)), content("A.mxf"));
    }
    char value[16] = {};
    const ssize_t n = xattrs ? ::getxattr(copy.constData(), "user.tarn", value, sizeof value) : 0;
    EXPECT_EQ(QByteArray(value, n), xattrs ? "clip" : "");
}

struct MoveTest : ActionFixture {};

// A move to another file system copies, then removes the source: cancelled
// part way, or failing at the end (a folder holds the target's name), it
// keeps the source.
TEST_F(MoveTest, AcrossFileSystemsTheSourceGoesOnlyAfterAWholeCopy) {
    if (!shmIsAnotherVolume(tmp.path())) GTEST_SKIP() << "/dev/shm is no other volume here";
    enum Ending { Done, Cancelled, Failed };
    for (const Ending ending : {Done, Cancelled, Failed}) {
        SCOPED_TRACE(int(ending));
        QTemporaryDir other(QStringLiteral("/dev/shm/tarn-move-XXXXXX"));
        const qint64 size = ending == Cancelled ? kBig : 3 * 1024 * 1024 + 17;
        TarnItemPtr a = ending == Cancelled ? big("A.mxf", size) : file("A.mxf", int(size));
        const QString target = other.path() + "/A.mxf";
        if (ending == Failed) writeFile(target + "/inside", "keep");
        TarnActionOptions o = flat({a}, "Move");
        o.Destination = other.path();
        ScriptedAnswers answers({TarnAlert::kSecondButton});
        TarnActionOperation op(o);
        op.setProgressObserver([&](std::int64_t copied) {
            if (ending == Cancelled && copied > 0) op.cancel();
        });
        op.start();
        EXPECT_EQ(a->DB_FileExists, ending != Done);
        EXPECT_EQ(QFileInfo(a->DB_itemPath).size(), ending == Done ? 0 : size);
        EXPECT_EQ(entries(other.path()),
                  ending == Cancelled ? QStringList() : QStringList{"A.mxf"});
        if (ending == Failed) {
            EXPECT_EQ(contentOf(target + "/inside"), QByteArray("keep"));
            EXPECT_EQ(contentOf(a->DB_itemPath), content("A.mxf", int(size)));
        }
        if (ending != Done) continue;
        EXPECT_TRUE(
            untimed(op.actionLog())
                .endsWith("to :: " + target + "\nT :: DONE ::\nT :: TarnAction Finished\n"));
        EXPECT_EQ(contentOf(target), content("A.mxf", int(size)));
    }
}

// A file where the target folder should be: nothing can be moved there, nor
// copied whatever the answer to "File can not be moved. Copy?".
TEST_F(MoveTest, FiveButtonAnswersDecideAndRemember) {
    writeFile(dst() + "/Doc", "in the way");
    const QList<TarnItemPtr> items{file("A.mxf"), file("B.mxf"), file("C.mxf")};
    const struct Case {
        std::initializer_list<int> answers;  // the first: the error's "Do NotShow Again"
        int asked, skipped, copying;
        bool cancelled;
    } cases[] = {
        {{1001, 1000}, 1, 1, 0, false},        // "Skip All": asked once, every file skipped
        {{1001, 1001, 1003}, 2, 1, 1, false},  // "No" asks again; "Yes to All" answers the rest
        {{1001, 1004}, 1, 0, 0, true},         // "Cancel" stops the run at that file
    };
    for (const Case& c : cases) {
        ScriptedAnswers answers(c.answers);
        TarnActionOperation op(options(items, "Move"));
        op.start();
        const QString log = untimed(op.actionLog());
        EXPECT_EQ(answers.asked.count("File can not be moved.\nCopy?"), c.asked);
        EXPECT_EQ(log.count(":: file is not moveable \n"), c.cancelled ? 1 : 3);
        EXPECT_EQ(log.count(":: SKIPPING \n"), c.skipped);
        EXPECT_EQ(log.count(":: COPYING \n"), c.copying);
        EXPECT_FALSE(log.contains(":: DONE ::"));
        EXPECT_EQ(op.isCancelled(), c.cancelled);
        EXPECT_EQ(op.itemsDone(), c.cancelled ? 1u : 3u);
        EXPECT_EQ(op.BytesDone(), c.cancelled ? 0u : 3 * 4096u);
        EXPECT_EQ(log.endsWith("T :: TarnAction Cancelled\nT :: TarnAction Finished\n"),
                  c.cancelled);
    }
    for (const TarnItemPtr& item : items) EXPECT_TRUE(QFileInfo::exists(item->DB_itemPath));
    EXPECT_EQ(contentOf(dst() + "/Doc"), QByteArray("in the way"));
}

TEST_F(MoveTest, AnUnmovableFileIsCopiedOnYesAndStaysInPlace) {
    TarnItemPtr a = file("A.mxf");
    TarnItemPtr b = file("B.mxf");
    Locked lockA(a->DB_itemPath, 0444), lockB(b->DB_itemPath, 0444);
    if (!lockA.ok() || !lockB.ok()) GTEST_SKIP() << "cannot make a file unmovable here (chattr)";
    ScriptedAnswers answers({1002, 1003});
    TarnActionOperation op(options({a, b}, "Move"));
    op.start();
    EXPECT_EQ(answers.asked.size(), 2);
    EXPECT_EQ(op.actionLog().count(":: file is not moveable \n:: COPYING \n"), 2);
    EXPECT_EQ(untimed(op.actionLog()).count("T :: DONE ::\n"), 2);
    for (const char* name : {"A.mxf", "B.mxf"}) {
        EXPECT_EQ(contentOf(dst() + "/Doc/MXF/" + name), content(name));
        EXPECT_EQ(contentOf(src() + "/" + name), content(name));
    }
    EXPECT_TRUE(a->DB_FileExists);  // still there: not marked missing
}

// An existing target: refused ("No", then "Yes" to copying), the unmovable-file
// question still comes but nothing is copied; accepted ("Yes"), the fast move
// replaces the target whole; onto another name of the same file (a hard link),
// the rename succeeds and changes nothing, so the item stays present.
TEST_F(MoveTest, AnExistingTargetIsKeptOrReplacedWholeAndOnlyAGoneFileIsMarkedMissing) {
    const struct Case {
        std::initializer_list<int> answers;
        bool hardLink, moved;
        QString logged;
    } cases[] = {
        {{1000, 1002}, false, false, ":: SKIPPING \n:: file is not moveable \n:: COPYING \n"},
        {{1001}, false, true, ":: OVERWRITING \n"},
        {{1001}, true, false, ":: OVERWRITING \n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.logged.toStdString() + (c.hardLink ? " onto a hard link" : ""));
        QDir(tmp.path()).removeRecursively();
        TarnItemPtr a = file("A.mxf");
        const QString target = dst() + "/Doc/MXF/A.mxf";
        if (c.hardLink) {
            QDir().mkpath(dst() + "/Doc/MXF");
            ASSERT_EQ(::link(QFile::encodeName(a->DB_itemPath).constData(),
                             QFile::encodeName(target).constData()),
                      0);
        } else {
            writeFile(target, "old");
        }
        ScriptedAnswers answers(c.answers);
        TarnActionOperation op(options({a}, "Move"));
        op.start();
        EXPECT_EQ(answers.asked.size(), qsizetype(c.answers.size()));
        EXPECT_EQ(answers.asked.first(), "File exists at destination.\nOverwrite?");
        EXPECT_TRUE(op.actionLog().contains(":: FILE EXISTS AT DESTINATION \n" + c.logged))
            << op.actionLog().toStdString();
        EXPECT_FALSE(op.actionLog().contains("ERROR"));
        EXPECT_EQ(contentOf(target), c.moved || c.hardLink ? content("A.mxf") : "old");
        EXPECT_EQ(contentOf(a->DB_itemPath), c.moved ? "(missing)" : content("A.mxf"));
        EXPECT_EQ(a->DB_FileExists, !c.moved);
        EXPECT_EQ(a->DB_isValid, !c.moved);
    }
}

// No Trash can be made: a file is where the data folder should be.
struct DeleteTest : ActionFixture {
    void SetUp() override {
        writeFile(tmp.path() + "/blocked", "x");
        qputenv("XDG_DATA_HOME", QFile::encodeName(tmp.path() + "/blocked/data"));
    }
};

TEST_F(DeleteTest, WithoutTrashThePermanentDeleteQuestionDecides) {
    QList<TarnItemPtr> items;
    for (const char* n : {"A.mxf", "B.mxf", "C.mxf", "D.mxf"}) items << file(n);
    ScriptedAnswers answers(
        {TarnAlert::kSecondButton, TarnAlert::kFirstButton, TarnAlert::kThirdButton});
    TarnActionOperation op(options(items, "Delete"));
    op.start();
    EXPECT_EQ(answers.asked,
              QStringList(3, "File can not be moved to the Trash.\nTry to delete permanently?"));
    EXPECT_EQ(answers.details.first(), items[0]->DB_itemPath);
    // Yes, No, Yes to All, and that answers the last one.
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(QFileInfo::exists(items[i]->DB_itemPath), i == 1) << i;
        EXPECT_EQ(items[i]->DB_FileExists, i == 1) << i;
    }
    const QString log = untimed(op.actionLog());
    EXPECT_EQ(log.count(":: SUCCEED ::\n"), 3);
    EXPECT_TRUE(log.contains(":: SKIPPED :: " + items[1]->DB_itemPath + " \n"));
    EXPECT_EQ(op.filesFailed(), 0u);  // trashing failed, but every file had its answer
    EXPECT_EQ(log.count(QRegularExpression(":: ERROR :: \\d+ :: No Trash folder at ")), 4);
    EXPECT_EQ(op.BytesDone(), 4 * 4096u);
}

TEST_F(DeleteTest, AFileThatCannotBeRemovedIsReported) {
    TarnItemPtr a = file("A.mxf");
    TarnItemPtr b = file("B.mxf");
    // Yes, Ok, Yes, (no second error dialog after "Do NotShow Again")
    ScriptedAnswers answers(
        {TarnAlert::kSecondButton, TarnAlert::kSecondButton, TarnAlert::kSecondButton});
    TarnActionOperation op(options({a, b}, "Delete"));
    {
        Locked folder(src(), 0500);
        if (!folder.ok()) GTEST_SKIP() << "cannot make a folder unchangeable here (chattr)";
        op.start();
    }
    EXPECT_EQ(answers.asked.size(), 3);
    const QString error = ::geteuid() == 0 ? "Operation not permitted" : "Permission denied";
    for (const TarnItemPtr& item : {a, b}) {
        EXPECT_TRUE(
            op.actionLog().contains(":: ERROR :: " + error + " :: " + item->DB_itemPath + " \n"));
        EXPECT_EQ(contentOf(item->DB_itemPath), content(item->DB_ClipName));
        EXPECT_TRUE(item->DB_FileExists);
    }
    EXPECT_FALSE(op.actionLog().contains(":: SUCCEED ::"));
    EXPECT_EQ(op.filesFailed(), 2u);
}

}  // namespace
