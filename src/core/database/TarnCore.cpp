#include "database/TarnCore.h"

#include <QFileInfo>
#include <QUrl>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "database/TarnFilter.h"
#include "database/TarnFolderReader.h"
#include "database/TarnItemComparator.h"
#include "database/TarnPMRScannerOperation.h"
#include "database/TarnScannerQueue.h"
#include "items/TarnRBTree.h"
#include "items/TarnVocabulary.h"
#include "log/xConsole.h"
#include "readers/AVBFile.h"
#include "readers/TarnMediafile.h"
#include "status/TarnStatusViewController.h"
#include "support/TarnFileName.h"
#include "support/TarnPreferences.h"

namespace {

std::mutex hookLock;
TarnCore::FatalErrorHook& fatalHook() {
    static TarnCore::FatalErrorHook hook;
    return hook;
}

int showOnlyExistingFiles() {
    return TarnPreferences::shared()->integer(
        QLatin1String(TarnPreferences::kShowOnlyExistingFiles));
}

// Only exactly 0 shows the items whose file is missing, and only exactly 1
// sorts the rows that are not shown last: any other stored value does neither.
bool missingFilesShown() {
    return showOnlyExistingFiles() == 0;
}
bool invalidRowsSortLast() {
    return showOnlyExistingFiles() == 1;
}

// The item's project name as get_DB_ProjectName gives it, without a copy:
// the passes over every item stay clear of the name's reference count.
const QString& projectNameOf(const TarnDatabaseItem& item) {
    static const QString nullName = TarnDatabaseItem::GetProjectNameNull();
    static const QString emptyName = TarnDatabaseItem::GetProjectNameEmpty();
    if (item.DB_ProjectName.isNull()) return nullName;
    if (item.DB_ProjectName.isEmpty()) return emptyName;
    return item.DB_ProjectName;
}

// Only index files and AAF files do anything in AddFile_TypeSelector; the
// walk skips building paths for the media files around them.
bool dispatchesByExtension(const QString& name) {
    return TarnFileName::hasExtension(name, QLatin1String("pmr")) ||
           TarnFileName::hasExtension(name, QLatin1String("aaf"));
}

QString lastComponent(const QString& path) {
    QString p = path;
    while (p.size() > 1 && p.endsWith(QLatin1Char('/'))) p.chop(1);
    return p.mid(p.lastIndexOf(QLatin1Char('/')) + 1);
}

// Equal texts, as QString's == has them, without its general comparison:
// the passes over every item compare project names item by item.
bool sameText(const QString& a, const QString& b) {
    return a.size() == b.size() &&
           (a.constData() == b.constData() ||
            std::memcmp(a.constData(), b.constData(), size_t(a.size()) * sizeof(QChar)) == 0);
}

// A project by name, for passes over every item: items of one folder come
// together and mostly share a project, so the last name found is tried
// before the table. Names must outlive the pass (they are the items' own).
auto projectLookup(const QHash<QString, TarnProjectPtr>& projects) {
    return [&projects, lastName = static_cast<const QString*>(nullptr),
            lastProject =
                static_cast<TarnProject*>(nullptr)](const QString& name) mutable -> TarnProject* {
        if (lastName && sameText(name, *lastName)) return lastProject;
        const auto found = projects.constFind(name);
        if (found == projects.constEnd()) return nullptr;
        lastName = &name;
        lastProject = found->get();
        return lastProject;
    };
}

}  // namespace

TarnCore::TarnCore(TarnScannerQueue* queue)
    : queue_(queue ? queue : TarnScannerQueue::shared()),
      vocabulary_(std::make_unique<TarnVocabulary>()) {
    TarnDatabaseItem::setOwnFileReader(&TarnMediafile::readItemsOwnFile);
    try {
        items_.reserve(1024);
    } catch (const std::bad_alloc&) {
        broken_ = true;
    }
    TarnFilter::sharedFilter()->ResetFilter();
    if (broken_) fatalError(QStringLiteral("Tarn error DB-001"));
}

