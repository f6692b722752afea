#pragma once

#include <QObject>
#include <QProcessEnvironment>
#include <QStringList>

#include <functional>

#include "actions/TarnExternalHandoff.h"

// Starts the external application and the user's script on the selected
// files (the paths come from TarnExternalHandoff::existingPaths). Decisions
// are TarnExternalHandoff's; this only launches, fills the clipboard and
// shows "External App not found".
class TarnExternalLauncher : public QObject {
    Q_OBJECT
  public:
    // Starts one process without waiting for it; false when it cannot start.
    using Starter = std::function<bool(const TarnExternalHandoff::Launch& launch,
                                       const QProcessEnvironment& environment)>;

    explicit TarnExternalLauncher(QObject* parent = nullptr);

    // Replaces the real process start (tests).
    void setStarter(Starter starter);

    // Opens the files in the application of "ExternalAppBundleID"; when it
    // cannot be found or started, the alert "External App not found" with the
    // preference's value. An empty list still starts the application.
    bool OpenInExternalApp(const QStringList& paths);
    // Puts the paths on the clipboard (joined by "\r") and runs the script of
    // "ExtApplescript" with them; its result and errors are ignored.
    bool ExecuteApplescript(const QStringList& paths);

    // The environment both get: TARN_EXTERNAL_APP holds the application.
    static QProcessEnvironment environment();
    // The real start: detached, so the program outlives Tarn.
    static bool startDetached(const TarnExternalHandoff::Launch& launch,
                              const QProcessEnvironment& environment);

  private:
    Starter starter_;
};
