#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QSet>

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
        volume_ = run_.tempPath(QStringLiteral("Volume"));
        folder_ = volume_ + QStringLiteral("/Avid MediaFiles/MXF/1");
        const QList<fixtures::PmrEntry> entries = {
            fixtures::makePmrEntry(0x1111, QStringLiteral("Alpha_V01.mxf"),
                                   QStringLiteral("Alpha")),
            fixtures::makePmrEntry(0x2222, QStringLiteral("Beta_A01.wav"), QStringLiteral("Beta")),
            fixtures::makePmrEntry(0x3333, QStringLiteral("Alpha_V02.mxf"),
                                   QStringLiteral("Alpha")),
        };
        ASSERT_TRUE(fixtures::writeFile(folder_ + QStringLiteral("/msmFMID.pmr"),
                                        fixtures::writePmr(entries)));
        ASSERT_TRUE(
            fixtures::writeFile(folder_ + QStringLiteral("/Alpha_V01.mxf"), QByteArray(300, 'a')));
        ASSERT_TRUE(
            fixtures::writeFile(folder_ + QStringLiteral("/Beta_A01.wav"), QByteArray(5000, 'b')));
        ASSERT_TRUE(
            fixtures::writeFile(folder_ + QStringLiteral("/notes.txt"), QByteArray(20, 'n')));
    }

    CliResult scan(QStringList args) const {
        args.prepend(QStringLiteral("scan"));
        return run_(args);
    }

    static QStringList fileNames(const QJsonObject& report) {
        QStringList names;
        for (const QJsonValue& v : report.value(QStringLiteral("items")).toArray()) {
            names.append(v.toObject().value(QStringLiteral("file_name")).toString());
        }
        return names;
    }

    static QJsonObject itemNamed(const QJsonObject& report, const QString& name) {
        for (const QJsonValue& v : report.value(QStringLiteral("items")).toArray()) {
            if (v.toObject().value(QStringLiteral("file_name")).toString() == name)
                return v.toObject();
        }
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
        {QStringLiteral("--bogus"), volume_},
        {volume_, QStringLiteral("--format"), QStringLiteral("xml")},
        {volume_, QStringLiteral("--format")},
        {volume_, QStringLiteral("--sort"), QStringLiteral("kind")},
        {volume_, QStringLiteral("--sort"), QStringLiteral("filename:sideways")},
        {volume_, QStringLiteral("--search")},
        {volume_, QStringLiteral("--intersect")},
        {QStringLiteral("--volume")},
        {volume_, QStringLiteral("-o")},
    };
    for (const QStringList& args : bad) {
        const CliResult r = scan(args);
        EXPECT_EQ(r.exitCode, 2) << qPrintable(args.join(QLatin1Char(' ')));
        EXPECT_TRUE(r.err.startsWith(QLatin1String("tarn scan: "))) << qPrintable(r.err);
        EXPECT_TRUE(r.err.contains(QLatin1String("usage: tarn scan"))) << qPrintable(r.err);
        EXPECT_TRUE(r.out.isEmpty());
    }
    EXPECT_EQ(run_({QStringLiteral("frobnicate")}).exitCode, 2);
    EXPECT_EQ(run_({QStringLiteral("demo"), QStringLiteral("a"), QStringLiteral("b")}).exitCode, 2);
    const CliResult help = scan({QStringLiteral("--help")});
    EXPECT_EQ(help.exitCode, 0);
    EXPECT_TRUE(help.out.contains(QLatin1String("--intersect BIN")));
}

