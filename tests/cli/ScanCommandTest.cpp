#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <thread>

#include "CliRun.h"
#include "FixtureFiles.h"
#include "PmrWriter.h"
#include "Umid.h"
#include "report/TarnColumns.h"

namespace {

// A volume with one media folder whose index lists three files (one of them
// missing) and a fourth file that the index does not list. No media database.
class ScanCommandTest : public ::testing::Test {
  protected:
    void SetUp() override {
        volume_ = run_.tempPath("Volume");
        folder_ = volume_ + "/Avid MediaFiles/MXF/1";
        const QList<fixtures::PmrEntry> entries = {
            fixtures::makePmrEntry(0x1111, "Alpha_V01.mxf", "Alpha"),
            fixtures::makePmrEntry(0x2222, "Beta_A01.wav", "Beta"),
            fixtures::makePmrEntry(0x3333, "Alpha_V02.mxf", "Alpha"),
        };
        ASSERT_TRUE(fixtures::writeFile(folder_ + "/msmFMID.pmr", fixtures::writePmr(entries)));
        ASSERT_TRUE(fixtures::writeFile(folder_ + "/Alpha_V01.mxf", QByteArray(300, 'a')));
        ASSERT_TRUE(fixtures::writeFile(folder_ + "/Beta_A01.wav", QByteArray(5000, 'b')));
        ASSERT_TRUE(fixtures::writeFile(folder_ + "/notes.txt", QByteArray(20, 'n')));
    }

    CliResult scan(QStringList args) const {
        args.prepend("scan");
        return run_(args);
    }

    static QStringList fileNames(const QJsonObject& report) {
        QStringList names;
        for (const QJsonValue& v : report.value("items").toArray())
            names.append(v.toObject().value("file_name").toString());
        return names;
    }

    static QJsonObject itemNamed(const QJsonObject& report, const QString& name) {
        for (const QJsonValue& v : report.value("items").toArray())
            if (v.toObject().value("file_name").toString() == name) return v.toObject();
        return {};
    }

    CliRun run_;
    QString volume_;
    QString folder_;
};

}  // namespace

TEST_F(ScanCommandTest, UsageErrorsExitTwoWithMessageAndUsage) {
    const QList<QStringList> bad = {
        {},
        {"--bogus", volume_},
        {volume_, "--format", "xml"},
        {volume_, "--format"},
        {volume_, "--sort", "kind"},
        {volume_, "--sort", "filename:sideways"},
        {volume_, "--search"},
        {volume_, "--intersect"},
        {"--volume"},
        {volume_, "-o"},
    };
    for (const QStringList& args : bad) {
        const CliResult r = scan(args);
        EXPECT_EQ(r.exitCode, 2) << qPrintable(args.join(' '));
        EXPECT_TRUE(r.err.startsWith("tarn scan: ")) << qPrintable(r.err);
        EXPECT_TRUE(r.err.contains("usage: tarn scan")) << qPrintable(r.err);
        EXPECT_TRUE(r.out.isEmpty());
    }
    EXPECT_EQ(run_({"frobnicate"}).exitCode, 2);
    EXPECT_EQ(run_({"demo", "a", "b"}).exitCode, 2);
    const CliResult help = scan({"--help"});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains("--intersect BIN"));
}

