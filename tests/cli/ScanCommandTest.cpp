#include <gtest/gtest.h>

#include <QFileInfo>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <thread>

#include "CliRun.h"
#include "DemoVolume.h"
#include "items/TarnVocabulary.h"
#include "report/TarnColumns.h"

// `tarn scan`, `demo` and `databases` over the demo volume: what the writers
// put there comes out, the options reach the view and every format comes out.
// (What each filter, sort and format does: the database's and report's tests.)
namespace {

using fixtures::DemoMedia;
using Keep = std::function<bool(const DemoMedia&)>;

QString hexOf(const QByteArray& uid, quint32 uidSize) {
    if (uidSize == 8) return QString::fromLatin1(uid.toHex());
    if (uidSize == 2) return QString::fromLatin1(uid.mid(16, 8).toHex());
    return QString();
}

QJsonArray rate(const TarnRate& r) {
    return QJsonArray{qint64(r.numerator), qint64(r.denominator)};
}

class ScanCommandTest : public ::testing::Test {
  protected:
    void SetUp() override {
        root_ = run_.tempPath("Demo Volume");
        QString error;
        ASSERT_TRUE(fixtures::DemoVolume::write(root_, &error, &demo_)) << qPrintable(error);
    }
    CliResult scan(const QStringList& more) const {
        return run_(QStringList{"scan", "--volume", root_} + more);
    }
    // One member of each JSON item of a scan.
    QStringList shown(const QStringList& more, const char* member = "path") const {
        QStringList values;
        for (const QJsonValue& v : scan(QStringList{"--format", "json"} + more).items())
            values << v.toObject().value(member).toString();
        return values;
    }
    QStringList pathsOf(const Keep& keep) const {
        QStringList paths;
        for (const DemoMedia& m : demo_.media)
            if (keep(m)) paths << m.path;
        return sorted(paths);
    }
    // The index and media database files of the demo volume.
    QStringList databaseFiles() const {
        QStringList files;
        for (const QString folder :
             {"Avid MediaFiles/MXF/1", "Avid MediaFiles/MXF/2", "OMFI MediaFiles"})
            for (const QString name : {"msmFMID.pmr", "msmMMOB.mdb"})
                files << root_ + "/" + folder + "/" + name;
        return files;
    }

    CliRun run_;
    QString root_;
    fixtures::DemoVolumeDescription demo_;
};

}  // namespace