TarnCore::~TarnCore() = default;

TarnCore* TarnCore::sharedCore() {
    static TarnCore* core = new TarnCore();
    return core;
}

void TarnCore::setFatalErrorHook(FatalErrorHook hook) {
    std::lock_guard<std::mutex> guard(hookLock);
    fatalHook() = std::move(hook);
}

void TarnCore::fatalError(const QString& title) {
    const QString message = QStringLiteral("Something is wrong with DB\nRestart the app.");
    FatalErrorHook hook;
    {
        std::lock_guard<std::mutex> guard(hookLock);
        hook = fatalHook();
    }
    // The library never ends the process: the command-line tool and the app
    // install a hook that does (after printing or showing the message).
    // Without one the text goes to the log and stderr, and the database stays
    // marked broken.
    if (hook) {
        hook(title, message);
        return;
    }
    TARN_LOG(title + QLatin1Char(' ') + message);
    std::fprintf(stderr, "%s\n%s\n", qPrintable(title), qPrintable(message));
}

void TarnCore::clear() {
    if (broken_) fatalError(QStringLiteral("Tarn error DB-003"));
    {
        std::lock_guard<std::mutex> guard(coreLock_);
        items_.clear();
        invalidateCaches();
    }
    {
        std::lock_guard<std::mutex> guard(rootsLock_);
        mediaFolderRoots_.clear();
    }
    sortedFiltered_.clear();
    sorted_.clear();
    emit previewCleared();
    filteredSize_ = 0;
    projects_.clear();
    projectByName_.clear();
    invalidateCaches();
    TarnFilter::sharedFilter()->ResetFilter();
}

void TarnCore::AddFile(const QString& location) {
    QString path = location;
    if (path.startsWith(QLatin1String("file:"))) {
        path = TarnFileName::pathFromUrlText(location);
    } else if (path.contains(QLatin1String("://"))) {
        return;  // not a file
    }
    if (path.isEmpty()) return;

    const bool folder = TarnFolderReader::isFolder(path);
    // A picked index file scans its folder: that folder is the root.
    if (folder ||
        TarnFileName::extension(path).compare(QLatin1String("pmr"), Qt::CaseInsensitive) == 0) {
        const QString root = folder ? path : QFileInfo(path).path();
        std::lock_guard<std::mutex> guard(rootsLock_);
        if (!mediaFolderRoots_.contains(root)) mediaFolderRoots_.append(root);
    }
    if (!folder) {
        AddFile_TypeSelector(path);
        return;
    }
    walkFolder(path);
}

QStringList TarnCore::mediaFolderRoots() const {
    std::lock_guard<std::mutex> guard(rootsLock_);
    return mediaFolderRoots_;
}

// Depth first, each folder reported before its contents, like the file
// manager's deep enumeration.
void TarnCore::walkFolder(const QString& root) {
    auto* status = TarnStatusViewController::getTheController();
    QList<QString> stack{root};
    QList<TarnFolderReader::Entry> entries;
    QList<QString> subfolders;
    QList<QString> indexFiles;
    while (!stack.isEmpty()) {
        const QString folder = stack.takeLast();
        QString base = folder;
        if (!base.endsWith(QLatin1Char('/'))) base += QLatin1Char('/');
        if (folder != root) {
            status->Status_SetTextWithString(folder);
            // Folders of media being created are left alone.
            const bool creating =
                lastComponent(folder).compare(QLatin1String("creating"), Qt::CaseInsensitive) == 0;
            if (!creating && !TarnFolderReader::exists(base + QLatin1String("msmMMOB.mdb")) &&
                !TarnFolderReader::exists(base + QLatin1String("amaMMOB.mdb"))) {
                TARN_LOG(
                    QStringLiteral("MDB :: doesn't exist in::%1").arg(TarnFileName::urlText(base)));
            }
        }
        QString error;
        if (!TarnFolderReader::list(folder, entries, &error)) {
            TARN_LOG(QStringLiteral("An error occurred: %1: %2").arg(folder, error));
            continue;
        }
        // Sub-folders are pushed in reverse so that they come off in name order.
        // A link to a folder is not followed: its files would be found twice
        // (or without end, through a link to an ancestor); a link to a file
        // is a file.
        subfolders.clear();
        indexFiles.clear();
        for (const auto& entry : std::as_const(entries)) {
            if (entry.isDir && entry.isLink) continue;
            if (entry.isDir) {
                subfolders.append(base + entry.name);
            } else if (dispatchesByExtension(entry.name)) {
                indexFiles.append(base + entry.name);
            }
        }
        if (!indexFiles.isEmpty()) {
            // The operations take this listing rather than reading the folder
            // a second time. The walk lets go of it: a list still shared with
            // an operation on another thread is never cleared in place.
            for (const QString& path : std::as_const(indexFiles)) dispatchFile(path, &entries);
            entries = QList<TarnFolderReader::Entry>();
        }
        std::sort(subfolders.begin(), subfolders.end());
        for (auto it = subfolders.crbegin(); it != subfolders.crend(); ++it) stack.append(*it);
    }
}

