#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include "ActionTestKit.h"
#include "TestSupport.h"
#include "actions/TarnActionOperation.h"

using namespace actiontest;

namespace {

struct CopyFixture : ::testing::Test {
    QTemporaryDir tmp;
    QString src() const { return tmp.path() + QStringLiteral("/Vol/Avid MediaFiles/MXF/1"); }
    QString dst() const { return tmp.path() + QStringLiteral("/Dst"); }

    TarnActionOptions options(const QList<TarnItemPtr>& items, const QString& action = "Copy") {
        TarnActionOptions o(items);
        o.Action = action;
        o.Destination = dst();
        o.mediaFolderRoots = {tmp.path() + QStringLiteral("/Vol")};
        return o;
    }
    TarnItemPtr file(const QString& name, const QString& folder = QString(), int size = 4096) {
        QString path = (folder.isEmpty() ? src() : folder) + QLatin1Char('/') + name;
        EXPECT_TRUE(writeFile(path, content(name, size)));
        return makeItem(path);
    }
};

TEST_F(CopyFixture, NormalCopyWritesEveryLogLineAndKeepsTheSource) {
    QDir().mkpath(dst());
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    TarnActionOperation op(options({a}));
    op.start();
    const QString target = dst() + QStringLiteral("/Doc/MXF/A.mxf");
    const QString expected = QStringLiteral(
                                 "T :: TarnAction init \n"
                                 ":: Action :: Copy \n"
                                 ":: 1 :: items \n"
                                 ":: destination :: %1 \n"
                                 "T :: TarnAction queued\n"
                                 "T :: TarnAction Execution Started\n"
                                 "T :: STARTING ::\n:: copy\nfrom :: %2 \nto :: %3\n"
                                 "T :: DONE ::\n"
                                 "T :: TarnAction Finished\n")
                                 .arg(dst(), a->DB_itemPath, target);
    EXPECT_EQ(untimed(op.actionLog()), expected);
    EXPECT_EQ(readFile(target), content(QStringLiteral("A.mxf")));
    EXPECT_EQ(readFile(a->DB_itemPath), content(QStringLiteral("A.mxf")));
    EXPECT_TRUE(a->DB_FileExists);
    EXPECT_EQ(op.BytesDone(), 4096u);
    EXPECT_EQ(op.itemsDone(), 1u);
    EXPECT_EQ(op.bWritten(), 0);
    EXPECT_TRUE(op.isFinished());
}

TEST_F(CopyFixture, TargetFolderFollowsTheOptions) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    TarnItemPtr bare = file(QStringLiteral("NOEXT"));
    struct Case {
        bool projects, types, original;
        QString folderOfA, folderOfBare;
    } cases[] = {
        {true, true, true, "/Doc/MXF/1", "/Doc/_NOEXT_TYPE/1"},
        {true, true, false, "/Doc/MXF", "/Doc/_NOEXT_TYPE"},
        {true, false, false, "/Doc", "/Doc"},
        {false, true, false, "/MXF", "/_NOEXT_TYPE"},
        {false, false, true, "/1", "/1"},
        {false, false, false, "", ""},
    };
    for (const Case& c : cases) {
        TarnActionOptions o = options({a, bare});
        o.Destination = dst() + QStringLiteral("/");  // a trailing separator changes nothing
        o.Create_projects_folders = c.projects;
        o.Create_mxf_folders = c.types;
        o.Keep_original_folders = c.original;
        TarnActionOperation op(o);
        EXPECT_EQ(op.targetFolderForItem(*a), dst() + c.folderOfA);
        EXPECT_EQ(op.targetFolderForItem(*bare), dst() + c.folderOfBare);
    }
    // The documented example, copied for real.
    TarnActionOptions o = options({a});
    o.Keep_original_folders = true;
    TarnActionOperation op(o);
    op.start();
    EXPECT_TRUE(QFileInfo::exists(dst() + QStringLiteral("/Doc/MXF/1/A.mxf")));
}

