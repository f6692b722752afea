#include <QStandardPaths>

#include <fcntl.h>
#include <pwd.h>
#include <stdlib.h>
#include <sys/file.h>

#include "CommandKit.h"
#include "DemoVolume.h"

using namespace actiontest;

namespace {

// The demo volume, and an empty destination.
struct DemoCommand : CommandFixture {
    void SetUp() override {
        QString error;
        ASSERT_TRUE(fixtures::DemoVolume::write(vol(), &error)) << error.toStdString();
        QDir().mkpath(dst());
    }
};

TEST_F(DemoCommand, UsageErrorsRefusalsAndDryRunsChangeNothing) {
    const struct Case {
        QStringList args;
        int code;
        QString out;  // a pattern
        QString err;  // a part
    } cases[] = {
        {{"copy", vol()}, 2, "", "Invalid destination path"},
        {{"move", vol(), "--to", tmp.path() + "/nowhere", "--sure"},
         2,
         "",
         "Please check destination path"},
        {{"copy", vol(), "--to", dst(), "--answer", "maybe"}, 2, "", ""},
        {{"copy", "--to", dst(), "--sure"}, 2, "", ""},
        {{"move", vol(), "--to", dst()},  // not sure
         2,
         "^will Move \n",
         "Please don't hurry, be patient...\nPlease verify everything"},
        {{"delete", vol(), "--dry-run"},
         0,
         "-> \\(Trash\\)\n.*destination: Super Secret Annihilator \\(SSA\\)",
         ""},
        {{"copy", vol(), "--to", dst(), "--keep-folders", "--dry-run"},
         0,
         QRegularExpression::escape("/MXF/1/Harbour_Wide_V01.5F3A1C01.mxf\n    -> " + dst() +
                                    "/Harbour/MXF/1/Harbour_Wide_V01.5F3A1C01.mxf\n"),
         ""},
    };
    const int before = filesUnder(vol());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
        const Outcome r = tarn(c.args);
        EXPECT_EQ(r.code, c.code);
        EXPECT_TRUE(r.out.contains(
            QRegularExpression(c.out, QRegularExpression::DotMatchesEverythingOption)))
            << r.out.toStdString();
        EXPECT_TRUE(r.err.contains(c.err)) << r.err.toStdString();
    }
    EXPECT_EQ(filesUnder(dst()), 0);
    EXPECT_EQ(filesUnder(vol()), before);
}

TEST_F(DemoCommand, CopyThenAnswersAndFailures) {
    const int before = filesUnder(vol());
    Outcome r = tarn({"copy", vol(), "--to", dst(), "--sure", "--no-project-folders",
                      "--action-log", tmp.path() + "/action.log"});
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    const QString log = QString::fromUtf8(readFile(tmp.path() + "/action.log"));
    EXPECT_TRUE(log.contains(":: Action :: Copy \n"));
    EXPECT_TRUE(log.endsWith(" :: TarnAction Finished\n"));
    EXPECT_FALSE(log.contains("ERROR"));
    EXPECT_TRUE(QFileInfo::exists(dst() + "/MXF/Harbour_Wide_V01.5F3A1C01.mxf"));
    EXPECT_TRUE(r.err.contains(QRegularExpression("copy: (\\d+) of \\1 items")));
    EXPECT_EQ(filesUnder(vol()), before);  // the sources stay

    // Again: every target exists; "no" keeps them, and a skip is no failure.
    r = tarn({"copy", vol(), "--to", dst(), "--sure", "--no-project-folders", "--answer", "no"});
    EXPECT_EQ(r.code, 0);
    EXPECT_TRUE(r.out.contains(":: FILE EXISTS AT DESTINATION \n:: SKIPPING \n"));
    EXPECT_FALSE(r.out.contains(":: OVERWRITING"));
    EXPECT_TRUE(r.err.contains("File exists at destination. Overwrite?"));

    // A file where a project folder should be: those files fail.
    writeFile(dst() + "/Harbour", "in the way");
    r = tarn({"copy", vol(), "--to", dst(), "--sure", "--answer", "all"});
    EXPECT_EQ(r.code, 1);
    EXPECT_TRUE(r.out.contains(":: ERROR :: Not a directory :: " + dst() + "/Harbour/MXF \n"));
    EXPECT_EQ(readFile(dst() + "/Harbour"), QByteArray("in the way"));
}

