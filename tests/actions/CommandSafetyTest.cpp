#include <QStandardPaths>
#include <QThread>

#include <fcntl.h>
#include <pwd.h>
#include <stdlib.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include "CommandKit.h"
#include "actions/TarnFileCopier.h"

using namespace actiontest;

namespace {

// One media folder with two listed files.
struct SmallVolume : CommandFixture {
    QString media() const { return vol() + "/Avid MediaFiles/MXF/1"; }
    void SetUp() override {
        writeMediaFolder(media(), {"A.mxf", "B.mxf"}, {"A.mxf", "B.mxf"});
        QDir().mkpath(dst());
    }
    bool hasPartials(const QString& folder) const {
        for (const QString& name : entries(folder))
            if (name.startsWith(TarnFileCopier::temporaryPrefix())) return true;
        return false;
    }
};

TEST_F(SmallVolume, EverySpellingOfTheSourceFolderIsTheSameFolder) {
    ASSERT_EQ(::symlink(QFile::encodeName(media()).constData(),
                        QFile::encodeName(tmp.path() + "/link").constData()),
              0);
    QProcessEnvironment e = env();
    e.insert("HOME", tmp.path());
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
    for (const char* action : {"copy", "move"}) {
        for (const QString& to : spellings) {
            SCOPED_TRACE(std::string(action) + " --to " + to.toStdString());
            const Outcome r = run({action, vol(), "--to", to, "--sure", "--answer", "all",
                                   "--no-project-folders", "--no-type-folders"},
                                  QStringLiteral(TARN_CLI_PATH), e, tmp.path());
            EXPECT_EQ(r.code, 0) << r.err.toStdString();
            EXPECT_EQ(r.out.count("SKIPPING - the same src&dst :: " + QString(action)), 2)
                << r.out.toStdString();
            EXPECT_FALSE(r.out.contains("FILE EXISTS AT DESTINATION"));
            EXPECT_FALSE(r.err.contains("Overwrite?"));
            EXPECT_EQ(readFile(media() + "/A.mxf"), content("A.mxf"));
            EXPECT_EQ(readFile(media() + "/B.mxf"), content("B.mxf"));
            EXPECT_FALSE(hasPartials(media()));
        }
    }
}

// Questions asked on a terminal whose input has ended.
TEST_F(SmallVolume, EndOfInputAnswersTheButtonThatKeepsEverything) {
    writeFile(tmp.path() + "/blocked", "x");
    const struct Case {
        QStringList args;
        const char* question;
        bool noTrash;
    } cases[] = {
        {{"copy", "--to", dst()}, "File exists at destination.", false},
        {{"move", "--to", dst()}, "File exists at destination.", false},
        {{"delete"}, "File can not be moved to the Trash.", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
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

        QProcessEnvironment e = env();
        if (c.noTrash) e.insert("XDG_DATA_HOME", tmp.path() + "/blocked/data");
        const Outcome r = run(QStringList{c.args.first(), vol(), "--sure", "--no-project-folders",
                                          "--no-type-folders"} +
                                  c.args.mid(1),
                              QStringLiteral(TARN_CLI_PATH), e, {}, terminal);
        ::close(slave);
        ::close(master);
        EXPECT_EQ(r.err.count(c.question), 2) << r.err.toStdString();
        EXPECT_TRUE(r.err.contains("(end of input) -> No"));
        EXPECT_FALSE(r.err.contains(QRegularExpression("end of input\\) -> (?!No\\n)")));
        EXPECT_FALSE(r.out.contains("OVERWRITING"));
        EXPECT_EQ(readFile(media() + "/A.mxf"), content("A.mxf"));
        EXPECT_EQ(readFile(media() + "/B.mxf"), content("B.mxf"));
        EXPECT_EQ(readFile(dst() + "/A.mxf"), QByteArray("the old A"));
        EXPECT_EQ(readFile(dst() + "/B.mxf"), QByteArray("the old B"));
    }
}

TEST_F(SmallVolume, APartialCopyOfAKilledRunIsClearedByTheNextRunIntoItsFolder) {
    // An unlisted file big enough to be caught while it is copied.
    const QString big = media() + "/Big.mxf";
    int fd = ::open(QFile::encodeName(big).constData(), O_CREAT | O_WRONLY, 0644);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(::ftruncate(fd, 2LL * 1024 * 1024 * 1024), 0);
    ::close(fd);
    const QStringList common{
        vol(), "--to", dst(), "--sure", "--no-mxf", "--no-project-folders", "--no-type-folders"};
    auto partials = [&] {
        QStringList found;
        for (const QString& name : entries(dst()))
            if (name.startsWith(TarnFileCopier::temporaryPrefix())) found << name;
        return found;
    };

    QProcess p;
    p.setProcessEnvironment(env());
    p.start(QStringLiteral(TARN_CLI_PATH),
            QStringList{"copy"} + common + QStringList{"--search", "Big"});
    p.closeWriteChannel();
    while (partials().isEmpty() && p.state() != QProcess::NotRunning) QThread::msleep(5);
    p.kill();  // SIGKILL: no chance to clean up
    p.waitForFinished(-1);
    const QStringList left = partials();
    ASSERT_EQ(left.size(), 1) << p.readAllStandardError().toStdString();

    // Another Tarn's partial copy in the same folder is still being written.
    const QString live = dst() + "/" + TarnFileCopier::temporaryPrefix() + "Live.mxf.Ab12Cd";
    writeFile(live, "in progress");
    QFile held(live);
    ASSERT_TRUE(held.open(QIODevice::ReadOnly));
    ASSERT_EQ(::flock(held.handle(), LOCK_EX | LOCK_NB), 0);

    const Outcome r = tarn(QStringList{"copy"} + common + QStringList{"--search", "A.mxf"});
    EXPECT_EQ(r.code, 0) << r.err.toStdString();
    EXPECT_EQ(partials(), QStringList{QFileInfo(live).fileName()});
    EXPECT_TRUE(r.out.contains(":: REMOVED ABANDONED PARTIAL COPY :: " + dst() + "/" +
                               left.first() + " \n"));
    EXPECT_EQ(readFile(dst() + "/A.mxf"), content("A.mxf"));
    EXPECT_EQ(QFileInfo(big).size(), 2LL * 1024 * 1024 * 1024);
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
    if (run(space + QStringList{"sh", "-c", "mount -t tmpfs tmpfs \"$1\"", "sh", dst()}, unshare)
            .code != 0)
        GTEST_SKIP() << "cannot mount a tmpfs in a mount namespace here";
    writeFile(media() + "/A.mxf", QByteArray(3 * 1024 * 1024, 'a'));
    const Outcome r = run(space + QStringList{"sh", "-c", script, "sh", dst(), TARN_CLI_PATH,
                                              "copy", vol(), "--to", dst(), "--sure", "--search",
                                              "A.mxf", "--no-project-folders", "--no-type-folders"},
                          unshare);
    EXPECT_EQ(r.code, 1) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains(" :: ERROR ::\n:: ERROR :: 28 :: No space left on device \n"))
        << r.out.toStdString();
    EXPECT_FALSE(r.err.contains("left: " + TarnFileCopier::temporaryPrefix()))
        << r.err.toStdString();
}

}  // namespace
