#pragma once

#include <QString>
#include <QStringList>

class TarnCore;
class TarnReportSink;

// `tarn scan`: scans what the selection options name and prints the view as
// a terminal table, CSV, HTML or JSON.
class ScanCommand {
  public:
    enum ExitCode { kOk = 0, kWriteFailed = 1, kUsage = 2, kFatal = 70 };

    // `args` are the arguments after "scan".
    static int run(const QStringList& args);
    static QString usage();

    // The shown rows as a terminal table, and the line of counts under it.
    static void writeItemsTable(const TarnCore& core, TarnReportSink& sink);
    static QString countsLine(const TarnCore& core);
    // The projects summary as a terminal table.
    static void writeProjectsTable(const TarnCore& core, TarnReportSink& sink);

    // Shows the database's fatal errors (the two texts on stderr) and ends
    // the process with kFatal, the log written out first.
    static void installFatalErrorHook();
};