// One media folder with two listed files.
struct SmallVolume : CommandFixture {
    QString media() const { return vol() + "/Avid MediaFiles/MXF/1"; }
    void SetUp() override {
        writeMediaFolder(media(), {"A.mxf", "B.mxf"}, {"A.mxf", "B.mxf"});
        QDir().mkpath(dst());
    }
    void expectSourcesKept() const {
        EXPECT_EQ(readFile(media() + "/A.mxf"), content("A.mxf"));
        EXPECT_EQ(readFile(media() + "/B.mxf"), content("B.mxf"));
        EXPECT_EQ(partials(media()), QStringList{});
    }
    QStringList flatInto(const QString& to) const {
        return {vol(), "--to", to, "--sure", "--no-project-folders", "--no-type-folders"};
    }
};

TEST_F(SmallVolume, EverySpellingOfTheSourceFolderIsTheSameFolder) {
    ASSERT_TRUE(QFile::link(media(), tmp.path() + "/link"));
    const struct passwd* me = ::getpwuid(::geteuid());
    ASSERT_NE(me, nullptr);
    const QString spellings[] = {
        "vol/Avid MediaFiles/MXF/1",            // relative to the working folder
        media() + "/",                          // a trailing separator
        media() + "//",                         // two
        vol() + "/Avid MediaFiles/MXF/2/../1",  // through ".."
        "./vol/Avid MediaFiles/./MXF/1",        // through "."
        "~/vol/Avid MediaFiles/MXF/1",          // the home folder
        QStringLiteral("~%1/%2").arg(QString::fromLocal8Bit(me->pw_name),
                                     QDir(QFile::decodeName(me->pw_dir)).relativeFilePath(media())),
        tmp.path() + "/link",  // a link to it
    };
    QDir().mkpath(vol() + "/Avid MediaFiles/MXF/2");
    for (const QString action : {"copy", "move"}) {
        for (const QString& to : spellings) {
            SCOPED_TRACE((action + " --to " + to).toStdString());
            const Outcome r =
                run(QStringList{action} + flatInto(to) + QStringList{"--answer", "all"},
                    {{{"HOME", tmp.path()}}, tmp.path(), {}});
            EXPECT_EQ(r.code, 0) << r.err.toStdString();
            EXPECT_EQ(r.out.count("SKIPPING - the same src&dst :: " + action), 2)
                << r.out.toStdString();
            EXPECT_FALSE(r.out.contains("FILE EXISTS AT DESTINATION"));
            EXPECT_FALSE(r.err.contains("Overwrite?"));
            expectSourcesKept();
        }
    }
}

// Questions asked on a terminal whose input has ended.
TEST_F(SmallVolume, EndOfInputAnswersTheButtonThatKeepsEverything) {
    const struct Case {
        QString action;
        const char* question;
    } cases[] = {
        {"copy", "File exists at destination."},
        {"move", "File exists at destination."},
        {"delete", "File can not be moved to the Trash."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.action.toStdString());
        // Every target exists, with other bytes.
        writeFile(dst() + "/A.mxf", "the old A");
        writeFile(dst() + "/B.mxf", "the old B");
        int master = ::posix_openpt(O_RDWR | O_NOCTTY);
        ASSERT_GE(master, 0);
        ASSERT_EQ(::grantpt(master), 0);
        ASSERT_EQ(::unlockpt(master), 0);
        const QString terminal = QString::fromLatin1(::ptsname(master));
        const int slave = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
        ASSERT_GE(slave, 0);
        ASSERT_EQ(::write(master, "\x04", 1), 1);  // end of input (Ctrl-D)
        QStringList args = QStringList{c.action} + flatInto(dst());
        if (c.action == "delete") args = args.mid(0, 2) + args.mid(4);
        const Outcome r = run(
            args, {c.action == "delete" ? withoutTrash() : QMap<QString, QString>{}, {}, terminal});
        ::close(slave);
        ::close(master);
        EXPECT_EQ(r.err.count(c.question), 2) << r.err.toStdString();
        EXPECT_TRUE(r.err.contains("(end of input) -> No"));
        EXPECT_FALSE(r.err.contains(QRegularExpression("end of input\\) -> (?!No\\n)")));
        EXPECT_FALSE(r.out.contains("OVERWRITING"));
        expectSourcesKept();
        EXPECT_EQ(readFile(dst() + "/A.mxf"), QByteArray("the old A"));
        EXPECT_EQ(readFile(dst() + "/B.mxf"), QByteArray("the old B"));
    }
}

