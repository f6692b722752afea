#include <QCryptographicHash>
#include <QMap>

#include <sys/stat.h>
#include <unistd.h>

#include "CommandKit.h"

using namespace actiontest;

namespace {

// Everything under a folder, links not followed: path -> type, size and
// content hash (files) or target (links).
QMap<QString, QString> snapshot(const QString& folder) {
    QMap<QString, QString> seen;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info(path);
        QString what;
        if (info.isSymLink())
            what = "link " + info.symLinkTarget();
        else if (info.isDir())
            what = "folder";
        else if (info.isFile())
            what = "file " +
                   QCryptographicHash::hash(readFile(path), QCryptographicHash::Sha1).toHex();
        else
            what = "other";
        seen.insert(path.mid(folder.size()), what);
    }
    return seen;
}

QStringList lines(const QMap<QString, QString>& seen) {
    QStringList out;
    for (auto it = seen.cbegin(); it != seen.cend(); ++it) out << it.key() + " = " + it.value();
    return out;
}

// A volume whose media index names, next to two media files, everything a
// damaged index can hold: ways out of the folder, the folder itself, a
// sub-folder, links to a folder and to a file outside, a pipe, a name with
// the other system's separator, and last an empty name (which ends the
// index). A link inside the media folder leads to "Avid Projects", which has
// an index of its own.
struct DamagedIndex : CommandFixture {
    QString media() const { return vol() + "/Avid MediaFiles/MXF/1"; }
    QString projects() const { return vol() + "/Avid Projects"; }
    const QStringList mediaFiles{"/Avid MediaFiles/MXF/1/Good.mxf",
                                 "/Avid MediaFiles/MXF/1/Also Good.wav"};
    void SetUp() override {
        fixtures::PmrEntry empty = fixtures::makePmrEntry(0x77, "X", "Doc");
        empty.nameLength = 0;
        writeMediaFolder(media(),
                         {"Good.mxf", "..", "../../..", "../../../Avid Projects", ".", "Sub",
                          "LinkDir", "LinkFile", "Pipe", "..\\..\\Keep.mxf", "Also Good.wav"},
                         {"Good.mxf", "Also Good.wav", "Sub/Inner.mxf"}, {empty});
        writeMediaFolder(projects(), {"Doc.avb"}, {"Doc.avb", "Doc Settings.avs"});
        writeFile(vol() + "/Keep.mxf", content("Keep.mxf"));
        ASSERT_EQ(::symlink(QFile::encodeName(projects()).constData(),
                            QFile::encodeName(media() + "/LinkDir").constData()),
                  0);
        ASSERT_EQ(::symlink(QFile::encodeName(vol() + "/Keep.mxf").constData(),
                            QFile::encodeName(media() + "/LinkFile").constData()),
                  0);
        ASSERT_EQ(::mkfifo(QFile::encodeName(media() + "/Pipe").constData(), 0600), 0);
        QDir().mkpath(dst());
        // No Trash: a file where the data folder should be.
        writeFile(tmp.path() + "/blocked", "x");
    }
    QProcessEnvironment withoutTrash() const {
        QProcessEnvironment e = env();
        e.insert("XDG_DATA_HOME", tmp.path() + "/blocked/data");
        return e;
    }
};

TEST_F(DamagedIndex, TheDryRunShowsWhatWouldBeRefused) {
    const Outcome r = tarn({"delete", "--volume", vol(), "--show-missing", "--dry-run"});
    EXPECT_EQ(r.code, 0);
    for (const char* line :
         {"%1/Good.mxf\n    -> (Trash)\n", "%1/Sub\n    -> (refused: Is a directory)\n",
          "%1/LinkDir\n    -> (refused: Is a symbolic link)\n",
          "%1/Pipe\n    -> (refused: Not a regular file)\n", "\n    -> (refused: No path)\n"})
        EXPECT_TRUE(r.out.contains(QString::fromLatin1(line).arg(media()))) << r.out.toStdString();
}

TEST_F(DamagedIndex, NothingButTheMediaFilesIsTouchedWhateverTheAnswers) {
    const struct Case {
        const char* action;
        const char* answer;  // "Yes", or "Yes to All"
        bool mediaFilesStay;
    } cases[] = {{"delete", "yes", false}, {"delete", "all", false}, {"move", "yes", false},
                 {"move", "all", false},   {"copy", "yes", true},    {"copy", "all", true}};
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.action) + " --answer " + c.answer);
        QDir(vol()).removeRecursively();
        QDir(dst()).removeRecursively();
        SetUp();
        QMap<QString, QString> before = snapshot(vol());
        QStringList args{c.action,   "--volume", vol(),      "--show-missing",
                         "--no-mxf", "--sure",   "--answer", c.answer};
        if (QLatin1String(c.action) != "delete") args << "--to" << dst();
        const Outcome r = run(args, QStringLiteral(TARN_CLI_PATH), withoutTrash());
        EXPECT_EQ(r.code, 1) << r.err.toStdString();  // the refusals are errors

        QMap<QString, QString> after = snapshot(vol());
        for (const QString& file : mediaFiles) {
            EXPECT_EQ(after.contains(file), c.mediaFilesStay) << file.toStdString();
            before.remove(file);
            after.remove(file);
        }
        EXPECT_EQ(lines(after), lines(before));
        for (const QString& path : snapshot(dst()).keys()) {
            const QString name = path.section('/', -1);
            EXPECT_TRUE(QFileInfo(dst() + path).isDir() || name == "Good.mxf" ||
                        name == "Also Good.wav" || name == "msmFMID.pmr")
                << path.toStdString();
        }
        if (QLatin1String(c.action) != "delete") {
            EXPECT_TRUE(QFileInfo::exists(dst() + "/Doc/MXF/Good.mxf")) << r.out.toStdString();
            EXPECT_TRUE(r.out.contains(":: ERROR :: No path :: ../../../Avid Projects \n"));
        }
        for (const char* line : {":: ERROR :: Is a directory :: %1/Sub \n",
                                 ":: ERROR :: Is a symbolic link :: %1/LinkDir \n",
                                 ":: ERROR :: Is a symbolic link :: %1/LinkFile \n",
                                 ":: ERROR :: Not a regular file :: %1/Pipe \n"})
            EXPECT_TRUE(r.out.contains(QString::fromLatin1(line).arg(media()))) << line;
    }
}

}  // namespace
