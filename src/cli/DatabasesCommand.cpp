#include "DatabasesCommand.h"

#include <QDir>
#include <QLocale>

#include <cstdio>
#include <optional>

#include <unistd.h>

#include "CliLog.h"
#include "CliQuestions.h"
#include "TextTable.h"
#include "actions/TarnDatabaseFiles.h"
#include "items/TarnFileSize.h"
#include "log/xConsole.h"
#include "report/TarnExportTable.h"

namespace {

struct Options {
    QStringList volumes;
    bool remove = false;
    bool sure = false;
    std::optional<CliQuestions::Policy> answer;
    QString logPath;
};

int usageError(const QString& message) {
    std::fprintf(stderr, "tarn databases: %s\n%s", qPrintable(message),
                 qPrintable(DatabasesCommand::usage()));
    return DatabasesCommand::kUsage;
}

// False with a message on a bad argument; `help` set for --help.
bool parse(const QStringList& args, Options* options, QString* error, bool* help) {
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString& arg = args.at(i);
        const bool takesValue = arg == QLatin1String("--volume") ||
                                arg == QLatin1String("--answer") || arg == QLatin1String("--log");
        if (takesValue && i + 1 >= args.size()) {
            *error = arg + QStringLiteral(" needs a value");
            return false;
        }
        if (arg == QLatin1String("--volume")) {
            options->volumes.append(QDir(args.at(++i)).absolutePath());
        } else if (arg == QLatin1String("--answer")) {
            CliQuestions::Policy policy;
            if (!CliQuestions::policyFromWord(args.at(++i), &policy)) {
                *error = QStringLiteral("--answer takes no, yes or all");
                return false;
            }
            options->answer = policy;
        } else if (arg == QLatin1String("--log")) {
            options->logPath = args.at(++i);
        } else if (arg == QLatin1String("--delete")) {
            options->remove = true;
        } else if (arg == QLatin1String("--sure")) {
            options->sure = true;
        } else if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            *help = true;
        } else {
            *error = QStringLiteral("unknown argument '%1'").arg(arg);
            return false;
        }
    }
    if (options->sure && !options->remove) {
        *error = QStringLiteral("--sure goes with --delete");
        return false;
    }
    return true;
}

QString listing(const QList<TarnDatabaseFiles::Entry>& files) {
    TarnExportTable table(QString(), {QStringLiteral("folder"), QStringLiteral("file"),
                                      QStringLiteral("size"), QStringLiteral("date")});
    for (const TarnDatabaseFiles::Entry& file : files)
        table.addRow({file.folder, file.fileName,
                      TarnFileSize::toHumanBytes(double(file.size)).trimmed(),
                      QLocale().toString(file.date, QLocale::ShortFormat)});
    return TextTable::text(table, 80) + QStringLiteral("%1 database file%2\n")
                                            .arg(files.size())
                                            .arg(files.size() == 1 ? "" : "s");
}

}  // namespace

QString DatabasesCommand::usage() {
    return QStringLiteral(
        "usage: tarn databases [--volume ROOT]... [--delete --sure] [options]\n"
        "  lists every msmMMOB.mdb, msmFMID.pmr, amaMMOB.mdb and amaFMID.pmr in the media\n"
        "  folders of the volumes (default: every mounted volume that is not hidden)\n"
        "  --volume ROOT          a volume's media folders (repeatable)\n"
        "  --delete --sure        move the listed files to the Trash (without --sure: list\n"
        "                         them and change nothing)\n"
        "  --answer no|yes|all    the answer to every question when not asked on a terminal\n"
        "                         (default no)\n"
        "  --log FILE|-           the console log to FILE or stderr\n"
        "exit status: 0 done, 1 a file could not be deleted, 2 usage\n");
}

int DatabasesCommand::run(const QStringList& args) {
    Options options;
    QString error;
    bool help = false;
    if (!parse(args, &options, &error, &help)) return usageError(error);
    if (help) {
        std::fputs(qPrintable(usage()), stdout);
        return kOk;
    }
    CliLog log;
    if (!options.logPath.isEmpty() && !log.open(options.logPath, &error)) return usageError(error);

    const QList<TarnDatabaseFiles::Entry> files = options.volumes.isEmpty()
                                                      ? TarnDatabaseFiles::listMountedVolumes()
                                                      : TarnDatabaseFiles::list(options.volumes);
    std::fputs(listing(files).toUtf8().constData(), stdout);
    if (!options.remove || files.isEmpty()) return kOk;
    if (!options.sure) {
        std::fprintf(
            stderr, "tarn databases: nothing deleted; add --sure to move %s to the Trash\n",
            qPrintable(files.size() == 1 ? QStringLiteral("this file")
                                         : QStringLiteral("these %1 files").arg(files.size())));
        return kUsage;
    }

    CliQuestions questions(options.answer ? *options.answer
                                          : (::isatty(STDIN_FILENO) ? CliQuestions::Policy::Prompt
                                                                    : CliQuestions::Policy::No));
    const TarnDatabaseFiles::Result result = TarnDatabaseFiles::moveToTrash(files);
    xConsole::sharedInstance()->flush();
    std::fputs(result.actionLog.toUtf8().constData(), stdout);
    std::printf("%d deleted, %d missing, %d failed\n", result.deleted, result.missing,
                result.failed);
    return result.failed > 0 ? kFailed : kOk;
}
