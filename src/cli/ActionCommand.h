#pragma once

#include <QString>
#include <QStringList>

// `tarn copy|move|delete`: scans what the selection options name (as `tarn
// scan` does) and runs one action on the shown items, with the same engine,
// options, questions and action log as the desktop queue.
class ActionCommand {
  public:
    enum ExitCode { kOk = 0, kFailed = 1, kUsage = 2, kInterrupted = 130 };

    // `action` is "copy", "move" or "delete"; `args` the arguments after it.
    static int run(const QString& action, const QStringList& args);
    static QString usage(const QString& action);
};
