#include "window/FileRevealer.h"

#include <QDesktopServices>
#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QUrl>

#if defined(TARN_HAVE_QTDBUS)
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#endif

namespace {

void openFolder(const QString& path) {
    QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}

}  // namespace

void FileRevealer::reveal(const QString& path) {
    if (path.isEmpty()) return;
#if defined(Q_OS_MACOS)
    if (!QProcess::startDetached(QStringLiteral("/usr/bin/open"), {QStringLiteral("-R"), path})) {
        openFolder(path);
    }
#elif defined(Q_OS_WIN)
    if (!QProcess::startDetached(QStringLiteral("explorer.exe"),
                                 {QStringLiteral("/select,") + QDir::toNativeSeparators(path)})) {
        openFolder(path);
    }
#elif defined(TARN_HAVE_QTDBUS)
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.FileManager1"),
        QStringLiteral("/org/freedesktop/FileManager1"),
        QStringLiteral("org.freedesktop.FileManager1"), QStringLiteral("ShowItems"));
    call << QStringList{QUrl::fromLocalFile(path).toString()} << QString();
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        openFolder(path);
        return;
    }
    // Without a file manager on the bus the call comes back as an error.
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call, 3000));
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, watcher,
                     [path](QDBusPendingCallWatcher* finished) {
                         if (finished->isError()) openFolder(path);
                         finished->deleteLater();
                     });
#else
    openFolder(path);
#endif
}
