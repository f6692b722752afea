#include "actions/TarnExternalHandoff.h"

#include <QFileInfo>
#include <QStandardPaths>

#include <algorithm>

#include "database/TarnCore.h"
#include "support/TarnDesktopEntry.h"

QStringList TarnExternalHandoff::existingPaths(const TarnCore& core, QList<qsizetype> rows) {
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    QStringList paths;
    for (qsizetype row : rows) {
        const QString path = core.getExistentURLatIndex(row);
        if (!path.isEmpty() && QFileInfo::exists(path)) paths.append(path);
    }
    return paths;
}

QStringList TarnExternalHandoff::existingPathsOfItems(const QList<TarnItemPtr>& items) {
    QStringList paths;
    for (const TarnItemPtr& item : items) {
        if (!item || !item->DB_FileExists || item->DB_itemPath.isEmpty()) continue;
        if (QFileInfo::exists(item->DB_itemPath)) paths.append(item->DB_itemPath);
    }
    return paths;
}

QString TarnExternalHandoff::clipboardText(const QStringList& paths) {
    return paths.join(QLatin1Char('\r'));
}

bool TarnExternalHandoff::openCommands(const QString& application, const QStringList& paths,
                                       QList<Launch>* launches) {
    launches->clear();
    const QString name = application.trimmed();
    if (name.isEmpty()) return false;
#ifdef Q_OS_MACOS
    // `open` finds the application by its bundle identifier (and fails when
    // there is none: the caller watches its exit status).
    launches->append(
        {QStringLiteral("/usr/bin/open"), QStringList{QStringLiteral("-b"), name} + paths});
    return true;
#else
    QList<QStringList> lines;
    const QString entryPath = TarnDesktopEntry::locate(name);
    TarnDesktopEntry entry;
    if (!entryPath.isEmpty() && entry.load(entryPath)) {
        lines = entry.commandLines(paths);
    } else {
        // A command line of its own: the files go at its end.
        bool ok = false;
        QStringList words = TarnDesktopEntry::splitExec(name, &ok);
        if (!ok) return false;
        lines.append(words + paths);
    }
    for (const QStringList& line : lines) {
        if (line.isEmpty()) return false;
        const QString program =
            line.first().contains(QLatin1Char('/'))
                ? (QFileInfo(line.first()).isExecutable() ? line.first() : QString())
                : QStandardPaths::findExecutable(line.first());
        if (program.isEmpty()) return false;
        launches->append({program, line.mid(1)});
    }
    return !launches->isEmpty();
#endif
}

TarnExternalHandoff::Launch TarnExternalHandoff::scriptCommand(const QString& script,
                                                               const QStringList& paths) {
#ifdef Q_OS_MACOS
    // One -e per line; the paths reach the script's run handler as argv.
    QStringList arguments;
    for (const QString& line : script.split(QLatin1Char('\n')))
        arguments << QStringLiteral("-e") << line;
    return {QStringLiteral("/usr/bin/osascript"), arguments + paths};
#else
    // "$0" is "tarn", "$@" the paths.
    return {QStringLiteral("/bin/sh"),
            QStringList{QStringLiteral("-c"), script, QStringLiteral("tarn")} + paths};
#endif
}