void TarnCore::AddFile_TypeSelector(const QString& path) {
    dispatchFile(path, nullptr);
}

void TarnCore::dispatchFile(const QString& path,
                            const QList<TarnFolderReader::Entry>* folderEntries) {
    auto* status = TarnStatusViewController::getTheController();
    if (TarnFileName::hasExtension(path, QLatin1String("pmr"))) {
        status->Status_SetTextWithString(path);
        auto* operation = new TarnPMRScannerOperation();
        operation->setCore(this);
        operation->setCoreLock(&coreLock_);
        operation->setPmrURL(path);
        if (folderEntries) operation->setFolderEntries(*folderEntries);
        queue_->addOperation(operation);
    } else if (TarnFileName::hasExtension(path, QLatin1String("aaf"))) {
        status->Status_SetTextWithString(path);
    }
    // Media files come in through the index of their folder, never one by one.
}

void TarnCore::AddItem(const TarnItemPtr& item) {
    if (!item) return;
    items_.append(item);
    invalidateCaches();
}

void TarnCore::AddItemsFromArray(const QList<TarnItemPtr>& items) {
    if (!broken_) {
        try {
            // Appends grow the array geometrically; an exact reserve per
            // folder would copy the whole database for every folder.
            for (const auto& item : items) {
                if (item) items_.append(item);
            }
            invalidateCaches();
            return;
        } catch (const std::bad_alloc&) {
            broken_ = true;
        }
    }
    fatalError(QStringLiteral("Tarn error DB-002"));
}

bool TarnCore::uniqueEqual(const TarnItemPtr& a, const TarnItemPtr& b) {
    if (!a->isEqual(b.get())) return false;
    TARN_LOG(QStringLiteral(
                 "**** Warning **** comparing items ::EQ item found \n:: %1 is equal to :: %2")
                 .arg(a->DB_itemPath, b->DB_itemPath));
    return true;
}

bool TarnCore::uniqueLess(const TarnItemPtr& a, const TarnItemPtr& b) {
    if (a->isEqualByUUID(b.get())) {
        if (a->DB_itemPath.isNull()) return false;
        return QString::compare(a->DB_itemPath, b->DB_itemPath, Qt::CaseSensitive) < 0;
    }
    return a->isLessByUUID(b.get());
}

quint64 TarnCore::identifierOrder(const TarnDatabaseItem& item) {
    quint32 a, b;
    std::memcpy(&a, item.filePackageUID + 16, 4);
    std::memcpy(&b, item.filePackageUID + 20, 4);
    return (quint64(a) << 32) | b;
}