// A run stopped while it copies a big file: terminated, it removes its partial
// copy; killed, the next run into that folder removes it, but not the partial
// copy another run is still writing.
TEST_F(SmallVolume, AStoppedCopyLeavesNoPartialCopyBehind) {
    const QString big = media() + "/Big.mxf";  // not listed
    const qint64 size = 2LL * 1024 * 1024 * 1024;
    ASSERT_TRUE(makeSparse(big, size));
    const QStringList copyBig =
        QStringList{"copy", "--no-mxf"} + flatInto(dst()) + QStringList{"--search", "Big"};
    QProcess terminated;
    ASSERT_TRUE(startCopying(terminated, copyBig, dst()))
        << terminated.readAllStandardError().toStdString();
    terminated.terminate();
    terminated.waitForFinished(-1);
    EXPECT_EQ(terminated.exitCode(), 130);
    const QString out = QString::fromUtf8(terminated.readAllStandardOutput());
    EXPECT_TRUE(out.contains(" :: TarnAction Cancelled\n"));
    EXPECT_TRUE(out.endsWith(" :: TarnAction Finished\n"));
    EXPECT_EQ(entries(dst()), QStringList{});

    QProcess killed;
    ASSERT_TRUE(startCopying(killed, copyBig, dst()));
    killed.kill();  // SIGKILL: no chance to clean up
    killed.waitForFinished(-1);
    const QStringList left = partials(dst());
    ASSERT_EQ(left.size(), 1);
    // Another Tarn's partial copy in the same folder is still being written.
    const QString live = TarnFileCopier::temporaryPrefix() + "Live.mxf.Ab12Cd";
    writeFile(dst() + "/" + live, "in progress");
    QFile held(dst() + "/" + live);
    ASSERT_TRUE(held.open(QIODevice::ReadOnly));
    ASSERT_EQ(::flock(held.handle(), LOCK_EX | LOCK_NB), 0);

    const Outcome r =
        tarn(QStringList{"copy", "--no-mxf"} + flatInto(dst()) + QStringList{"--search", "A.mxf"});
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(partials(dst()), QStringList{live});
    EXPECT_TRUE(r.out.contains(":: REMOVED ABANDONED PARTIAL COPY :: " + dst() + "/" +
                               left.first() + " \n"));
    EXPECT_EQ(readFile(dst() + "/A.mxf"), content("A.mxf"));
    EXPECT_EQ(QFileInfo(big).size(), size);
}

// The destination is a small file system of its own (a tmpfs mounted in a
// private mount namespace, as root or in a user namespace).
TEST_F(SmallVolume, AFullDiskIsNamedInTheActionLog) {
    const QString unshare = QStandardPaths::findExecutable("unshare");
    if (unshare.isEmpty()) GTEST_SKIP() << "no unshare here";
    const QStringList space = ::geteuid() == 0 ? QStringList{"-m"} : QStringList{"-rm"};
    const QString script = QStringLiteral(
        "d=$1; shift; mount -t tmpfs -o size=1m tmpfs \"$d\" || exit 99; \"$@\"; rc=$?;"
        " ls -A \"$d\" | sed 's/^/left: /' >&2; exit $rc");
    if (run(space + QStringList{"sh", "-c", "mount -t tmpfs tmpfs \"$1\"", "sh", dst()}, {},
            unshare)
            .code != 0)
        GTEST_SKIP() << "cannot mount a tmpfs in a mount namespace here";
    writeFile(media() + "/A.mxf", QByteArray(3 * 1024 * 1024, 'a'));
    const Outcome r = run(space +
                              QStringList{"sh", "-c", script, "sh", dst(), TARN_CLI_PATH, "copy",
                                          "--search", "A.mxf"} +
                              flatInto(dst()),
                          {}, unshare);
    EXPECT_EQ(r.code, 1) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains(" :: ERROR ::\n:: ERROR :: 28 :: No space left on device \n"))
        << r.out.toStdString();
    EXPECT_FALSE(r.err.contains("left: " + TarnFileCopier::temporaryPrefix()))
        << r.err.toStdString();
}

}  // namespace
