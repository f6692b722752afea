#pragma once

#include <QString>
#include <QStringList>

// `tarn databases`: lists the media indexes and media databases in the media
// folders of volumes and, with --delete --sure, moves them to the Trash
// through the action engine (so the editing system rebuilds them).
class DatabasesCommand {
  public:
    enum ExitCode { kOk = 0, kFailed = 1, kUsage = 2 };

    static int run(const QStringList& args);
    static QString usage();
};
