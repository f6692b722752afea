#include "external/TarnExternalLauncher.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QProcess>

#include "actions/TarnAlert.h"
#include "log/xConsole.h"
#include "support/TarnPreferences.h"

namespace {

QString application() {
    return TarnPreferences::shared()->string(QLatin1String(TarnPreferences::kExternalAppBundleID));
}

}  // namespace

TarnExternalLauncher::TarnExternalLauncher(QObject* parent)
    : QObject(parent), starter_(&TarnExternalLauncher::startDetached) {}

void TarnExternalLauncher::setStarter(Starter starter) {
    starter_ = starter ? std::move(starter) : Starter(&TarnExternalLauncher::startDetached);
}

QProcessEnvironment TarnExternalLauncher::environment() {
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("TARN_EXTERNAL_APP"), application());
    return env;
}

bool TarnExternalLauncher::startDetached(const TarnExternalHandoff::Launch& launch,
                                         const QProcessEnvironment& environment) {
#ifdef Q_OS_MACOS
    // `open -b` learns only after the start that no application has the
    // identifier; it ends at once, and its failure brings the alert.
    if (launch.program == QLatin1String("/usr/bin/open")) {
        auto* open = new QProcess(qApp);
        open->setProgram(launch.program);
        open->setArguments(launch.arguments);
        open->setProcessEnvironment(environment);
        QObject::connect(open, &QProcess::finished, open, [open](int code, QProcess::ExitStatus) {
            if (code != 0)
                TarnAlert::ShowDialog_with_errorName(QStringLiteral("External App not found"),
                                                     application());
            open->deleteLater();
        });
        open->start();
        return true;
    }
#endif
    QProcess process;
    process.setProgram(launch.program);
    process.setArguments(launch.arguments);
    process.setProcessEnvironment(environment);
    process.setStandardInputFile(QProcess::nullDevice());
    return process.startDetached();
}

bool TarnExternalLauncher::OpenInExternalApp(const QStringList& paths) {
    const QString app = application();
    QList<TarnExternalHandoff::Launch> launches;
    bool started = TarnExternalHandoff::openCommands(app, paths, &launches);
    const QProcessEnvironment env = environment();
    for (const TarnExternalHandoff::Launch& launch : launches) {
        if (!started) break;
        TARN_LOG(QStringLiteral("Open in %1: %2 file(s)").arg(launch.program).arg(paths.size()));
        started = starter_(launch, env);
    }
    if (!started)
        TarnAlert::ShowDialog_with_errorName(QStringLiteral("External App not found"), app);
    return started;
}

bool TarnExternalLauncher::ExecuteApplescript(const QStringList& paths) {
    if (QClipboard* clipboard = QGuiApplication::clipboard())
        clipboard->setText(TarnExternalHandoff::clipboardText(paths));
    const QString script =
        TarnPreferences::shared()->string(QLatin1String(TarnPreferences::kExtApplescript));
    const bool started = starter_(TarnExternalHandoff::scriptCommand(script, paths), environment());
    if (!started) TARN_LOG(QStringLiteral("The script could not be started"));
    return started;
}
