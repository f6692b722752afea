#include <QDirIterator>
#include <QStandardPaths>

#include <fcntl.h>
#include <pwd.h>
#include <stdlib.h>
#include <sys/file.h>

#include "ActionTestKit.h"
#include "CliRun.h"
#include "PmrWriter.h"

// `tarn copy|move|delete` run to their end, each with a private settings file
// and a private data folder (so its own Trash).
using namespace actiontest;

namespace {

// Everything under a folder, links not followed: one line per path with its
// type, content hash (files) or target (links).
QStringList snapshot(const QString& folder) {
    QStringList seen;
    for (QDirIterator it(folder,
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
         it.hasNext();) {
        const QFileInfo info(it.next());
        QString what = info.isFile() ? QString::number(qHash(contentOf(info.filePath()))) : "other";
        if (info.isDir()) what = "folder";
        if (info.isSymLink()) what = "link " + info.symLinkTarget();
        seen << info.filePath().mid(folder.size()) + " = " + what;
    }
    seen.sort();
    return seen;
}

struct CommandFixture : ::testing::Test {
    CliRun tarn;
    QString tmp(const QString& name = {}) const { return tarn.tempPath(name); }
    QString vol() const { return tmp("vol"); }
    QString dst() const { return tmp("dst"); }
    QString media() const { return vol() + "/Avid MediaFiles/MXF/1"; }
    // No Trash can be made in runs with this environment: a file is where
    // their data folder should be.
    QMap<QString, QString> withoutTrash() const {
        writeFile(tmp("blocked"), "x");
        return {{"XDG_DATA_HOME", tmp("blocked/data")}};
    }
    // Starts tarn with `args` and waits until it writes a partial copy into
    // `folder` (true) or ends (false).
    bool startCopying(QProcess& p, const QStringList& args, const QString& folder) const {
        QProcessEnvironment e = QProcessEnvironment::systemEnvironment();
        e.insert("TARN_SETTINGS", tarn.settingsFile());
        e.insert("XDG_DATA_HOME", tarn.dataHome());
        p.setProcessEnvironment(e);
        p.start(QStringLiteral(TARN_CLI_PATH), args);
        p.closeWriteChannel();
        // Waiting on the process (not sleeping) is what notices a run that ended early.
        while (partials(folder).isEmpty() && p.state() != QProcess::NotRunning)
            p.waitForFinished(5);
        return !partials(folder).isEmpty();
    }
    // A media folder whose index lists `listed` (project "Doc"); each name
    // in `files` is written as a file of its own content.
    static void writeMediaFolder(const QString& folder, const QStringList& listed,
                                 const QStringList& files,
                                 const QList<fixtures::PmrEntry>& extra = {}) {
        QList<fixtures::PmrEntry> entries;
        quint64 id = 0x5F3A0000;
        for (const QString& name : listed)
            entries << fixtures::makePmrEntry(++id, name, QStringLiteral("Doc"));
        writeFile(folder + "/msmFMID.pmr", fixtures::writePmr(entries + extra));
        for (const QString& name : files) writeFile(folder + "/" + name, content(name));
    }
};

// One media folder with two listed files.
struct SmallVolume : CommandFixture {
    void SetUp() override {
        writeMediaFolder(media(), {"A.mxf", "B.mxf"}, {"A.mxf", "B.mxf"});
        QDir().mkpath(dst());
    }
    void expectSourcesKept() const {
        EXPECT_EQ(contentOf(media() + "/A.mxf"), content("A.mxf"));
        EXPECT_EQ(contentOf(media() + "/B.mxf"), content("B.mxf"));
        EXPECT_EQ(partials(media()), QStringList{});
    }
    QStringList flatInto(const QString& to) const {
        return {vol(), "--to", to, "--sure", "--no-project-folders", "--no-type-folders"};
    }
};

TEST_F(SmallVolume, UsageErrorsRefusalsAndDryRunsChangeNothing) {
    const QString kept = "1/B.mxf\n    -> " + dst() + "/[^/]+/MXF/1/B.mxf\n";
    const struct Case {
        QStringList args;
        int code;
        QString out, err;  // a pattern; a part
    } cases[] = {
        {{"copy", vol()}, 2, "", "Invalid destination path"},
        {{"move", vol(), "--to", vol() + "/nowhere", "--sure"}, 2, "", "check destination path"},
        {{"copy", vol(), "--to", dst(), "--answer", "maybe"}, 2, "", ""},
        {{"copy", "--to", dst(), "--sure"}, 2, "", ""},
        {{"move", vol(), "--to", dst()}, 2, "^will Move \n", "Please verify everything"},
        {{"delete", vol(), "--dry-run"}, 0, "-> \\(Trash\\)\n.*destination: Super Secret", ""},
        {{"copy", vol(), "--to", dst(), "--keep-folders", "--dry-run"}, 0, kept, ""},
    };
    const QStringList before = snapshot(vol());
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
        const CliResult r = tarn(c.args);
        EXPECT_EQ(r.exitCode, c.code);
        EXPECT_TRUE(r.out.contains(QRegularExpression("(?s)" + c.out))) << r.out.toStdString();
        EXPECT_TRUE(r.err.contains(c.err)) << r.err.toStdString();
    }
    EXPECT_EQ(snapshot(dst()), QStringList());
    EXPECT_EQ(snapshot(vol()), before);
}

TEST_F(SmallVolume, EverySpellingOfTheSourceFolderIsTheSameFolder) {
    ASSERT_TRUE(QFile::link(media(), tmp("link")));
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
        tmp("link"),  // a link to it
    };
    QDir().mkpath(vol() + "/Avid MediaFiles/MXF/2");
    for (const QString action : {"copy", "move"}) {
        for (const QString& to : spellings) {
            SCOPED_TRACE((action + " --to " + to).toStdString());
            const CliResult r =
                tarn(QStringList{action} + flatInto(to) + QStringList{"--answer", "all"},
                     {{{"HOME", tmp()}}, tmp(), {}});
            EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
            EXPECT_EQ(r.out.count("SKIPPING - the same src&dst :: " + action), 2)
                << r.out.toStdString();
            // Skipped, but counted as done.
            EXPECT_TRUE(r.err.contains(QRegularExpression(": 2 of 2 items, (.+) of \\1\n")));
            EXPECT_FALSE(r.out.contains("FILE EXISTS AT DESTINATION"));
            expectSourcesKept();
        }
    }
}