TEST_F(ScanCommandTest, JsonReportsEveryShownItemWithItsFields) {
    const CliResult r = scan({"--volume", volume_, "--format", "json", "--show-missing"});
    ASSERT_EQ(r.exitCode, 0) << qPrintable(r.err);
    const QJsonObject report = r.json();
    const QJsonArray items = r.items();
    ASSERT_EQ(items.size(), 4) << qPrintable(r.out);

    const QStringList keys = sorted(
        QString("path file_name clip_name project file_package_uid material_package_uid uid_size "
                "hash size"
                " exists valid ama referenced good_umid portable_name usage_code kind compression "
                "fourcc"
                " resolution_id frame_rate sample_rate bits date frame_rate_text sample_rate_text")
            .split(' '));
    for (const QJsonValue& v : items) EXPECT_EQ(sorted(v.toObject().keys()), keys);

    const QJsonObject alpha = itemNamed(report, "Alpha_V01.mxf");
    const QJsonObject alphaFacts{
        {"path", folder_ + "/Alpha_V01.mxf"},
        {"project", "Alpha"},
        {"uid_size", 8},
        {"file_package_uid", QString::fromLatin1(fixtures::makeUmid(0x1111).toHex())},
        {"material_package_uid", QString::fromLatin1(fixtures::makeUmid(0x1112).toHex())},
        {"hash", "00001111"},
        {"size", 300},
        {"exists", true},
        {"good_umid", true},
        {"frame_rate", QJsonArray{0, 0}},
        {"frame_rate_text", QJsonValue::Null},
        {"clip_name", QJsonValue::Null}};
    EXPECT_EQ(fieldsOf(alpha, alphaFacts), alphaFacts);
    EXPECT_TRUE(alpha.value("date").isString());
    // Shown because of --show-missing.
    const QJsonObject missing{{"exists", false},
                              {"valid", true},
                              {"size", 0},
                              {"date", QJsonValue::Null},
                              {"referenced", true}};
    EXPECT_EQ(fieldsOf(itemNamed(report, "Alpha_V02.mxf"), missing), missing);
    const QJsonObject wav{{"compression", "Audio"}, {"fourcc", "_AUD"}};
    EXPECT_EQ(fieldsOf(itemNamed(report, "Beta_A01.wav"), wav), wav);
    const QJsonObject notes{{"project", "_00_TRN_UNMANAGED_FILES"},
                            {"uid_size", 0},
                            {"file_package_uid", QJsonValue::Null},
                            {"referenced", false}};
    EXPECT_EQ(fieldsOf(itemNamed(report, "notes.txt"), notes), notes);

    const QJsonObject summary{{"items_in_database", 4},
                              {"filtered_items", 4},
                              {"filtered_size", 5320},
                              {"projects_count", 3}};
    EXPECT_EQ(fieldsOf(report.value("summary").toObject(), summary), summary);
    QStringList projects;
    for (const QJsonValue& p : report.value("projects").toArray()) {
        projects.append(p.toObject().value("name").toString());
        EXPECT_TRUE(p.toObject().value("shown").toBool());
    }
    EXPECT_EQ(projects, (QStringList{"_00_TRN_UNMANAGED_FILES", "Alpha", "Beta"}));

    // By default a missing file is not shown, but it is in the database.
    const QJsonObject existing = scan({"--volume", volume_, "--format", "json"}).json();
    EXPECT_FALSE(fileNames(existing).contains("Alpha_V02.mxf"));
    EXPECT_EQ(fileNames(existing).size(), 3);
    EXPECT_EQ(existing.value("summary").toObject().value("items_in_database").toInt(), 4);
}

TEST_F(ScanCommandTest, FilterSearchProjectAndSortOptions) {
    const QStringList base = {"--volume", volume_, "--format", "json", "--show-missing"};
    auto names = [&](const QStringList& more) { return fileNames(scan(base + more).json()); };

    EXPECT_EQ(names({"--project", "Alpha", "--sort", "filename"}),
              (QStringList{"Alpha_V01.mxf", "Alpha_V02.mxf"}));
    EXPECT_EQ(names({"--project", "Beta", "--project", "_00_TRN_UNMANAGED_FILES"}).size(), 2);
    // Search ignores case and looks at the project name too.
    EXPECT_EQ(names({"--search", "bETA"}), (QStringList{"Beta_A01.wav"}));
    EXPECT_EQ(names({"--audio"}), (QStringList{"Beta_A01.wav"}));
    EXPECT_EQ(names({"--sort", "filename:desc"}),
              (QStringList{"notes.txt", "Beta_A01.wav", "Alpha_V02.mxf", "Alpha_V01.mxf"}));
    // The first key decides, the second breaks ties.
    EXPECT_EQ(names({"--sort", "project:desc", "--sort", "filename:desc"}),
              (QStringList{"Beta_A01.wav", "Alpha_V02.mxf", "Alpha_V01.mxf", "notes.txt"}));

    const QJsonObject onlyAlpha = scan(base + QStringList{"--project", "Alpha"}).json();
    for (const QJsonValue& p : onlyAlpha.value("projects").toArray()) {
        const QJsonObject project = p.toObject();
        EXPECT_EQ(project.value("shown").toBool(), project.value("name").toString() == "Alpha");
    }
    EXPECT_EQ(onlyAlpha.value("summary").toObject().value("filtered_size").toInt(), 300);
}