TEST_F(CopyFixture, CopyIntoItsOwnFolderIsSkippedButCounted) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    TarnActionOptions o = options({a});
    o.Destination = src() + QStringLiteral("/");
    o.Create_projects_folders = o.Create_mxf_folders = false;
    TarnActionOperation op(o);
    EXPECT_TRUE(op.areSourceAndTargetEqual(a->DB_itemPath, src()));
    EXPECT_TRUE(op.areSourceAndTargetEqual(a->DB_itemPath + "/", src() + "//"));
    EXPECT_FALSE(op.areSourceAndTargetEqual(a->DB_itemPath, tmp.path()));
    op.start();
    EXPECT_TRUE(untimed(op.actionLog())
                    .contains(QStringLiteral("T :: SKIPPING - the same src&dst :: copy :: %1 \n")
                                  .arg(a->DB_itemPath)));
    EXPECT_FALSE(op.actionLog().contains(QStringLiteral("STARTING")));
    EXPECT_EQ(op.BytesDone(), 4096u);
    EXPECT_EQ(entries(src()), QStringList{QStringLiteral("A.mxf")});
}

TEST_F(CopyFixture, OverwriteQuestionHonoursNoYesAndYesToAll) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    TarnItemPtr b = file(QStringLiteral("B.mxf"));
    TarnItemPtr c = file(QStringLiteral("C.mxf"));
    const QString folder = dst() + QStringLiteral("/Doc/MXF/");
    for (const char* n : {"A.mxf", "B.mxf", "C.mxf"}) writeFile(folder + n, "old");

    ScriptedAnswers answers({TarnAlert::kFirstButton, TarnAlert::kSecondButton});
    TarnActionOperation no(options({a, b}));
    no.start();
    EXPECT_EQ(readFile(folder + "A.mxf"), QByteArray("old"));
    EXPECT_EQ(readFile(folder + "B.mxf"), content("B.mxf"));
    EXPECT_EQ(untimed(no.actionLog()).count(":: FILE EXISTS AT DESTINATION \n"), 2);
    EXPECT_TRUE(untimed(no.actionLog())
                    .contains(":: FILE EXISTS AT DESTINATION \n:: SKIPPING \nT :: STARTING"));
    EXPECT_EQ(no.actionLog().count(":: OVERWRITING \n"), 1);
    EXPECT_EQ(no.BytesDone(), 8192u);  // a skipped file still counts
    EXPECT_EQ(no.filesFailed(), 0u);   // and is no failure
    EXPECT_EQ(answers.asked(),
              QStringList(2, QStringLiteral("File exists at destination.\nOverwrite?")));
    EXPECT_EQ(answers.details().first(), folder + "A.mxf");
    EXPECT_EQ(answers.buttons().first(), QStringLiteral("No|Yes|Yes to All"));

    writeFile(folder + "B.mxf", "old");
    ScriptedAnswers all({TarnAlert::kThirdButton});
    TarnActionOperation yesToAll(options({a, b, c}));
    yesToAll.start();
    EXPECT_EQ(all.asked().size(), 1);  // remembered for the rest of the run
    EXPECT_TRUE(yesToAll.YesToAll());
    for (const char* n : {"A.mxf", "B.mxf", "C.mxf"}) EXPECT_EQ(readFile(folder + n), content(n));
    EXPECT_EQ(yesToAll.actionLog().count(":: OVERWRITING \n"), 1);
    EXPECT_EQ(yesToAll.actionLog().count(":: FILE EXISTS AT DESTINATION \n"), 3);
}

TEST_F(CopyFixture, YesToAllForOverwriteAlsoAnswersThePermanentDeleteQuestion) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    writeFile(dst() + "/A.mxf", "old");
    ScriptedAnswers answers({TarnAlert::kThirdButton});
    TarnActionOperation op(options({a}));
    EXPECT_TRUE(op.CheckTargetAndAskToOverwrite(dst() + "/A.mxf"));
    EXPECT_TRUE(op.shouldRemoveItemAtURL(a->DB_itemPath));
    EXPECT_EQ(answers.asked().size(), 1);
    EXPECT_TRUE(op.actionLog().endsWith(":: FILE EXISTS AT DESTINATION \n:: OVERWRITING \n"));
}

