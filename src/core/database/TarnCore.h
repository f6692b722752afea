#pragma once

#include <QHash>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "database/TarnFolderReader.h"
#include "database/TarnProject.h"
#include "database/TarnSortDescriptor.h"
#include "items/TarnDatabaseItem.h"
#include "items/TarnRBTree.h"

class TarnScannerQueue;
class TarnVocabulary;

// The media database: every item that scanning found, the sort order, the
// rows the view shows (sorted and filtered), the project summary and the
// vocabulary tables that name compressions and rates.
//
// Scanner operations append under `theCoreLock()`; everything else (duplicate
// removal, validation, sorting, filtering, set operations) runs on one thread
// at a time once the scanner queue has drained. Views follow the database
// through the signals, connected queued (or blocking-queued where a view must
// be up to date before the database goes on).
class TarnCore : public QObject {
    Q_OBJECT
  public:
    // Receives "Tarn error DB-00x" and "Something is wrong with DB\nRestart the
    // app." when the item storage fails; the program shows them and ends.
    using FatalErrorHook = std::function<void(const QString& title, const QString& message)>;

    // Private databases are for tests and tools; the program uses sharedCore().
    explicit TarnCore(TarnScannerQueue* queue = nullptr);
    ~TarnCore() override;

    static TarnCore* sharedCore();
    static void setFatalErrorHook(FatalErrorHook hook);
    static void fatalError(const QString& title);

    std::mutex& theCoreLock() { return coreLock_; }
    const TarnVocabulary& vocabulary() const { return *vocabulary_; }
    TarnScannerQueue* scannerQueue() const { return queue_; }
    // Placeholder text of empty cells.
    static QString novalue() { return QStringLiteral("..."); }

    // --- Contents and scanning
    void clear();
    // A file, or a whole folder tree, into the scan: every media index file
    // found starts a scanner operation on the queue.
    void AddFile(const QString& path);
    // The media folder roots of the scans since the last clear: each folder
    // given to AddFile, or the folder of a file given to it (a picked
    // "msmFMID.pmr"). The actions act only on files inside them.
    QStringList mediaFolderRoots() const;
    void AddFile_TypeSelector(const QString& path);
    void AddItem(const TarnItemPtr& item);
    // Scanner operations call it holding theCoreLock().
    void AddItemsFromArray(const QList<TarnItemPtr>& items);
    // One item per identifier and path; the first found is kept.
    void makeUnique();
    // The rules of that tree. Equal: same identifier and same path (logged as
    // a warning). Less: by identifier, then by path, where only the first
    // item's path is tested for absence, so a second item without a path
    // orders as if its path were empty.
    static bool uniqueEqual(const TarnItemPtr& a, const TarnItemPtr& b);
    static bool uniqueLess(const TarnItemPtr& a, const TarnItemPtr& b);
    void ValidateAllItems();
    // Brings the view up to date after a scan: filter reset, validation,
    // default sort, summary, all projects checked, shown rows.
    void LoadDefaults();
    // The path of a shown row's item when its file exists, else null.
    QString getExistentURLatIndex(qsizetype row) const;

    // --- Filter, sort, summary
    void applyFilter();
    // Set operations with the items of bins, matched by short identifier.
    void applyFilter(const QList<TarnItemPtr>& binItems);  // intersect
    void applyFilterSubtract(const QList<TarnItemPtr>& binItems);
    void applyFilterAdd(const QList<TarnItemPtr>& binItems);
    // Read the bins (".avb" paths) and run the matching operation above.
    void AVBArray_IntersectWith(const QStringList& binPaths);
    void AVBArray_Subtract(const QStringList& binPaths);
    void AVBArray_Add(const QStringList& binPaths);
    // The AMA links of the bins; the database is not changed.
    QList<TarnItemPtr> parseAMAfromAVBs(const QStringList& binPaths);

    void setFilterFlagProjects(bool shown);
    void SortDefault();
    // The first descriptor decides, later ones break ties; of four or more
    // only the first is applied.
    void sortUsingDescriptors(const QList<TarnSortDescriptor>& descriptors);
    void prepareProjectsSummary();

    // --- Counts and rows
    qsizetype getAllItemsCount() const { return items_.size(); }
    qsizetype getItemsCountUnfiltered() const { return items_.size(); }
    qsizetype getFilteredIndexesCount() const { return sortedFiltered_.size(); }
    qsizetype getItemsCount() const { return sortedFiltered_.size(); }
    qsizetype getProjectsCount() const { return projects_.size(); }
    TarnItemPtr ObjectAtIndexFiltered(qsizetype row) const;
    TarnProjectPtr projectAtIndex(qsizetype row) const;
    quint64 FilteredItemsSize() const { return filteredSize_; }

    const QList<TarnItemPtr>& ItemsUnsorted() const { return items_; }
    const QList<quint32>& IndexesSorted() const { return sorted_; }
    const QList<quint32>& IndexesSortedFiltered() const { return sortedFiltered_; }
    const QList<TarnProjectPtr>& ProjectsSummaryA() const { return projects_; }

  signals:
    void databaseTableReload();
    void summaryTableReload();
    void deselectAllRows();
    // The table forgets its last item and shows no preview.
    void previewCleared();

  private:
    enum class SetOperation { Intersect, Subtract, Add };
    void applySetOperation(const QList<TarnItemPtr>& binItems, SetOperation operation);
    void runBinOperation(const QStringList& binPaths, SetOperation operation);
    void walkFolder(const QString& root);
    // The two ways of makeUnique (see there).
    void keepFirstOfEach(const std::vector<quint64>& order);
    void keepFirstOfEachInTree(const std::vector<quint64>& order);
    // AddFile_TypeSelector with the listing of the file's folder, when known.
    void dispatchFile(const QString& path, const QList<TarnFolderReader::Entry>* folderEntries);
    // Bytes 16..23 of each item's file package UMID as one number that orders
    // like isLessByUUID (word 16..19, then word 20..23).
    static quint64 identifierOrder(const TarnDatabaseItem& item);
    void refreshProjectCache();
    void invalidateCaches();
    void buildIdentifierTree();
    static constexpr quint32 kProbe = 0xFFFFFFFFu;

    std::mutex coreLock_;
    mutable std::mutex rootsLock_;
    QStringList mediaFolderRoots_;
    TarnScannerQueue* queue_;
    std::unique_ptr<TarnVocabulary> vocabulary_;
    bool broken_ = false;
    QList<TarnItemPtr> items_;
    QList<quint32> sorted_;
    QList<TarnProjectPtr> projects_;
    QHash<QString, TarnProjectPtr> projectByName_;
    // The summary project of each item (or none), valid until the items or
    // the projects change.
    std::vector<TarnProject*> projectOf_;
    bool projectCacheValid_ = false;
    // Dates as milliseconds, for the date sort (local dates convert slowly).
    std::vector<qint64> dateKeys_;
    bool dateKeysValid_ = false;
    // The identifier tree of the set operations.
    std::unique_ptr<TarnRBTree<quint32>> identifierTree_;
    std::vector<quint64> identifierOrder_;
    quint64 probeOrder_ = 0;
    QList<quint32> sortedFiltered_;
    quint64 filteredSize_ = 0;
};