// Keeps the first item of each identifier and path, in the order of
// identifier and path. When every item has a path the rules are a total
// order, and a sort of positions gives what the tree gives; an item without a
// path makes the outcome depend on the tree's shape, so the tree decides.
void TarnCore::makeUnique() {
    std::vector<quint64> order(size_t(items_.size()));
    bool everyPath = true;
    for (qsizetype i = 0; i < items_.size(); ++i) {
        order[size_t(i)] = identifierOrder(*items_[i]);
        everyPath = everyPath && !items_[i]->DB_itemPath.isNull();
    }
    if (items_.isEmpty()) return;
    if (everyPath) {
        keepFirstOfEach(order);
    } else {
        keepFirstOfEachInTree(order);
    }
}

void TarnCore::keepFirstOfEach(const std::vector<quint64>& order) {
    std::vector<quint32> positions(order.size());
    for (size_t i = 0; i < positions.size(); ++i) positions[i] = quint32(i);
    std::sort(positions.begin(), positions.end(), [&](quint32 a, quint32 b) {
        if (order[a] != order[b]) return order[a] < order[b];
        const int c =
            QString::compare(items_[a]->DB_itemPath, items_[b]->DB_itemPath, Qt::CaseSensitive);
        return c != 0 ? c < 0 : a < b;
    });
    // A repeat follows the first of its kind; it is logged as the tree would,
    // in the order the items were found.
    std::vector<std::pair<quint32, quint32>> repeats;  // the repeat, its first
    std::vector<quint32> firsts;
    firsts.reserve(positions.size());
    quint32 first = 0;
    for (size_t k = 0; k < positions.size(); ++k) {
        const quint32 i = positions[k];
        if (k > 0 && order[i] == order[first] &&
            items_[i]->DB_itemPath == items_[first]->DB_itemPath) {
            repeats.emplace_back(i, first);
            continue;
        }
        first = i;
        firsts.push_back(i);
    }
    std::sort(repeats.begin(), repeats.end());
    for (const auto& [repeat, original] : repeats) uniqueEqual(items_[repeat], items_[original]);
    // The kept items move over; the list is replaced whole.
    QList<TarnItemPtr> kept;
    kept.reserve(qsizetype(firsts.size()));
    for (const quint32 i : firsts) kept.append(std::move(items_[i]));
    items_ = std::move(kept);
    invalidateCaches();
}

// The tree holds positions; the identifiers are read from one contiguous
// array, and the items themselves are touched only when identifiers tie.
void TarnCore::keepFirstOfEachInTree(const std::vector<quint64>& order) {
    TarnRBTree<quint32> tree;
    tree.setEQBlock([&](const quint32& a, const quint32& b) {
        return order[a] == order[b] && uniqueEqual(items_[a], items_[b]);
    });
    tree.setLTBlock([&](const quint32& a, const quint32& b) {
        if (order[a] != order[b]) return order[a] < order[b];
        return uniqueLess(items_[a], items_[b]);
    });
    for (qsizetype i = 0; i < items_.size(); ++i) tree.TreeInsertNode(quint32(i));
    if (tree.TreeNodeCount() == 0) return;
    if (auto unique = tree.Tree_v2_GetNonEqDataArray()) {
        QList<TarnItemPtr> kept;
        kept.reserve(qsizetype(unique->size()));
        for (const quint32 i : *unique) kept.append(items_[i]);
        items_ = std::move(kept);
        invalidateCaches();
    }
}

void TarnCore::ValidateAllItems() {
    if (items_.isEmpty()) return;
    const bool showMissing = missingFilesShown();
    const auto filter = TarnFilter::sharedFilter()->snapshot();
    for (const auto& item : std::as_const(items_)) {
        bool valid = false;
        if (filter.itemPassFilter(item.get())) {
            valid = item->DB_isValid_initial;
            if (!item->DB_FileExists && showMissing) valid = true;
        }
        item->DB_isValid = valid;
    }
}

void TarnCore::LoadDefaults() {
    TarnFilter::sharedFilter()->ResetFilter();
    ValidateAllItems();
    SortDefault();
    prepareProjectsSummary();
    setFilterFlagProjects(true);
    applyFilter();
    emit deselectAllRows();
}

