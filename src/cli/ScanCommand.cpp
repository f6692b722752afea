#include "ScanCommand.h"

#include <QFile>
#include <QSaveFile>

#include <unistd.h>
#include <cstdio>
#include <cstdlib>

#include "CliLog.h"
#include "SelectionOptions.h"
#include "TextTable.h"
#include "database/TarnCore.h"
#include "items/TarnFileSize.h"
#include "log/xConsole.h"
#include "report/TarnColumns.h"
#include "report/TarnExport.h"
#include "report/TarnExportTable.h"
#include "report/TarnJsonReport.h"

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

TarnExportTable itemsExport(const TarnCore& core) {
    return TarnExportTable::forItems(QStringLiteral("Tarn"), SelectionOptions::shownItems(core));
}

TarnExportTable projectsExport(const TarnCore& core) {
    TarnExportTable table = TarnExportTable::forProjects(QStringLiteral("Tarn Projects Summary"));
    for (const TarnProjectPtr& p : core.ProjectsSummaryA()) {
        table.addProject(p->name, p->SizeValue, p->FilesCount);
    }
    return table;
}

QString jsonReport(const TarnCore& core) {
    QJsonArray items;
    for (const TarnItemPtr& item : SelectionOptions::shownItems(core)) {
        items.append(TarnJsonReport::itemObject(*item));
    }
    QJsonArray projects;
    for (const TarnProjectPtr& p : core.ProjectsSummaryA()) {
        projects.append(TarnJsonReport::projectObject(p->name, p->FilesCount, p->SizeValue,
                                                      p->mustBeShownInList.load()));
    }
    const QJsonObject summary = TarnJsonReport::summaryObject(
        quint64(core.getAllItemsCount()), quint64(core.getProjectsCount()),
        quint64(core.getFilteredIndexesCount()), core.FilteredItemsSize());
    return TarnJsonReport::document(items, projects, summary);
}

// The progress line: rewritten in place on a terminal.
void showProgress(int done, int found, qsizetype items) {
    std::fprintf(stderr, "\rscanning: %d of %d index files, %lld items ", done, found,
                 static_cast<long long>(items));
    std::fflush(stderr);
}

bool writeOutput(const QString& path, const QString& text) {
    const QByteArray bytes = text.toUtf8();
    if (path.isEmpty()) {
        std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
        std::fflush(stdout);
        return true;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(bytes);
    return file.commit();
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

QString ScanCommand::itemsTable(const TarnCore& core) {
    QStringList headers;
    for (TarnColumn c : kTerminalColumns) headers.append(TarnColumns::title(c));
    TextTable table(headers);
    for (const TarnItemPtr& item : SelectionOptions::shownItems(core)) {
        QStringList cells;
        for (TarnColumn c : kTerminalColumns) {
            const QString text = TarnColumns::cellText(c, *item);
            cells.append(text.isNull() ? TarnCore::novalue() : text);
        }
        table.addRow(cells);
    }
    return table.toString();
}

QString ScanCommand::countsLine(const TarnCore& core) {
    return QStringLiteral("%1 of %2 items shown, %3, %4 projects\n")
        .arg(core.getFilteredIndexesCount())
        .arg(core.getAllItemsCount())
        .arg(TarnFileSize::toHumanBytes(double(core.FilteredItemsSize())).trimmed())
        .arg(core.getProjectsCount());
}

QString ScanCommand::projectsTable(const TarnCore& core) {
    const TarnExportTable projects = projectsExport(core);
    TextTable table(projects.columns(), 60);
    for (const QStringList& row : projects.rows()) table.addRow(row);
    return table.toString();
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

    QString text;
    if (format == QLatin1String("json")) {
        text = jsonReport(core);
    } else if (format == QLatin1String("table")) {
        text = summary ? projectsTable(core) : itemsTable(core) + countsLine(core);
    } else {
        const TarnExportTable table = summary ? projectsExport(core) : itemsExport(core);
        if (format == QLatin1String("html")) {
            text = TarnExport::genHtml(table);
        } else {
            text = TarnExport::genCsv(
                table, format == QLatin1String("csv") ? QStringLiteral(";") : QStringLiteral(","));
        }
    }
    log.close();
    if (!writeOutput(outputPath, text)) {
        std::fprintf(stderr, "tarn scan: cannot write '%s'\n", qPrintable(outputPath));
        return kWriteFailed;
    }
    return kOk;
}