TEST_F(ScanCommandTest, CsvHtmlTableAndSummaryOutputs) {
    const QStringList base = {"--volume", volume_, "--sort", "filename"};
    const CliResult csv = scan(base + QStringList{"--format", "csv"});
    ASSERT_EQ(csv.exitCode, 0);
    QStringList header;
    for (TarnColumn c : TarnColumns::all()) header.append('"' + TarnColumns::title(c) + "\";");
    const QStringList lines = csv.out.split('\n');
    ASSERT_EQ(lines.size(), 5);  // header, three rows, nothing after the last line feed
    EXPECT_EQ(lines.at(0), header.join(QString()));
    EXPECT_TRUE(lines.at(1).startsWith("\"\";\"Alpha_V01.mxf\";\"\";\""));
    EXPECT_TRUE(lines.at(4).isEmpty());
    EXPECT_FALSE(csv.out.contains('\r'));

    const CliResult comma = scan(base + QStringList{"--format", "csv-comma"});
    EXPECT_EQ(comma.out, QString(csv.out).replace("\";", "\","));

    const CliResult html = scan(base + QStringList{"--format", "html"});
    EXPECT_TRUE(html.out.contains("<h1>Tarn</h1>"));
    EXPECT_EQ(html.out.count("<tr>"), 4);
    EXPECT_EQ(html.out.count("<th>"), 18);
    EXPECT_TRUE(html.out.endsWith("</tbody></table></div></body></html>"));

    const CliResult table = scan(base);
    EXPECT_TRUE(table.out.startsWith("File Name"));
    EXPECT_TRUE(table.out.contains("3 of 4 items shown"));
    EXPECT_TRUE(table.out.contains("Alpha_V01.mxf"));

    const CliResult summary = scan(base + QStringList{"--summary", "--format", "csv"});
    EXPECT_EQ(summary.out, QString("\"Project\";\"Size\";\"Files\";\n"
                                   "\"_00_TRN_UNMANAGED_FILES\";\"  20 bytes\";\"1\";\n"
                                   "\"Alpha\";\" 300 bytes\";\"1\";\n"
                                   "\"Beta\";\"5.00 kB\";\"1\";\n"));
    const CliResult summaryTable = scan(base + QStringList{"--summary"});
    EXPECT_TRUE(summaryTable.out.startsWith("Project"));
    EXPECT_TRUE(summaryTable.out.contains("Beta"));
}

TEST_F(ScanCommandTest, OutputFileLogAndUntouchedPreferences) {
    const QString outFile = run_.tempPath("out/report.json");
    QDir().mkpath(QFileInfo(outFile).absolutePath());
    const QString logFile = run_.tempPath("scan.log");
    const CliResult r = scan({"--volume", volume_, "--format", "json", "-o", outFile, "--log",
                              logFile, "--show-missing", "--no-mdb", "--no-mxf"});
    ASSERT_EQ(r.exitCode, 0) << qPrintable(r.err);
    EXPECT_TRUE(r.out.isEmpty());
    EXPECT_EQ(QJsonDocument::fromJson(testsupport::contentOf(outFile))
                  .object()
                  .value("items")
                  .toArray()
                  .size(),
              4);
    EXPECT_TRUE(testsupport::contentOf(logFile).contains("Execution Time: "));
    // Run overrides are never stored.
    EXPECT_FALSE(QFileInfo::exists(run_.settingsFile()));

    const CliResult toStderr = scan({"--volume", volume_, "--log", "-"});
    EXPECT_TRUE(toStderr.err.contains("Execution Time: "));

    const CliResult unwritable =
        scan({"--volume", volume_, "-o", run_.tempPath("no/such/dir/x.csv")});
    EXPECT_EQ(unwritable.exitCode, 1);
}

// A report to something that is not a plain file (a pipe here; /dev/null is
// the usual one) is written into it. Renaming a finished file over it, as for
// a plain file, would replace it and, for /dev/null run as root, the device.
TEST_F(ScanCommandTest, OutputToAPipeGoesThroughThePipe) {
    const QString fifo = run_.tempPath("report.fifo");
    const QByteArray fifoPath = QFile::encodeName(fifo);
    ASSERT_EQ(::mkfifo(fifoPath.constData(), 0600), 0);
    // Read and write: opening never waits for a writer and never reads an end.
    const int fd = ::open(fifoPath.constData(), O_RDWR | O_NONBLOCK);
    ASSERT_GE(fd, 0);
    std::atomic<bool> finished{false};
    QByteArray received;
    std::thread reader([&] {
        char buffer[65536];
        for (bool last = false; !last;) {
            last = finished.load();
            pollfd p{fd, POLLIN, 0};
            ::poll(&p, 1, 20);
            ssize_t n;
            while ((n = ::read(fd, buffer, sizeof buffer)) > 0) received.append(buffer, n);
        }
    });
    const QStringList args = {"--volume", volume_, "--format", "csv"};
    const CliResult piped = scan(args + QStringList{"-o", fifo});
    finished = true;
    reader.join();
    ::close(fd);

    ASSERT_EQ(piped.exitCode, 0) << qPrintable(piped.err);
    struct stat st;
    ASSERT_EQ(::stat(fifoPath.constData(), &st), 0);
    EXPECT_TRUE(S_ISFIFO(st.st_mode));
    EXPECT_EQ(QString::fromUtf8(received), scan(args).out);
}

TEST_F(ScanCommandTest, ScansOfNothingAndOfOneIndexFile) {
    const QString empty = run_.tempPath("Empty");
    QDir().mkpath(empty);
    const CliResult none = scan({empty, "--format", "json"});
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_TRUE(none.items().isEmpty());
    EXPECT_EQ(none.json().value("summary").toObject().value("items_in_database").toInt(), 0);
    EXPECT_EQ(scan({run_.tempPath("does-not-exist")}).exitCode, 0);

    // A single index file scans just its folder.
    const CliResult one = scan({folder_ + "/msmFMID.pmr", "--format", "json"});
    EXPECT_EQ(one.json().value("summary").toObject().value("items_in_database").toInt(), 4);
}