QString TarnCore::getExistentURLatIndex(qsizetype row) const {
    const TarnItemPtr item = ObjectAtIndexFiltered(row);
    if (!item || !item->DB_FileExists) return QString();
    return item->DB_itemPath;
}

void TarnCore::applyFilter() {
    if (items_.isEmpty() || sorted_.isEmpty()) return;
    sortedFiltered_.clear();
    filteredSize_ = 0;
    const auto filter = TarnFilter::sharedFilter()->snapshot();
    if (!projectCacheValid_) refreshProjectCache();
    for (const quint32 index : std::as_const(sorted_)) {
        const TarnDatabaseItem* item = items_.at(index).get();
        if (!item->DB_isValid) continue;
        const TarnProject* project = projectOf_[index];
        if (!project || !project->mustBeShownInList || !filter.itemPassFilter(item)) continue;
        sortedFiltered_.append(index);
        filteredSize_ += item->DB_filesize.value_or(0);
    }
}

void TarnCore::invalidateCaches() {
    projectCacheValid_ = false;
    dateKeysValid_ = false;
    identifierTree_.reset();
}

void TarnCore::refreshProjectCache() {
    projectOf_.assign(size_t(items_.size()), nullptr);
    if (!projectByName_.isEmpty()) {
        auto lookup = projectLookup(projectByName_);
        for (qsizetype i = 0; i < items_.size(); ++i)
            projectOf_[size_t(i)] = lookup(projectNameOf(*items_[i]));
    }
    projectCacheValid_ = true;
}

void TarnCore::applyFilter(const QList<TarnItemPtr>& binItems) {
    applySetOperation(binItems, SetOperation::Intersect);
}

void TarnCore::applyFilterSubtract(const QList<TarnItemPtr>& binItems) {
    applySetOperation(binItems, SetOperation::Subtract);
}

void TarnCore::applyFilterAdd(const QList<TarnItemPtr>& binItems) {
    applySetOperation(binItems, SetOperation::Add);
}

// Positions in sort order, keyed by identifier; kProbe stands for the bin
// item being looked up. Kept until the items change.
void TarnCore::buildIdentifierTree() {
    identifierOrder_.resize(size_t(items_.size()));
    for (qsizetype i = 0; i < items_.size(); ++i)
        identifierOrder_[size_t(i)] = identifierOrder(*items_[i]);
    auto orderOf = [this](quint32 i) { return i == kProbe ? probeOrder_ : identifierOrder_[i]; };
    identifierTree_ = std::make_unique<TarnRBTree<quint32>>();
    identifierTree_->setEQBlock(
        [orderOf](const quint32& a, const quint32& b) { return orderOf(a) == orderOf(b); });
    identifierTree_->setLTBlock(
        [orderOf](const quint32& a, const quint32& b) { return orderOf(a) < orderOf(b); });
    for (const quint32 index : std::as_const(sorted_)) identifierTree_->TreeInsertNode(index);
}

// The database goes into a tree ordered by short identifier, so each bin item
// finds all database items of its identifier in logarithmic time.
void TarnCore::applySetOperation(const QList<TarnItemPtr>& binItems, SetOperation operation) {
    if (binItems.isEmpty() || items_.isEmpty()) return;
    const bool showMissing = missingFilesShown();
    const auto filter = TarnFilter::sharedFilter()->snapshot();

    if (!identifierTree_) buildIdentifierTree();
    if (operation == SetOperation::Intersect) {
        for (const quint32 index : std::as_const(sorted_)) items_[index]->DB_isValid = false;
    }

    for (const auto& binItem : binItems) {
        if (!binItem) continue;
        probeOrder_ = identifierOrder(*binItem);
        for (auto* found = identifierTree_->TreefindNode(kProbe); found;
             found = identifierTree_->TreefindNextEQ()) {
            TarnDatabaseItem* item = items_[*found].get();
            if (!filter.itemPassFilter(item)) continue;
            if (operation == SetOperation::Subtract) {
                item->DB_isValid = false;
            } else {
                bool valid = item->DB_isValid_initial;
                if (!item->DB_FileExists && showMissing) valid = true;
                item->DB_isValid = valid;
            }
        }
    }
    applyFilter();
}

