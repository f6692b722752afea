#include "ScanCommand.h"

#include <unistd.h>
#include <cstdio>
#include <cstdlib>

#include "CliLog.h"
#include "OutputFile.h"
#include "SelectionOptions.h"
#include "TextTable.h"
#include "database/TarnCore.h"
#include "items/TarnFileSize.h"
#include "log/xConsole.h"
#include "report/TarnColumns.h"
#include "report/TarnExport.h"
#include "report/TarnItemRows.h"
#include "report/TarnJsonReport.h"
#include "report/TarnProjectRows.h"
#include "report/TarnReportSink.h"

namespace {

// The columns a terminal has room for.
const QList<TarnColumn> kTerminalColumns = {
    TarnColumn::Filename,    TarnColumn::Clipname,  TarnColumn::Project,    TarnColumn::Kind,
    TarnColumn::Compression, TarnColumn::Framerate, TarnColumn::Samplerate, TarnColumn::Bits,
    TarnColumn::Size,        TarnColumn::Exists};

const QStringList kFormats = {QStringLiteral("table"), QStringLiteral("csv"),
                              QStringLiteral("csv-comma"), QStringLiteral("html"),
                              QStringLiteral("json")};

int usageError(const QString& message) {
    std::fprintf(stderr, "tarn scan: %s\n%s", qPrintable(message),
                 qPrintable(ScanCommand::usage()));
    return ScanCommand::kUsage;
}

// The progress line: rewritten in place on a terminal.
void showProgress(int done, int found, qsizetype items) {
    std::fprintf(stderr, "\rscanning: %d of %d index files, %lld items ", done, found,
                 static_cast<long long>(items));
    std::fflush(stderr);
}

QString separatorOf(const QString& format) {
    return format == QLatin1String("csv") ? QStringLiteral(";") : QStringLiteral(",");
}

// The report in the chosen format, written to `device` as it is made.
bool writeReport(const TarnCore& core, const QString& format, bool summary, QIODevice* device) {
    if (format == QLatin1String("json")) return TarnJsonReport::write(core, device);
    if (format == QLatin1String("table")) {
        TarnReportSink sink(device);
        if (summary) {
            ScanCommand::writeProjectsTable(core, sink);
        } else {
            ScanCommand::writeItemsTable(core, sink);
            sink.appendText(ScanCommand::countsLine(core));
        }
        return sink.flush();
    }
    const TarnItemRows items(core, QStringLiteral("Tarn"));
    const TarnProjectRows projects(core, QStringLiteral("Tarn Projects Summary"));
    const TarnReportRows& rows = summary ? static_cast<const TarnReportRows&>(projects) : items;
    if (format == QLatin1String("html")) return TarnExport::writeHtml(rows, device);
    return TarnExport::writeCsv(rows, separatorOf(format), device);
}

}  // namespace

QString ScanCommand::usage() {
    return QStringLiteral(
               "usage: tarn scan [PATH...] [--volume ROOT] [--all-volumes] [--ama] [options]\n") +
           SelectionOptions::usage() +
           QStringLiteral(
               "output:\n"
               "  --format FORMAT        table (default), csv (\";\"), csv-comma, html or json\n"
               "  --summary              the projects summary instead of the items\n"
               "  -o FILE                write to FILE instead of stdout\n");
}

void ScanCommand::installFatalErrorHook() {
    TarnCore::setFatalErrorHook([](const QString& title, const QString& message) {
        xConsole::sharedInstance()->flush();
        std::fprintf(stderr, "%s\n%s\n", qPrintable(title), qPrintable(message));
        std::fflush(stderr);
        std::_Exit(kFatal);
    });
}

void ScanCommand::writeItemsTable(const TarnCore& core, TarnReportSink& sink) {
    TextTable::write(TarnItemRows(core, QString(), kTerminalColumns), sink, 40,
                     TarnCore::novalue());
}

QString ScanCommand::countsLine(const TarnCore& core) {
    return QStringLiteral("%1 of %2 items shown, %3, %4 projects\n")
        .arg(core.getFilteredIndexesCount())
        .arg(core.getAllItemsCount())
        .arg(TarnFileSize::toHumanBytes(double(core.FilteredItemsSize())).trimmed())
        .arg(core.getProjectsCount());
}

void ScanCommand::writeProjectsTable(const TarnCore& core, TarnReportSink& sink) {
    TextTable::write(TarnProjectRows(core, QString()), sink, 60);
}

int ScanCommand::run(const QStringList& args) {
    SelectionOptions selection;
    QStringList rest;
    QString error;
    if (!selection.parse(args, &rest, &error, {QStringLiteral("--format"), QStringLiteral("-o")})) {
        return usageError(error);
    }
    QString format = QStringLiteral("table");
    QString outputPath;
    bool summary = false;
    for (qsizetype i = 0; i < rest.size(); ++i) {
        const QString& arg = rest.at(i);
        if (arg == QLatin1String("--format") || arg == QLatin1String("-o")) {
            if (i + 1 >= rest.size()) return usageError(arg + QStringLiteral(" needs a value"));
            (arg == QLatin1String("-o") ? outputPath : format) = rest.at(++i);
        } else if (arg == QLatin1String("--summary")) {
            summary = true;
        } else if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs(qPrintable(usage()), stdout);
            return kOk;
        } else {
            return usageError(QStringLiteral("unknown option '%1'").arg(arg));
        }
    }
    if (!kFormats.contains(format)) {
        return usageError(QStringLiteral("unknown format '%1' (%2)")
                              .arg(format, kFormats.join(QLatin1String(", "))));
    }
    if (!selection.hasSource()) return usageError(QStringLiteral("nothing to scan"));

    CliLog log;
    if (!selection.logPath.isEmpty() && !log.open(selection.logPath, &error)) {
        return usageError(error);
    }
    installFatalErrorHook();
    selection.applyRunPreferences();

    TarnCore& core = *TarnCore::sharedCore();
    const bool terminal = isatty(fileno(stderr));
    selection.run(
        core, terminal ? SelectionOptions::Progress(showProgress) : SelectionOptions::Progress());
    if (terminal) std::fputs("\n", stderr);

    log.close();
    OutputFile output;
    const bool opened = output.open(outputPath);
    if (!output.commit(opened && writeReport(core, format, summary, output.device()))) {
        std::fprintf(stderr, "tarn scan: cannot write '%s'\n",
                     qPrintable(outputPath.isEmpty() ? QStringLiteral("stdout") : outputPath));
        return kWriteFailed;
    }
    return kOk;
}
