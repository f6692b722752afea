#include <sys/xattr.h>

#include "ActionTestKit.h"

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
        testsupport::LogCapture console;
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
        EXPECT_EQ(console.contains(":: Fast Move"), c.action == "Move");
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
            << c.project.toStdString() << " " << c.name.toStdString() << " " << c.projects
            << c.types << c.original;
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
    testsupport::LogCapture console;
    TarnActionOperation(options(items)).start();
    const QString folder = dst() + "/Doc/MXF";
    EXPECT_EQ(contentOf(folder + "/msmFMID.pmr"), QByteArray("pmr-of-1"));
    EXPECT_EQ(contentOf(folder + "/msmMMOB.mdb"), QByteArray("mdb-of-1"));
    EXPECT_EQ(console.count("COPY old pmr " + folder + "/msmFMID.pmr"), 1);
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

}  // namespace