void TarnCore::runBinOperation(const QStringList& binPaths, SetOperation operation) {
    if (binPaths.isEmpty()) return;
    QList<TarnItemPtr> combined;
    for (const QString& path : binPaths) {
        AVBFile bin;
        if (!bin.dataWithContentsOfURL(path)) continue;
        const QList<TarnItemPtr> references = bin.getUIDS();
        combined.append(references);
    }
    applySetOperation(combined, operation);
}

void TarnCore::AVBArray_IntersectWith(const QStringList& binPaths) {
    runBinOperation(binPaths, SetOperation::Intersect);
}

void TarnCore::AVBArray_Subtract(const QStringList& binPaths) {
    runBinOperation(binPaths, SetOperation::Subtract);
}

void TarnCore::AVBArray_Add(const QStringList& binPaths) {
    runBinOperation(binPaths, SetOperation::Add);
}

QList<TarnItemPtr> TarnCore::parseAMAfromAVBs(const QStringList& binPaths) {
    QList<TarnItemPtr> combined;
    for (const QString& path : binPaths) {
        AVBFile bin;
        if (!bin.dataWithContentsOfURL(path)) continue;
        combined.append(bin.getAMAUIDS());
    }
    return combined;
}

void TarnCore::setFilterFlagProjects(bool shown) {
    for (const auto& project : std::as_const(projects_)) project->mustBeShownInList = shown;
    applyFilter();
    emit databaseTableReload();
    emit summaryTableReload();
}

void TarnCore::SortDefault() {
    if (items_.isEmpty()) return;
    // A database holds few projects: each gets its rank in the plain text
    // order once, so most comparisons are of two numbers and a file name.
    // The sort moves small records that point into the items, not the items.
    const size_t count = size_t(items_.size());
    std::vector<quint32> projectIds(count, 0);
    std::vector<quint32> rankOfId;
    {
        QHash<QString, quint32> idOf;
        QStringList names;
        // Items of one folder come together and mostly share a project: the
        // last name found is tried before the table.
        const QString* lastName = nullptr;
        quint32 lastId = 0;
        for (size_t i = 0; i < count; ++i) {
            const TarnDatabaseItem* item = items_[qsizetype(i)].get();
            if (!item) continue;
            const QString& name = projectNameOf(*item);
            if (lastName && sameText(name, *lastName)) {
                projectIds[i] = lastId;
                continue;
            }
            auto it = idOf.constFind(name);
            if (it == idOf.cend()) {
                it = idOf.insert(name, quint32(names.size()));
                names.append(name);
            }
            projectIds[i] = it.value();
            lastName = &name;
            lastId = it.value();
        }
        std::vector<quint32> byName(size_t(names.size()));
        for (size_t r = 0; r < byName.size(); ++r) byName[r] = quint32(r);
        std::sort(byName.begin(), byName.end(), [&](quint32 a, quint32 b) {
            return QString::compare(names[a], names[b], Qt::CaseSensitive) < 0;
        });
        rankOfId.resize(byName.size());
        for (size_t r = 0; r < byName.size(); ++r) rankOfId[byName[r]] = quint32(r);
    }
    struct Entry {
        quint32 rank;
        quint32 index;
        bool present;
        quint64 head;  // the name's first four characters, in order
        quint64 next;  // and the four after them
        QStringView clipName;
    };
    std::vector<Entry> entries;
    entries.reserve(count);
    for (size_t i = 0; i < count; ++i) {
        const TarnDatabaseItem* item = items_[qsizetype(i)].get();
        if (!item) {
            entries.push_back({0, quint32(i), false, 0, 0, QStringView()});
            continue;
        }
        const QString& name = item->DB_ClipName;
        entries.push_back(
            {rankOfId[projectIds[i]], quint32(i), true, TarnItemComparator::textHead(name),
             name.size() > 4 ? TarnItemComparator::textHead(QStringView(name).mid(4)) : 0,
             QStringView(name)});
    }
    std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) {
        if (!a.present) return false;
        if (!b.present) return true;
        if (a.rank != b.rank) return a.rank < b.rank;
        if (a.head != b.head) return a.head < b.head;
        if (a.next != b.next) return a.next < b.next;
        return a.clipName.compare(b.clipName, Qt::CaseSensitive) < 0;
    });
    QList<TarnItemPtr> ordered;
    ordered.reserve(items_.size());
    for (const Entry& e : entries) ordered.append(std::move(items_[qsizetype(e.index)]));
    items_ = std::move(ordered);
    invalidateCaches();
    sorted_.resize(items_.size());
    for (qsizetype i = 0; i < items_.size(); ++i) sorted_[i] = quint32(i);
    if (sortedFiltered_.isEmpty()) sortedFiltered_ = sorted_;
}

