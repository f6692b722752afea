#pragma once

#include <QList>
#include <QRunnable>
#include <QString>

#include <mutex>

#include "database/TarnFolderReader.h"

class PMRFile;
class TarnCore;
class TarnDatabaseItem;

// Scans one media folder from its file index ("msmFMID.pmr"): one item per
// indexed file, completed from the folder's media database ("msmMMOB.mdb")
// when there is one and "ScanMDB" is on, and one item per file of the folder
// that the index does not list. All items reach the database in one call
// under its lock.
//
// The database and its lock are not owned: the scan that queues the operation
// waits for it before the database goes on.
class TarnPMRScannerOperation : public QRunnable {
  public:
    TarnPMRScannerOperation();

    void setPmrURL(const QString& path) { pmrURL_ = path; }
    QString pmrURL() const { return pmrURL_; }
    void setCore(TarnCore* core) { core_ = core; }
    void setCoreLock(std::mutex* lock) { coreLock_ = lock; }
    // The listing of the index file's folder when the walk that found the
    // index has just read it; without one the operation lists the folder.
    void setFolderEntries(const QList<TarnFolderReader::Entry>& entries) {
        folderEntries_ = entries;
        hasFolderEntries_ = true;
    }

    void run() override { main(); }
    void main();

    // The compression name from the resolution table, else "%c%c%c%c ID:%u"
    // from the four-character code, else none.
    void setCompressionStringForItem(TarnDatabaseItem* item) const;

  private:
    struct FolderScan;

    void openMediaDatabase(FolderScan& scan) const;
    quint32 addIndexedItems(FolderScan& scan, PMRFile& pmr, int folderFd) const;
    void addUnlistedFiles(FolderScan& scan, const QList<TarnFolderReader::Entry>& entries,
                          int folderFd) const;
    void completeFromMediaDatabase(FolderScan& scan, TarnDatabaseItem* item) const;
    static void shareProjectName(FolderScan& scan, QString& project);

    QString pmrURL_;
    TarnCore* core_ = nullptr;
    std::mutex* coreLock_ = nullptr;
    QList<TarnFolderReader::Entry> folderEntries_;
    bool hasFolderEntries_ = false;
};