TEST_F(ScanCommandTest, JsonReportsEveryShownItemWithItsFields) {
    const CliResult r = scan({QStringLiteral("--volume"), volume_, QStringLiteral("--format"),
                              QStringLiteral("json"), QStringLiteral("--show-missing")});
    ASSERT_EQ(r.exitCode, 0) << qPrintable(r.err);
    const QJsonObject report = r.json();
    const QJsonArray items = report.value(QStringLiteral("items")).toArray();
    ASSERT_EQ(items.size(), 4) << qPrintable(r.out);

    const QSet<QString> keys = {"path",
                                "file_name",
                                "clip_name",
                                "project",
                                "file_package_uid",
                                "material_package_uid",
                                "uid_size",
                                "hash",
                                "size",
                                "exists",
                                "valid",
                                "ama",
                                "referenced",
                                "good_umid",
                                "portable_name",
                                "usage_code",
                                "kind",
                                "compression",
                                "fourcc",
                                "resolution_id",
                                "frame_rate",
                                "sample_rate",
                                "bits",
                                "date",
                                "frame_rate_text",
                                "sample_rate_text"};
    for (const QJsonValue& v : items) {
        const QStringList itemKeys = v.toObject().keys();
        EXPECT_EQ(QSet<QString>(itemKeys.begin(), itemKeys.end()), keys);
    }

    const QJsonObject alpha = itemNamed(report, QStringLiteral("Alpha_V01.mxf"));
    EXPECT_EQ(alpha.value("path").toString(), folder_ + QStringLiteral("/Alpha_V01.mxf"));
    EXPECT_EQ(alpha.value("project").toString(), QStringLiteral("Alpha"));
    EXPECT_EQ(alpha.value("uid_size").toInt(), 8);
    EXPECT_EQ(alpha.value("file_package_uid").toString(),
              QString::fromLatin1(fixtures::makeUmid(0x1111).toHex()));
    EXPECT_EQ(alpha.value("material_package_uid").toString(),
              QString::fromLatin1(fixtures::makeUmid(0x1112).toHex()));
    EXPECT_EQ(alpha.value("hash").toString(), QStringLiteral("00001111"));
    EXPECT_EQ(alpha.value("size").toInt(), 300);
    EXPECT_TRUE(alpha.value("exists").toBool());
    EXPECT_TRUE(alpha.value("good_umid").toBool());
    EXPECT_TRUE(alpha.value("date").isString());
    EXPECT_EQ(alpha.value("frame_rate").toArray(), (QJsonArray{0, 0}));
    EXPECT_TRUE(alpha.value("frame_rate_text").isNull());
    EXPECT_TRUE(alpha.value("clip_name").isNull());

    const QJsonObject missing = itemNamed(report, QStringLiteral("Alpha_V02.mxf"));
    EXPECT_FALSE(missing.value("exists").toBool());
    EXPECT_TRUE(missing.value("valid").toBool());  // shown because of --show-missing
    EXPECT_EQ(missing.value("size").toInt(), 0);
    EXPECT_TRUE(missing.value("date").isNull());
    EXPECT_TRUE(missing.value("referenced").toBool());

    const QJsonObject wav = itemNamed(report, QStringLiteral("Beta_A01.wav"));
    EXPECT_EQ(wav.value("compression").toString(), QStringLiteral("Audio"));
    EXPECT_EQ(wav.value("fourcc").toString(), QStringLiteral("_AUD"));

    const QJsonObject notes = itemNamed(report, QStringLiteral("notes.txt"));
    EXPECT_EQ(notes.value("project").toString(), QStringLiteral("_00_TRN_UNMANAGED_FILES"));
    EXPECT_EQ(notes.value("uid_size").toInt(), 0);
    EXPECT_TRUE(notes.value("file_package_uid").isNull());
    EXPECT_FALSE(notes.value("referenced").toBool());

    const QJsonObject summary = report.value(QStringLiteral("summary")).toObject();
    EXPECT_EQ(summary.value("items_in_database").toInt(), 4);
    EXPECT_EQ(summary.value("filtered_items").toInt(), 4);
    EXPECT_EQ(summary.value("filtered_size").toInt(), 5320);
    QStringList projects;
    for (const QJsonValue& p : report.value(QStringLiteral("projects")).toArray()) {
        projects.append(p.toObject().value("name").toString());
        EXPECT_TRUE(p.toObject().value("shown").toBool());
    }
    EXPECT_EQ(projects, (QStringList{QStringLiteral("_00_TRN_UNMANAGED_FILES"),
                                     QStringLiteral("Alpha"), QStringLiteral("Beta")}));
    EXPECT_EQ(summary.value("projects_count").toInt(), 3);

    // By default a missing file is not shown, but it is in the database.
    const QJsonObject existing = scan({QStringLiteral("--volume"), volume_,
                                       QStringLiteral("--format"), QStringLiteral("json")})
                                     .json();
    EXPECT_FALSE(fileNames(existing).contains(QStringLiteral("Alpha_V02.mxf")));
    EXPECT_EQ(fileNames(existing).size(), 3);
    EXPECT_EQ(existing.value("summary").toObject().value("items_in_database").toInt(), 4);
}