TEST_F(CopyFixture, NewTargetFolderIsSeededOnceFromTheFirstSourceFolder) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    TarnItemPtr b = file(QStringLiteral("B.mxf"));
    const QString other = tmp.path() + QStringLiteral("/Vol/Avid MediaFiles/MXF/2");
    TarnItemPtr c = file(QStringLiteral("C.mxf"), other);
    writeFile(src() + "/msmFMID.pmr", "pmr-of-1");
    writeFile(src() + "/msmMMOB.mdb", "mdb-of-1");
    writeFile(other + "/msmFMID.pmr", "pmr-of-2");
    testsupport::LogCapture console;
    TarnActionOperation op(options({a, b, c}));
    op.start();
    const QString folder = dst() + QStringLiteral("/Doc/MXF");
    EXPECT_EQ(readFile(folder + "/msmFMID.pmr"), QByteArray("pmr-of-1"));
    EXPECT_EQ(readFile(folder + "/msmMMOB.mdb"), QByteArray("mdb-of-1"));
    EXPECT_EQ(console.count(QStringLiteral("COPY old pmr %1/msmFMID.pmr").arg(folder)), 1);
    EXPECT_EQ(console.count(QStringLiteral("COPY old mdb %1/msmMMOB.mdb").arg(folder)), 1);
    EXPECT_EQ(entries(folder).size(), 5);
}

TEST_F(CopyFixture, FolderThatCannotBeMadeIsReportedAndSilencedOnRequest) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    TarnItemPtr b = file(QStringLiteral("B.mxf"));
    writeFile(dst() + "/Doc", "a file in the way");
    ScriptedAnswers answers({TarnAlert::kSecondButton});  // "Do NotShow Again"
    TarnActionOperation op(options({a, b}));
    op.start();
    const QString folder = dst() + QStringLiteral("/Doc/MXF");
    EXPECT_EQ(
        op.actionLog().count(QStringLiteral(":: ERROR :: Not a directory :: %1 \n").arg(folder)),
        2);
    EXPECT_EQ(answers.asked(), QStringList{QStringLiteral("Not a directory")});
    EXPECT_EQ(answers.buttons().first(), QStringLiteral("Ok|Do NotShow Again"));
    EXPECT_FALSE(op.ShowAllErrorDialogs());
    EXPECT_EQ(untimed(op.actionLog()).count("T :: ERROR ::\n"), 2);
    EXPECT_EQ(op.filesFailed(), 2u);
    EXPECT_EQ(readFile(dst() + "/Doc"), QByteArray("a file in the way"));
    EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
}

TEST_F(CopyFixture, CopyCarriesModeTimesAndAttributesAndRefusesLinks) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    const QByteArray path = QFile::encodeName(a->DB_itemPath);
    ASSERT_EQ(::chmod(path.constData(), 0640), 0);
    struct timespec times[2] = {{1000000000, 123}, {1200000000, 456000}};
    ASSERT_EQ(::utimensat(AT_FDCWD, path.constData(), times, 0), 0);
    bool xattrs = ::setxattr(path.constData(), "user.tarn", "clip", 4, 0) == 0;
    const QString linkPath = src() + QStringLiteral("/L.mxf");
    ASSERT_EQ(::symlink("A.mxf", QFile::encodeName(linkPath).constData()), 0);
    TarnItemPtr link = makeItem(linkPath);

    TarnActionOptions o = options({a, link});
    o.Create_projects_folders = o.Create_mxf_folders = false;
    QDir().mkpath(dst());
    TarnActionOperation op(o);
    op.start();

    struct stat s {
    }, t{};
    ASSERT_EQ(::stat(path.constData(), &s), 0);
    ASSERT_EQ(::stat(QFile::encodeName(dst() + "/A.mxf").constData(), &t), 0);
    EXPECT_EQ(t.st_mode & 07777, 0640u);
    EXPECT_EQ(t.st_mtim.tv_sec, 1200000000);
    EXPECT_EQ(t.st_mtim.tv_nsec, 456000);
    EXPECT_EQ(t.st_atim.tv_sec, 1000000000);
    // The source keeps its bytes, mode and times.
    EXPECT_EQ(s.st_mode & 07777, 0640u);
    EXPECT_EQ(s.st_mtim.tv_sec, 1200000000);
    EXPECT_EQ(s.st_atim.tv_sec, 1000000000);
    EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
    if (xattrs) {
        char value[16] = {};
        EXPECT_EQ(::getxattr(QFile::encodeName(dst() + "/A.mxf").constData(), "user.tarn", value,
                             sizeof value),
                  4);
        EXPECT_STREQ(value, "clip");
    }
    // A link is no media file: it is refused, not followed and not copied.
    EXPECT_FALSE(QFileInfo(dst() + "/L.mxf").exists() || QFileInfo(dst() + "/L.mxf").isSymLink());
    EXPECT_TRUE(op.actionLog().contains(":: ERROR :: Is a symbolic link :: " + linkPath + " \n"));
    EXPECT_EQ(op.filesFailed(), 1u);
}

}  // namespace