// Questions nobody can answer, on a terminal whose input has ended, or
// answered "no" in advance: the answer is the button that keeps everything.
TEST_F(SmallVolume, EndOfInputOrAnswerNoKeepsEverything) {
    const QString exists = "File exists at destination.";
    const struct Case {
        QString action;
        bool terminal;
        QString question;
    } cases[] = {{"copy", true, exists},
                 {"move", true, exists},
                 {"delete", true, "File can not be moved to the Trash."},
                 {"copy", false, exists},
                 {"delete", false, "File can not be moved to the Trash."}};
    for (const Case& c : cases) {
        SCOPED_TRACE((c.action + (c.terminal ? " (end of input)" : " --answer no")).toStdString());
        // Every target exists, with other bytes.
        writeFile(dst() + "/A.mxf", "the old A");
        writeFile(dst() + "/B.mxf", "the old B");
        const int master = ::posix_openpt(O_RDWR | O_NOCTTY);
        ASSERT_GE(master, 0);
        ASSERT_EQ(::grantpt(master) | ::unlockpt(master), 0);
        const QString terminal = QString::fromLatin1(::ptsname(master));
        const int slave = ::open(::ptsname(master), O_RDWR | O_NOCTTY);
        ASSERT_GE(slave, 0);
        ASSERT_EQ(::write(master, "\x04", 1), 1);  // end of input (Ctrl-D)
        QStringList args = QStringList{c.action} + flatInto(dst());
        if (c.action == "delete") args = args.mid(0, 2) + args.mid(4);
        if (!c.terminal) args += QStringList{"--answer", "no"};
        const CliResult r =
            tarn(args, {c.action == "delete" ? withoutTrash() : QMap<QString, QString>{},
                        {},
                        c.terminal ? terminal : QString()});
        ::close(slave);
        ::close(master);
        EXPECT_EQ(r.exitCode, 0);  // a skip is no failure
        EXPECT_EQ(r.err.count(c.question), 2) << r.err.toStdString();
        EXPECT_EQ(r.err.contains("(end of input) -> No\n"), c.terminal);
        EXPECT_FALSE(r.err.contains(QRegularExpression(" -> (?!No\n)")));
        expectSourcesKept();
        EXPECT_EQ(contentOf(dst() + "/A.mxf"), QByteArray("the old A"));
        EXPECT_EQ(contentOf(dst() + "/B.mxf"), QByteArray("the old B"));
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
    EXPECT_TRUE(QString::fromUtf8(terminated.readAllStandardOutput())
                    .contains(QRegularExpression(
                        "(?s) :: TarnAction Cancelled\n.* :: TarnAction Finished\n$")));
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

    const QString log = tmp("action.log");
    const CliResult r = tarn(QStringList{"copy", "--no-mxf"} + flatInto(dst()) +
                             QStringList{"--search", "A.mxf", "--action-log", log});
    EXPECT_EQ(r.exitCode, 0) << r.err.toStdString();
    EXPECT_EQ(partials(dst()), QStringList{live});
    EXPECT_TRUE(contentOf(log).contains(":: REMOVED ABANDONED PARTIAL COPY :: " +
                                        QFile::encodeName(dst() + "/" + left.first()) + " \n"));
    EXPECT_TRUE(contentOf(log).endsWith(" :: TarnAction Finished\n"));
    EXPECT_EQ(contentOf(dst() + "/A.mxf"), content("A.mxf"));
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
    if (tarn(space + QStringList{"sh", "-c", "mount -t tmpfs tmpfs \"$1\"", "sh", dst()}, {},
             unshare)
            .exitCode != 0)
        GTEST_SKIP() << "cannot mount a tmpfs in a mount namespace here";
    writeFile(media() + "/A.mxf", QByteArray(3 * 1024 * 1024, 'a'));
    const CliResult r = tarn(space +
                                 QStringList{"sh", "-c", script, "sh", dst(), TARN_CLI_PATH, "copy",
                                             "--search", "A.mxf"} +
                                 flatInto(dst()),
                             {}, unshare);
    EXPECT_EQ(r.exitCode, 1) << r.err.toStdString();
    EXPECT_TRUE(r.out.contains(" :: ERROR ::\n:: ERROR :: 28 :: No space left on device \n"))
        << r.out.toStdString();
    EXPECT_FALSE(r.err.contains("left: " + TarnFileCopier::temporaryPrefix()))
        << r.err.toStdString();
}

// A volume whose media index names, next to two media files, everything a
// damaged index can hold: ways out of the folder, the folder itself, a
// sub-folder, links to a folder and to a file outside, a pipe, a name with
// the other system's separator, and last an empty name (which ends the
// index). A link inside the media folder leads to "Avid Projects", which has
// an index of its own.
struct DamagedIndex : CommandFixture {
    void SetUp() override {
        fixtures::PmrEntry empty = fixtures::makePmrEntry(0x77, "X", "Doc");
        empty.nameLength = 0;
        writeMediaFolder(media(),
                         {"Good.mxf", "..", "../../..", "../../../Avid Projects", ".", "Sub",
                          "LinkDir", "LinkFile", "Pipe", "..\\..\\Keep.mxf", "Also Good.wav"},
                         {"Good.mxf", "Also Good.wav", "Sub/Inner.mxf"}, {empty});
        writeMediaFolder(vol() + "/Avid Projects", {"Doc.avb"}, {"Doc.avb", "Doc Settings.avs"});
        writeFile(vol() + "/Keep.mxf", content("Keep.mxf"));
        ASSERT_TRUE(QFile::link(vol() + "/Avid Projects", media() + "/LinkDir"));
        ASSERT_TRUE(QFile::link(vol() + "/Keep.mxf", media() + "/LinkFile"));
        ASSERT_EQ(::mkfifo(QFile::encodeName(media() + "/Pipe").constData(), 0600), 0);
        QDir().mkpath(dst());
    }
};

TEST_F(DamagedIndex, NothingButTheMediaFilesIsTouchedWhateverTheAnswers) {
    const CliResult dry = tarn({"delete", "--volume", vol(), "--show-missing", "--dry-run"});
    EXPECT_EQ(dry.exitCode, 0);
    for (const QString line :
         {"%1/Good.mxf\n    -> (Trash)\n", "%1/Sub\n    -> (refused: Is a directory)\n",
          "%1/LinkDir\n    -> (refused: Is a symbolic link)\n",
          "%1/Pipe\n    -> (refused: Not a regular file)\n", "\n    -> (refused: No path)\n"})
        EXPECT_TRUE(dry.out.contains(QString(line).replace("%1", media()))) << line.toStdString();

    const QRegularExpression mediaFile("^/Avid MediaFiles/MXF/1/(Good.mxf|Also Good.wav) = ");
    for (const QString action : {"delete", "move", "copy"}) {
        for (const QString answer : {"yes", "all"}) {  // "Yes", or "Yes to All"
            SCOPED_TRACE((action + " --answer " + answer).toStdString());
            QDir(tmp()).removeRecursively();
            SetUp();
            QStringList expected = snapshot(vol());
            ASSERT_EQ(expected.filter(mediaFile).size(), 2);
            if (action != "copy")
                expected.removeIf([&](const QString& l) { return mediaFile.match(l).hasMatch(); });
            QStringList args{action,     "--volume", vol(),      "--show-missing",
                             "--no-mxf", "--sure",   "--answer", answer};
            if (action != "delete") args << "--to" << dst();
            const CliResult r = tarn(args, {withoutTrash(), {}, {}});
            EXPECT_EQ(r.exitCode, 1) << r.err.toStdString();  // the refusals are errors
            EXPECT_EQ(snapshot(vol()), expected);
            for (const QString& line : snapshot(dst())) {
                const QString name = line.section(" = ", 0, 0).section('/', -1);
                EXPECT_TRUE(line.endsWith(" = folder") || name == "Good.mxf" ||
                            name == "Also Good.wav" || name == "msmFMID.pmr")
                    << line.toStdString();
            }
            if (action != "delete") {
                EXPECT_TRUE(QFileInfo::exists(dst() + "/Doc/MXF/Good.mxf")) << r.out.toStdString();
                EXPECT_TRUE(r.out.contains(":: ERROR :: No path :: ../../../Avid Projects \n"));
            }
            for (const QString line : {":: ERROR :: Is a directory :: %1/Sub \n",
                                       ":: ERROR :: Is a symbolic link :: %1/LinkDir \n",
                                       ":: ERROR :: Is a symbolic link :: %1/LinkFile \n",
                                       ":: ERROR :: Not a regular file :: %1/Pipe \n"})
                EXPECT_TRUE(r.out.contains(QString(line).replace("%1", media())))
                    << line.toStdString();
        }
    }
}

}  // namespace