TEST_F(ScanCommandTest, UsageErrorsExitTwoWithMessageAndUsage) {
    const QList<QStringList> bad = {{},
                                    {"--bogus", root_},
                                    {root_, "--format", "xml"},
                                    {root_, "--sort", "kind"},
                                    {root_, "--sort", "filename:sideways"},
                                    {"--volume"},
                                    {root_, "-o"}};
    for (const QStringList& args : bad) {
        const CliResult r = run_(QStringList{"scan"} + args);
        EXPECT_EQ(r.exitCode, 2) << qPrintable(args.join(' '));
        EXPECT_TRUE(r.err.startsWith("tarn scan: ")) << qPrintable(r.err);
        EXPECT_TRUE(r.err.contains("usage: tarn scan")) << qPrintable(r.err);
        EXPECT_TRUE(r.out.isEmpty());
    }
    EXPECT_EQ(run_({"frobnicate"}).exitCode, 2);
    EXPECT_EQ(run_({"demo", "a", "b"}).exitCode, 2);
    const CliResult help = run_({"scan", "--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains("--intersect BIN"));
}

// Every item comes out of the scan with what the index, the media database
// or the file's own header says about it.
TEST_F(ScanCommandTest, JsonMatchesWhatTheWritersWrote) {
    const CliResult r = scan({"--format", "json", "--show-missing"});
    ASSERT_EQ(r.exitCode, 0) << qPrintable(r.err);
    QMap<QString, QJsonObject> byPath;
    for (const QJsonValue& v : r.items())
        byPath.insert(v.toObject().value("path").toString(), v.toObject());
    EXPECT_EQ(byPath.size(), demo_.media.size());

    const TarnVocabulary vocabulary;
    for (const DemoMedia& m : demo_.media) {
        SCOPED_TRACE(qPrintable(m.fileName));
        ASSERT_TRUE(byPath.contains(m.path)) << qPrintable(m.path);
        const QJsonObject item = byPath.value(m.path);
        EXPECT_EQ(item.value("file_name").toString(), m.fileName);
        EXPECT_EQ(item.value("clip_name").toString(), m.clipName);
        EXPECT_EQ(item.value("project").toString(), m.project);
        EXPECT_EQ(item.value("uid_size").toInt(), int(m.uidSize));
        EXPECT_EQ(item.value("file_package_uid").toString(), hexOf(m.fileUID, m.uidSize));
        EXPECT_EQ(item.value("material_package_uid").toString(), hexOf(m.materialUID, m.uidSize));
        EXPECT_EQ(item.value("exists").toBool(), m.exists);
        EXPECT_EQ(item.value("referenced").toBool(), m.referenced);
        EXPECT_EQ(item.value("good_umid").toBool(), m.goodUmid);
        EXPECT_EQ(item.value("portable_name").toBool(), m.portableName);
        EXPECT_EQ(item.value("ama").toBool(), m.ama);
        EXPECT_EQ(item.value("size").toInteger(), qint64(m.size));
        EXPECT_EQ(item.value("usage_code").toInt(), m.usageCode);
        EXPECT_EQ(item.value("frame_rate").toArray(), rate(m.frameRate));
        EXPECT_EQ(item.value("bits").toInt(), int(m.bits));
        EXPECT_EQ(item.value("resolution_id").toInteger(), qint64(m.resolutionID));
        EXPECT_EQ(item.value("fourcc").toString(), QString::fromLatin1(m.fourCC));
        if (m.audio) {
            EXPECT_EQ(item.value("compression").toString(), "Audio");
            EXPECT_EQ(item.value("sample_rate").toArray(), rate(m.sampleRate));
        } else if (m.resolutionID) {
            EXPECT_EQ(item.value("compression").toString(),
                      vocabulary.resolutionIDDictionary().at(m.resolutionID));
        }
    }
    QStringList projects;
    for (const QJsonValue& p : r.json().value("projects").toArray())
        projects << p.toObject().value("name").toString();
    EXPECT_EQ(sorted(projects), sorted(demo_.projects));
    const QJsonObject summary = r.json().value("summary").toObject();
    EXPECT_EQ(summary.value("items_in_database").toInt(), demo_.media.size());
    EXPECT_EQ(summary.value("filtered_items").toInt(), demo_.media.size());
}

TEST_F(ScanCommandTest, OptionsReachTheView) {
    ASSERT_EQ(demo_.bins.size(), 2);
    const QStringList harbour = demo_.bins.at(0).referencedPaths;
    const QStringList lighthouse = demo_.bins.at(1).referencedPaths;
    const auto in = [](const QStringList& paths) {
        return [paths](const DemoMedia& m) { return m.exists && paths.contains(m.path); };
    };
    const struct Case {
        QStringList args;
        Keep keep;
    } cases[] = {
        {{}, [](const DemoMedia& m) { return m.exists; }},
        {{"--show-missing"}, [](const DemoMedia&) { return true; }},
        {{"--non-portable"}, [](const DemoMedia& m) { return m.exists && !m.portableName; }},
        {{"--project", "Old Reel", "--project", "Lighthouse"},
         [](const DemoMedia& m) { return m.project == "Old Reel" || m.project == "Lighthouse"; }},
        {{"--search", "oLD rEEL"}, [](const DemoMedia& m) { return m.project == "Old Reel"; }},
        {{"--intersect", demo_.bins.at(0).path}, in(harbour)},
        {{"--intersect", demo_.bins.at(0).path, "--add", demo_.bins.at(1).path},
         in(harbour + lighthouse)},
        {{"--subtract", demo_.bins.at(0).path},
         [&](const DemoMedia& m) { return m.exists && !harbour.contains(m.path); }},
        // A bin that cannot be read changes nothing.
        {{"--subtract", root_ + "/none.avb"}, [](const DemoMedia& m) { return m.exists; }},
    };
    for (const Case& c : cases)
        EXPECT_EQ(sorted(shown(c.args)), pathsOf(c.keep)) << qPrintable(c.args.join(' '));
    // The first key decides, the second breaks ties.
    EXPECT_EQ(shown({"--sort", "project:desc", "--sort", "filename"}, "file_name").mid(0, 3),
              QStringList({"OldReel_Ferry_A01.omf", "OldReel_Ferry_V01.omf",
                           "Lighthouse_Beam_A01.6A0B2D02.mxf"}));
}

TEST_F(ScanCommandTest, EveryFormatComesOut) {
    const qsizetype rows = pathsOf([](const DemoMedia& m) { return m.exists; }).size();
    const CliResult csv = scan({"--format", "csv"});
    ASSERT_EQ(csv.exitCode, 0);
    QString header;
    for (TarnColumn c : TarnColumns::all()) header += '"' + TarnColumns::title(c) + "\";";
    EXPECT_TRUE(csv.out.startsWith(header + "\n"));
    EXPECT_EQ(csv.out.count('\n'), rows + 1);
    EXPECT_EQ(scan({"--format", "csv-comma"}).out, QString(csv.out).replace("\";", "\","));

    const QString html = scan({"--format", "html"}).out;
    EXPECT_EQ(html.count("<tr>"), rows + 1);
    EXPECT_TRUE(html.endsWith("</tbody></table></div></body></html>"));
    const QString table = scan({}).out;
    EXPECT_TRUE(table.startsWith("File Name"));
    EXPECT_TRUE(
        table.contains(QString("\n%1 of %2 items shown, ").arg(rows).arg(demo_.media.size())));

    const CliResult summary = scan({"--summary", "--format", "csv"});
    EXPECT_TRUE(
        summary.out.startsWith("\"Project\";\"Size\";\"Files\";\n"
                               "\"_00_TRN_UNMANAGED_FILES\";\" 800 bytes\";\"1\";\n"));
    EXPECT_EQ(summary.out.count('\n'), demo_.projects.size() + 1);
    EXPECT_TRUE(scan({"--summary"}).out.startsWith("Project"));
}

TEST_F(ScanCommandTest, OutputFileLogAndUntouchedPreferences) {
    const QString outFile = run_.tempPath("report.json");
    const QString logFile = run_.tempPath("scan.log");
    const CliResult r = scan({"--format", "json", "-o", outFile, "--log", logFile, "--show-missing",
                              "--no-mdb", "--no-mxf"});
    ASSERT_EQ(r.exitCode, 0) << qPrintable(r.err);
    EXPECT_TRUE(r.out.isEmpty());
    const QJsonObject written = QJsonDocument::fromJson(testsupport::contentOf(outFile)).object();
    EXPECT_FALSE(written.value("items").toArray().isEmpty());
    EXPECT_TRUE(testsupport::contentOf(logFile).contains("Execution Time: "));
    // Run overrides are never stored.
    EXPECT_FALSE(QFileInfo::exists(run_.settingsFile()));
    EXPECT_TRUE(scan({"--log", "-"}).err.contains("Execution Time: "));
    EXPECT_EQ(scan({"-o", run_.tempPath("no/such/dir/x.csv")}).exitCode, 1);
}

// A report to something that is not a plain file (a pipe here; /dev/null is
// the usual one) is written into it. Renaming a finished file over it, as for
// a plain file, would replace it and, for /dev/null run as root, the device.
TEST_F(ScanCommandTest, OutputToAPipeGoesThroughThePipe) {
    const QByteArray fifo = QFile::encodeName(run_.tempPath("report.fifo"));
    ASSERT_EQ(::mkfifo(fifo.constData(), 0600), 0);
    QByteArray received;
    std::thread reader([&] {
        QFile in(QFile::decodeName(fifo));
        if (in.open(QIODevice::ReadOnly)) received = in.readAll();
    });
    // A writer of our own keeps the pipe open until tarn has run, so the
    // reader ends even if tarn never opens it.
    const int writer = ::open(fifo.constData(), O_WRONLY);
    const CliResult piped = scan({"--format", "csv", "-o", QFile::decodeName(fifo)});
    ::close(writer);
    reader.join();
    ASSERT_EQ(piped.exitCode, 0) << qPrintable(piped.err);
    struct stat st;
    ASSERT_EQ(::stat(fifo.constData(), &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode));
    EXPECT_EQ(QString::fromUtf8(received), scan({"--format", "csv"}).out);
}

TEST_F(ScanCommandTest, ScansOfNothingAndOfOneIndexFile) {
    QDir().mkpath(run_.tempPath("Empty"));
    for (const QString& nothing : {run_.tempPath("Empty"), run_.tempPath("does-not-exist")}) {
        const CliResult none = run_({"scan", nothing, "--format", "json"});
        EXPECT_EQ(none.exitCode, 0);
        EXPECT_EQ(none.json().value("summary").toObject().value("items_in_database").toInt(), 0);
    }
    // A single index file scans just its folder.
    const QString folder = root_ + "/Avid MediaFiles/MXF/2";
    const CliResult one = run_({"scan", folder + "/msmFMID.pmr", "--format", "json"});
    EXPECT_EQ(one.json().value("summary").toObject().value("items_in_database").toInt(),
              pathsOf([&](const DemoMedia& m) { return m.path.startsWith(folder); }).size());
}

TEST_F(ScanCommandTest, DemoCommandWritesOnceAndShowsTableAndSummary) {
    const QString dir = run_.tempPath("demo-here");
    const CliResult first = run_({"demo", dir});
    ASSERT_EQ(first.exitCode, 0) << qPrintable(first.err);
    for (const QString& text :
         QStringList{"Wrote the demo volume", "File Name", "Projects summary"} + demo_.projects)
        EXPECT_TRUE(first.out.contains(text)) << qPrintable(text);
    const CliResult second = run_({"demo", dir});
    EXPECT_EQ(second.exitCode, 0);
    // The same scan, so the same report after the first line.
    EXPECT_EQ(second.out, first.out.section('\n', 1));
}

TEST_F(ScanCommandTest, DatabasesAreListedAndTrashedOnlyWhenSure) {
    const CliResult list = run_({"databases", "--volume", root_});
    EXPECT_EQ(list.exitCode, 0) << qPrintable(list.err);
    EXPECT_TRUE(list.out.startsWith("folder"));
    EXPECT_TRUE(list.out.endsWith("6 database files\n")) << qPrintable(list.out);
    for (const QString& path : databaseFiles()) {
        const QFileInfo info(path);
        EXPECT_TRUE(list.out.contains(QRegularExpression(
            "(?m)^" + QRegularExpression::escape(info.path()) + " +" + info.fileName() + " ")))
            << qPrintable(path);
    }
    const struct {
        QStringList args;
        int exitCode;
    } cases[] = {{{"--delete"}, 2},
                 {{"--sure"}, 2},  // --sure alone is a mistake
                 {{"--bogus"}, 2},
                 {{"--delete", "--sure"}, 0}};
    for (const auto& c : cases) {
        const CliResult r = run_(QStringList{"databases", "--volume", root_} + c.args);
        EXPECT_EQ(r.exitCode, c.exitCode) << qPrintable(c.args.join(' ')) << qPrintable(r.err);
        for (const QString& path : databaseFiles())
            EXPECT_EQ(QFileInfo::exists(path), c.exitCode != 0) << qPrintable(path);
    }
    EXPECT_EQ(testsupport::trashedPaths(run_.dataHome()), databaseFiles());
}
