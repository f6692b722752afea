#include "ActionCommand.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <atomic>
#include <csignal>
#include <cstdio>
#include <optional>
#include <thread>

#include <unistd.h>

#include "CliLog.h"
#include "CliQuestions.h"
#include "ScanCommand.h"
#include "SelectionOptions.h"
#include "actions/TarnActionOperation.h"
#include "actions/TarnNewActionRules.h"
#include "database/TarnCore.h"
#include "items/TarnFileSize.h"
#include "log/xConsole.h"

namespace {

volatile std::sig_atomic_t gInterrupted = 0;

void onSignal(int) {
    gInterrupted = 1;
}

// SIGINT and SIGTERM cancel the action instead of ending the process.
class InterruptGuard {
  public:
    InterruptGuard() {
        struct sigaction action {};
        action.sa_handler = onSignal;
        sigemptyset(&action.sa_mask);
        action.sa_flags = SA_RESTART;
        ::sigaction(SIGINT, &action, &oldInt_);
        ::sigaction(SIGTERM, &action, &oldTerm_);
    }
    ~InterruptGuard() {
        ::sigaction(SIGINT, &oldInt_, nullptr);
        ::sigaction(SIGTERM, &oldTerm_, nullptr);
    }

  private:
    struct sigaction oldInt_ {};
    struct sigaction oldTerm_ {};
};

int usageError(const QString& action, const QString& message) {
    std::fprintf(stderr, "tarn %s: %s\n%s", qPrintable(action), qPrintable(message),
                 qPrintable(ActionCommand::usage(action)));
    return ActionCommand::kUsage;
}

QString actionWord(const QString& command) {
    if (command == QLatin1String("move")) return TarnActionOptions::moveWord();
    if (command == QLatin1String("delete")) return TarnActionOptions::deleteWord();
    return TarnActionOptions::copyWord();
}

QString human(quint64 bytes) {
    return TarnFileSize::toHumanBytes(double(bytes)).trimmed();
}

void progressLine(const QString& command, const TarnActionOperation& op, bool terminal) {
    const quint64 bytes = op.BytesDone() + quint64(std::max<std::int64_t>(0, op.bWritten()));
    std::fprintf(stderr, "%s%s: %llu of %llu items, %s of %s%s", terminal ? "\r" : "",
                 qPrintable(command), static_cast<unsigned long long>(op.itemsDone()),
                 static_cast<unsigned long long>(op.itemsTotal()), qPrintable(human(bytes)),
                 qPrintable(human(op.BytesTotal())), terminal ? "   " : "\n");
    std::fflush(stderr);
}

// Every source and where it would go.
QString plan(const TarnActionOptions& options) {
    TarnActionOperation op(options);
    TarnMediaFileGuard guard(options.mediaFolderRoots);
    QString text;
    for (const TarnItemPtr& item : *options.items) {
        QString target;
        TarnMediaFileGuard::Checked checked;
        QString reason;
        if (!guard.check(item->DB_itemPath, &checked, &reason)) {
            target = QStringLiteral("(refused: %1)").arg(reason);
        } else if (options.isDelete()) {
            target = QStringLiteral("(Trash)");
        } else {
            const QString folder = op.targetFolderForItem(*item);
            target =
                op.areSourceAndTargetEqual(item->DB_itemPath, folder)
                    ? QStringLiteral("(the same folder: skipped)")
                    : folder + QLatin1Char('/') + item->DB_itemPath.section(QLatin1Char('/'), -1);
        }
        text += item->DB_itemPath + QStringLiteral("\n    -> ") + target + QLatin1Char('\n');
    }
    return text;
}

bool writeText(const QString& path, const QString& text) {
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) return false;
    file.write(text.toUtf8());
    return file.commit();
}

// What the action's own options ask for (the selection options aside).
struct ActionRequest {
    TarnActionOptions options;
    bool dryRun = false;
    std::optional<CliQuestions::Policy> answer;
    QString actionLogPath;
};

const QSet<QString>& valueOptions() {
    static const QSet<QString> options{QStringLiteral("--to"), QStringLiteral("--answer"),
                                       QStringLiteral("--action-log")};
    return options;
}

// Reads the options after the selection's; an exit code when the command
// ends here (a usage error, or --help).
std::optional<int> readActionOptions(const QString& command, const QStringList& rest,
                                     ActionRequest& request) {
    TarnActionOptions& options = request.options;
    for (qsizetype i = 0; i < rest.size(); ++i) {
        const QString& arg = rest.at(i);
        if (valueOptions().contains(arg)) {
            if (i + 1 >= rest.size())
                return usageError(command, arg + QStringLiteral(" needs a value"));
            const QString value = rest.at(++i);
            if (arg == QLatin1String("--to")) {
                options.Destination = value;
            } else if (arg == QLatin1String("--action-log")) {
                request.actionLogPath = value;
            } else {
                CliQuestions::Policy policy;
                if (!CliQuestions::policyFromWord(value, &policy))
                    return usageError(command, QStringLiteral("--answer takes no, yes or all"));
                request.answer = policy;
            }
        } else if (arg == QLatin1String("--no-project-folders")) {
            options.Create_projects_folders = false;
        } else if (arg == QLatin1String("--no-type-folders")) {
            options.Create_mxf_folders = false;
        } else if (arg == QLatin1String("--keep-folders")) {
            options.Keep_original_folders = true;
        } else if (arg == QLatin1String("--sure")) {
            options.Im_sure = true;
        } else if (arg == QLatin1String("--dry-run")) {
            request.dryRun = true;
        } else if (arg == QLatin1String("-h") || arg == QLatin1String("--help")) {
            std::fputs(qPrintable(ActionCommand::usage(command)), stdout);
            return ActionCommand::kOk;
        } else {
            return usageError(command, QStringLiteral("unknown option '%1'").arg(arg));
        }
    }
    return std::nullopt;
}

