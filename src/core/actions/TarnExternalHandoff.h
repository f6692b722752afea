#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "items/TarnDatabaseItem.h"

class TarnCore;

// Handing the selected media files to another program: the external
// application (preference "ExternalAppBundleID") and the user's script
// (preference "ExtApplescript"). This class makes the decisions; the desktop
// program starts the processes and shows the alerts.
//
// On macOS the application is a bundle identifier opened through `open -b`
// and the script is AppleScript run by `osascript`. On Linux the application
// is a desktop entry id ("mediainfo-gui") or a command line, and the script
// runs with /bin/sh. Both get the paths as arguments as well; the clipboard
// holds them joined by carriage returns.
class TarnExternalHandoff {
  public:
    struct Launch {
        QString program;
        QStringList arguments;
    };

    // The paths of the shown rows whose files exist, in row order; rows
    // without a file (or whose file has gone since the scan) are left out.
    static QStringList existingPaths(const TarnCore& core, QList<qsizetype> rows);
    // The same for items already taken from the rows (the desktop window
    // reads its published view, never the database itself).
    static QStringList existingPathsOfItems(const QList<TarnItemPtr>& items);
    // The clipboard text: the paths joined by "\r", nothing before or after.
    static QString clipboardText(const QStringList& paths);

    // The launches that open `paths` in `application`; false when it names
    // no application that can be found.
    static bool openCommands(const QString& application, const QStringList& paths,
                             QList<Launch>* launches);
    // The launch that runs `script` with `paths` as its arguments.
    static Launch scriptCommand(const QString& script, const QStringList& paths);
};