TEST_F(ScanCommandTest, FilterSearchProjectAndSortOptions) {
    const QStringList base = {QStringLiteral("--volume"), volume_, QStringLiteral("--format"),
                              QStringLiteral("json"), QStringLiteral("--show-missing")};
    auto names = [&](const QStringList& more) { return fileNames(scan(base + more).json()); };

    EXPECT_EQ(names({QStringLiteral("--project"), QStringLiteral("Alpha"), QStringLiteral("--sort"),
                     QStringLiteral("filename")}),
              (QStringList{QStringLiteral("Alpha_V01.mxf"), QStringLiteral("Alpha_V02.mxf")}));
    EXPECT_EQ(names({QStringLiteral("--project"), QStringLiteral("Beta"),
                     QStringLiteral("--project"), QStringLiteral("_00_TRN_UNMANAGED_FILES")})
                  .size(),
              2);
    // Search ignores case and looks at the project name too.
    EXPECT_EQ(names({QStringLiteral("--search"), QStringLiteral("bETA")}),
              (QStringList{QStringLiteral("Beta_A01.wav")}));
    EXPECT_EQ(names({QStringLiteral("--audio")}), (QStringList{QStringLiteral("Beta_A01.wav")}));
    EXPECT_EQ(names({QStringLiteral("--sort"), QStringLiteral("filename:desc")}),
              (QStringList{QStringLiteral("notes.txt"), QStringLiteral("Beta_A01.wav"),
                           QStringLiteral("Alpha_V02.mxf"), QStringLiteral("Alpha_V01.mxf")}));
    // The first key decides, the second breaks ties.
    EXPECT_EQ(names({QStringLiteral("--sort"), QStringLiteral("project:desc"),
                     QStringLiteral("--sort"), QStringLiteral("filename:desc")}),
              (QStringList{QStringLiteral("Beta_A01.wav"), QStringLiteral("Alpha_V02.mxf"),
                           QStringLiteral("Alpha_V01.mxf"), QStringLiteral("notes.txt")}));

    const QJsonObject onlyAlpha =
        scan(base + QStringList{QStringLiteral("--project"), QStringLiteral("Alpha")}).json();
    for (const QJsonValue& p : onlyAlpha.value("projects").toArray()) {
        const QJsonObject project = p.toObject();
        EXPECT_EQ(project.value("shown").toBool(),
                  project.value("name").toString() == QLatin1String("Alpha"));
    }
    EXPECT_EQ(onlyAlpha.value("summary").toObject().value("filtered_size").toInt(), 300);
}

TEST_F(ScanCommandTest, CsvHtmlTableAndSummaryOutputs) {
    const QStringList base = {QStringLiteral("--volume"), volume_, QStringLiteral("--sort"),
                              QStringLiteral("filename")};
    const CliResult csv =
        scan(base + QStringList{QStringLiteral("--format"), QStringLiteral("csv")});
    ASSERT_EQ(csv.exitCode, 0);
    QStringList header;
    for (TarnColumn c : TarnColumns::all())
        header.append(QLatin1Char('"') + TarnColumns::title(c) + QLatin1String("\";"));
    const QStringList lines = csv.out.split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), 5);  // header, three rows, nothing after the last line feed
    EXPECT_EQ(lines.at(0), header.join(QString()));
    EXPECT_TRUE(lines.at(1).startsWith(QLatin1String("\"\";\"Alpha_V01.mxf\";\"\";\"")));
    EXPECT_TRUE(lines.at(4).isEmpty());
    EXPECT_FALSE(csv.out.contains(QLatin1Char('\r')));

    const CliResult comma =
        scan(base + QStringList{QStringLiteral("--format"), QStringLiteral("csv-comma")});
    EXPECT_EQ(comma.out, QString(csv.out).replace(QLatin1String("\";"), QLatin1String("\",")));

    const CliResult html =
        scan(base + QStringList{QStringLiteral("--format"), QStringLiteral("html")});
    EXPECT_TRUE(html.out.contains(QLatin1String("<h1>Tarn</h1>")));
    EXPECT_EQ(html.out.count(QLatin1String("<tr>")), 4);
    EXPECT_EQ(html.out.count(QLatin1String("<th>")), 18);
    EXPECT_TRUE(html.out.endsWith(QLatin1String("</tbody></table></div></body></html>")));

    const CliResult table = scan(base);
    EXPECT_TRUE(table.out.startsWith(QLatin1String("File Name")));
    EXPECT_TRUE(table.out.contains(QLatin1String("3 of 4 items shown")));
    EXPECT_TRUE(table.out.contains(QLatin1String("Alpha_V01.mxf")));

    const CliResult summary =
        scan(base + QStringList{QStringLiteral("--summary"), QStringLiteral("--format"),
                                QStringLiteral("csv")});
    EXPECT_EQ(summary.out, QStringLiteral("\"Project\";\"Size\";\"Files\";\n"
                                          "\"_00_TRN_UNMANAGED_FILES\";\"  20 bytes\";\"1\";\n"
                                          "\"Alpha\";\" 300 bytes\";\"1\";\n"
                                          "\"Beta\";\"5.00 kB\";\"1\";\n"));
    const CliResult summaryTable = scan(base + QStringList{QStringLiteral("--summary")});
    EXPECT_TRUE(summaryTable.out.startsWith(QLatin1String("Project")));
    EXPECT_TRUE(summaryTable.out.contains(QLatin1String("Beta")));
}

