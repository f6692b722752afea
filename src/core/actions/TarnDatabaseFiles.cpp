#include "actions/TarnDatabaseFiles.h"

#include <QDirIterator>
#include <QFileInfo>

#include <algorithm>

#include "actions/TarnActionOperation.h"
#include "database/TarnScanner.h"
#include "log/xConsole.h"

namespace {

TarnItemPtr itemForFile(const TarnDatabaseFiles::Entry& file) {
    auto item = std::make_shared<TarnDatabaseItem>();
    item->DB_itemPath = file.path;
    item->DB_filesize = quint64(std::max<qint64>(0, file.size));
    item->DB_FileExists = true;
    return item;
}

}  // namespace

QStringList TarnDatabaseFiles::fileNames() {
    return {QStringLiteral("msmMMOB.mdb"), QStringLiteral("msmFMID.pmr"),
            QStringLiteral("amaMMOB.mdb"), QStringLiteral("amaFMID.pmr")};
}

bool TarnDatabaseFiles::isDatabaseFileName(const QString& name) {
    // Volumes formatted on a Mac usually ignore case, so the names may come in any.
    for (const QString& known : fileNames())
        if (name.compare(known, Qt::CaseInsensitive) == 0) return true;
    return false;
}

QList<TarnDatabaseFiles::Entry> TarnDatabaseFiles::list(const QStringList& volumes) {
    QList<Entry> found;
    const QStringList roots = TarnScanner::rootsFor(TarnScanner::Kind::AllVolumes, volumes);
    for (const QString& root : roots) {
        if (!QFileInfo(root).isDir()) continue;
        // Names only: the walk never opens a file, and follows no link out of the volume.
        QDirIterator it(root, QDir::Files | QDir::Hidden | QDir::System,
                        QDirIterator::Subdirectories);
        while (it.hasNext()) {
            it.next();
            const QFileInfo info = it.fileInfo();
            if (!isDatabaseFileName(info.fileName())) continue;
            Entry entry;
            entry.path = info.absoluteFilePath();
            entry.folder = info.absolutePath();
            entry.fileName = info.fileName();
            entry.size = info.size();
            entry.date = info.lastModified();
            found.append(entry);
        }
    }
    std::sort(found.begin(), found.end(),
              [](const Entry& a, const Entry& b) { return a.path < b.path; });
    // Two roots of one volume can hold the same folder (a link): list it once.
    found.erase(std::unique(found.begin(), found.end(),
                            [](const Entry& a, const Entry& b) { return a.path == b.path; }),
                found.end());
    return found;
}

QList<TarnDatabaseFiles::Entry> TarnDatabaseFiles::listMountedVolumes() {
    return list(TarnScanner::mountedVolumes());
}

QString TarnDatabaseFiles::confirmationText(qsizetype count) {
    return count == 1 ? QStringLiteral("Really delete 1 database file?")
                      : QStringLiteral("Really delete %1 database files?").arg(count);
}

QString TarnDatabaseFiles::confirmationDetail() {
    return QStringLiteral(
        "The files go to the Trash. The editing system builds new ones from the media "
        "the next time it opens the folders.");
}

TarnActionOptions TarnDatabaseFiles::deleteOptions(const QList<Entry>& files) {
    TarnActionOptions options;
    options.Action = TarnActionOptions::deleteWord();
    options.Destination = QString();
    options.Im_sure = true;
    QList<TarnItemPtr> items;
    items.reserve(files.size());
    for (const Entry& file : files) {
        items.append(itemForFile(file));
        // The engine acts only inside media folders it was given: here the
        // folders that hold the listed files.
        if (!options.mediaFolderRoots.contains(file.folder))
            options.mediaFolderRoots.append(file.folder);
    }
    options.items = items;
    return options;
}

TarnDatabaseFiles::Result TarnDatabaseFiles::moveToTrash(const QList<Entry>& files) {
    Result result;
    QList<Entry> present;
    for (const Entry& file : files) {
        if (QFileInfo::exists(file.path)) {
            present.append(file);
            continue;
        }
        ++result.missing;
        TARN_LOG(QStringLiteral("Database file missing, skipped: %1").arg(file.path));
    }
    if (present.isEmpty()) return result;
    const TarnActionOptions options = deleteOptions(present);
    TarnActionOperation operation(options);
    operation.start();
    for (const TarnItemPtr& item : *options.items)
        if (!item->DB_FileExists) ++result.deleted;
    result.failed = int(operation.filesFailed());
    result.actionLog = operation.actionLog();
    xConsole::xPrint(result.actionLog);
    return result;
}