// Copy and move need an existing folder, made absolute and clean.
std::optional<int> checkDestination(const QString& command, TarnActionOptions& options) {
    if (options.isDelete()) return std::nullopt;
    if (options.Destination.isNull())
        return usageError(command, QStringLiteral("Invalid destination path"));
    options.Destination = TarnNewActionRules::normaliseDestination(options.Destination);
    if (!QFileInfo(options.Destination).isDir())
        return usageError(command, QStringLiteral("Please check destination path"));
    return std::nullopt;
}

// The engine on a worker thread while this thread watches for signals and
// shows progress; returns when the run has ended.
void runWithProgress(const QString& command, TarnActionOperation& operation) {
    const bool terminal = ::isatty(STDERR_FILENO);
    InterruptGuard interrupts;
    gInterrupted = 0;
    std::atomic<bool> done{false};
    std::thread worker([&] {
        operation.start();
        done = true;
    });
    quint64 shownItems = ~quint64(0);
    while (!done) {
        if (gInterrupted && !operation.isCancelled()) operation.cancel();
        if (!CliQuestions::isAsking() && (terminal || operation.itemsDone() != shownItems)) {
            shownItems = operation.itemsDone();
            progressLine(command, operation, terminal);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    worker.join();
    progressLine(command, operation, terminal);
    if (terminal) std::fputs("\n", stderr);
    xConsole::sharedInstance()->flush();
}

// The action log to stdout or its file, and the exit status of the run.
int finishRun(const QString& command, const TarnActionOperation& operation,
              const QString& actionLogPath) {
    const QString actionLog = operation.actionLog();
    if (actionLogPath.isEmpty()) {
        std::fputs(qPrintable(actionLog), stdout);
        std::fflush(stdout);
    } else if (!writeText(actionLogPath, actionLog)) {
        std::fprintf(stderr, "tarn %s: cannot write '%s'\n", qPrintable(command),
                     qPrintable(actionLogPath));
        return ActionCommand::kFailed;
    }
    if (operation.isCancelled()) return ActionCommand::kInterrupted;
    return operation.filesFailed() > 0 ? ActionCommand::kFailed : ActionCommand::kOk;
}

}  // namespace

QString ActionCommand::usage(const QString& action) {
    return QStringLiteral(
               "usage: tarn %1 [PATH...] [--volume ROOT] [selection options] %2[options]\n")
               .arg(action,
                    action == QLatin1String("delete") ? QString() : QStringLiteral("--to DEST ")) +
           SelectionOptions::usage() +
           QStringLiteral(
               "action:\n"
               "  --to DEST              the destination folder (copy, move; must exist)\n"
               "  --no-project-folders   no folder per project\n"
               "  --no-type-folders      no folder per file type (MXF, WAV, ...)\n"
               "  --keep-folders         keep the name of each file's own folder\n"
               "  --sure                 really do it (without: show the plan, change nothing)\n"
               "  --dry-run              print every source and its target, change nothing\n"
               "  --answer no|yes|all    the answer to every question when not asked on a\n"
               "                         terminal (default no)\n"
               "  --action-log FILE      write the action log to FILE instead of stdout\n"
               "exit status: 0 nothing failed, 1 a file failed, 2 usage, 130 interrupted\n");
}

int ActionCommand::run(const QString& command, const QStringList& args) {
    SelectionOptions selection;
    QStringList rest;
    QString error;
    if (!selection.parse(args, &rest, &error, valueOptions())) return usageError(command, error);
    ActionRequest request;
    TarnActionOptions& options = request.options;
    options.Action = actionWord(command);
    options.Destination = QString();
    if (const std::optional<int> exit = readActionOptions(command, rest, request)) return *exit;
    if (!selection.hasSource()) return usageError(command, QStringLiteral("nothing to scan"));
    if (const std::optional<int> exit = checkDestination(command, options)) return *exit;

    CliLog log;
    if (!selection.logPath.isEmpty() && !log.open(selection.logPath, &error))
        return usageError(command, error);
    ScanCommand::installFatalErrorHook();
    selection.applyRunPreferences();
    TarnCore& core = *TarnCore::sharedCore();
    selection.run(core);
    options.items = SelectionOptions::shownItems(core);
    options.mediaFolderRoots = core.mediaFolderRoots();

    std::optional<quint64> total;
    const QString summary = TarnNewActionRules::updateStatusText(options, total);
    if (request.dryRun) {
        std::fputs(qPrintable(plan(options)), stdout);
        std::fprintf(stdout, "%s\n", qPrintable(summary));
        return kOk;
    }
    const TarnNewActionRules::Verdict verdict = TarnNewActionRules::PushGo(options);
    if (!verdict.accepted) {
        std::fprintf(stdout, "%s\n", qPrintable(summary));
        std::fprintf(stderr, "%s\n%s%s", qPrintable(verdict.message), qPrintable(verdict.detail),
                     verdict.detail.isEmpty() ? "" : "\n");
        return kUsage;
    }
    // Questions go to the terminal, else get the given (default: safe) answer.
    CliQuestions questions(request.answer ? *request.answer
                                          : (::isatty(STDIN_FILENO) ? CliQuestions::Policy::Prompt
                                                                    : CliQuestions::Policy::No));
    TarnActionOperation operation(options);
    runWithProgress(command, operation);
    return finishRun(command, operation, request.actionLogPath);
}
