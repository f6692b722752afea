#include <QCryptographicHash>

#include "CommandKit.h"

using namespace actiontest;

namespace {

// Everything under a folder, links not followed: one line per path with its
// type and content hash (files) or target (links).
QStringList snapshot(const QString& folder) {
    QStringList seen;
    QDirIterator it(folder, QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QString path = it.next();
        const QFileInfo info(path);
        QString what = "other";
        if (info.isSymLink())
            what = "link " + info.symLinkTarget();
        else if (info.isDir())
            what = "folder";
        else if (info.isFile())
            what = QCryptographicHash::hash(readFile(path), QCryptographicHash::Sha1).toHex();
        seen << path.mid(folder.size()) + " = " + what;
    }
    seen.sort();
    return seen;
}

// A volume whose media index names, next to two media files, everything a
// damaged index can hold: ways out of the folder, the folder itself, a
// sub-folder, links to a folder and to a file outside, a pipe, a name with
// the other system's separator, and last an empty name (which ends the
// index). A link inside the media folder leads to "Avid Projects", which has
// an index of its own.
struct DamagedIndex : CommandFixture {
    QString media() const { return vol() + "/Avid MediaFiles/MXF/1"; }
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

TEST_F(DamagedIndex, TheDryRunShowsWhatWouldBeRefused) {
    const Outcome r = tarn({"delete", "--volume", vol(), "--show-missing", "--dry-run"});
    EXPECT_EQ(r.code, 0);
    for (const QString line :
         {"%1/Good.mxf\n    -> (Trash)\n", "%1/Sub\n    -> (refused: Is a directory)\n",
          "%1/LinkDir\n    -> (refused: Is a symbolic link)\n",
          "%1/Pipe\n    -> (refused: Not a regular file)\n", "\n    -> (refused: No path)\n"})
        EXPECT_TRUE(r.out.contains(QString(line).replace("%1", media()))) << r.out.toStdString();
}

TEST_F(DamagedIndex, NothingButTheMediaFilesIsTouchedWhateverTheAnswers) {
    const QStringList mediaFiles{"/Avid MediaFiles/MXF/1/Good.mxf",
                                 "/Avid MediaFiles/MXF/1/Also Good.wav"};
    for (const QString action : {"delete", "move", "copy"}) {
        for (const QString answer : {"yes", "all"}) {  // "Yes", or "Yes to All"
            SCOPED_TRACE((action + " --answer " + answer).toStdString());
            QDir(tmp.path()).removeRecursively();
            SetUp();
            QStringList before = snapshot(vol());
            QStringList args{action,     "--volume", vol(),      "--show-missing",
                             "--no-mxf", "--sure",   "--answer", answer};
            if (action != "delete") args << "--to" << dst();
            const Outcome r = run(args, {withoutTrash(), {}, {}});
            EXPECT_EQ(r.code, 1) << r.err.toStdString();  // the refusals are errors

            QStringList after = snapshot(vol());
            for (const QString& file : mediaFiles) {
                const QStringList line = before.filter(QRegularExpression("^" + file + " = "));
                ASSERT_EQ(line.size(), 1);
                EXPECT_EQ(after.removeAll(line.first()), action == "copy" ? 1 : 0);
                before.removeAll(line.first());
            }
            EXPECT_EQ(after, before);
            for (const QString& line : snapshot(dst())) {
                const QString path = line.section(" = ", 0, 0);
                const QString name = path.section('/', -1);
                EXPECT_TRUE(line.endsWith(" = folder") || name == "Good.mxf" ||
                            name == "Also Good.wav" || name == "msmFMID.pmr")
                    << path.toStdString();
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