void TarnCore::sortUsingDescriptors(const QList<TarnSortDescriptor>& descriptors) {
    if (descriptors.isEmpty()) return;
    const bool invalidLast = invalidRowsSortLast();
    // The last descriptor is applied first; four or more apply only the first.
    const qsizetype start = descriptors.size() < 4 ? descriptors.size() - 1 : 0;
    for (qsizetype i = start; i >= 0; --i) {
        const TarnSortDescriptor& d = descriptors.at(i);
        const TarnItemComparator comparator(d.key, d.ascending, invalidLast);
        if (comparator.needsDates() && !dateKeysValid_) {
            dateKeys_ = TarnItemComparator::dateKeys(items_);
            dateKeysValid_ = true;
        }
        comparator.sort(sorted_, items_, &dateKeys_);
    }
}

void TarnCore::prepareProjectsSummary() {
    if (items_.isEmpty()) return;
    for (const auto& project : std::as_const(projects_)) {
        project->SizeValue = 0;
        project->FilesCount = 0;
    }
    // Every item's project is looked up here once, which also fills the
    // project cache of applyFilter.
    const auto filter = TarnFilter::sharedFilter()->snapshot();
    projectOf_.assign(size_t(items_.size()), nullptr);
    auto lookup = projectLookup(projectByName_);
    for (qsizetype i = 0; i < items_.size(); ++i) {
        const TarnDatabaseItem* item = items_[i].get();
        const QString& name = projectNameOf(*item);
        TarnProject* project = lookup(name);
        const bool counted = item->DB_isValid && filter.itemPassFilter(item);
        if (!project) {
            if (!counted) continue;
            project = projectByName_.insert(name, std::make_shared<TarnProject>(name))->get();
        }
        projectOf_[size_t(i)] = project;
        if (!counted) continue;
        project->SizeValue += item->DB_filesize.value_or(0);
        project->FilesCount += 1;
    }
    // A project made for a later item is missed by earlier ones of its name.
    for (qsizetype i = 0; i < items_.size(); ++i) {
        if (projectOf_[size_t(i)]) continue;
        const auto found = projectByName_.constFind(projectNameOf(*items_[i]));
        if (found != projectByName_.constEnd()) projectOf_[size_t(i)] = found->get();
    }
    projectCacheValid_ = true;
    projects_ = projectByName_.values();
    std::sort(projects_.begin(), projects_.end(),
              [](const TarnProjectPtr& a, const TarnProjectPtr& b) {
                  const int c = QString::compare(a->name, b->name, Qt::CaseInsensitive);
                  return c != 0 ? c < 0 : a->name < b->name;
              });
}

TarnItemPtr TarnCore::ObjectAtIndexFiltered(qsizetype row) const {
    if (row < 0 || row >= sortedFiltered_.size()) return nullptr;
    const quint32 index = sortedFiltered_.at(row);
    if (index >= quint32(items_.size())) return nullptr;
    return items_.at(index);
}

TarnProjectPtr TarnCore::projectAtIndex(qsizetype row) const {
    if (row < 0 || row >= projects_.size()) return nullptr;
    return projects_.at(row);
}