TEST_F(ScanCommandTest, OutputFileLogAndUntouchedPreferences) {
    const QString outFile = run_.tempPath(QStringLiteral("out/report.json"));
    QDir().mkpath(QFileInfo(outFile).absolutePath());
    const QString logFile = run_.tempPath(QStringLiteral("scan.log"));
    const CliResult r = scan({QStringLiteral("--volume"), volume_, QStringLiteral("--format"),
                              QStringLiteral("json"), QStringLiteral("-o"), outFile,
                              QStringLiteral("--log"), logFile, QStringLiteral("--show-missing"),
                              QStringLiteral("--no-mdb"), QStringLiteral("--no-mxf")});
    ASSERT_EQ(r.exitCode, 0) << qPrintable(r.err);
    EXPECT_TRUE(r.out.isEmpty());
    QFile out(outFile);
    ASSERT_TRUE(out.open(QIODevice::ReadOnly));
    EXPECT_EQ(QJsonDocument::fromJson(out.readAll()).object().value("items").toArray().size(), 4);
    QFile log(logFile);
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    const QString logText = QString::fromUtf8(log.readAll());
    EXPECT_TRUE(logText.contains(QLatin1String("Execution Time: "))) << qPrintable(logText);
    // Run overrides are never stored.
    EXPECT_FALSE(QFileInfo::exists(run_.settingsFile()));

    const CliResult toStderr =
        scan({QStringLiteral("--volume"), volume_, QStringLiteral("--log"), QStringLiteral("-")});
    EXPECT_TRUE(toStderr.err.contains(QLatin1String("Execution Time: ")));

    const CliResult unwritable = scan({QStringLiteral("--volume"), volume_, QStringLiteral("-o"),
                                       run_.tempPath(QStringLiteral("no/such/dir/x.csv"))});
    EXPECT_EQ(unwritable.exitCode, 1);
}

// A report to something that is not a plain file (a pipe here; /dev/null is
// the usual one) is written into it. Renaming a finished file over it, as for
// a plain file, would replace it and, for /dev/null run as root, the device.
TEST_F(ScanCommandTest, OutputToAPipeGoesThroughThePipe) {
    const QString fifo = run_.tempPath(QStringLiteral("report.fifo"));
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
    const QStringList args = {QStringLiteral("--volume"), volume_, QStringLiteral("--format"),
                              QStringLiteral("csv")};
    const CliResult piped = scan(args + QStringList{QStringLiteral("-o"), fifo});
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
    const QString empty = run_.tempPath(QStringLiteral("Empty"));
    QDir().mkpath(empty);
    const CliResult none = scan({empty, QStringLiteral("--format"), QStringLiteral("json")});
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_TRUE(none.json().value("items").toArray().isEmpty());
    EXPECT_EQ(none.json().value("summary").toObject().value("items_in_database").toInt(), 0);
    EXPECT_EQ(scan({run_.tempPath(QStringLiteral("does-not-exist"))}).exitCode, 0);

    // A single index file scans just its folder.
    const CliResult one = scan({folder_ + QStringLiteral("/msmFMID.pmr"),
                                QStringLiteral("--format"), QStringLiteral("json")});
    EXPECT_EQ(one.json().value("summary").toObject().value("items_in_database").toInt(), 4);
}
