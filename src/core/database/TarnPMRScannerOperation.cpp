#include "database/TarnPMRScannerOperation.h"

#include <QSet>

#include <fcntl.h>
#include <unistd.h>
#include <optional>
#include <utility>

#include "database/TarnCore.h"
#include "database/TarnFolderReader.h"
#include "items/TarnDatabaseItem.h"
#include "items/TarnVocabulary.h"
#include "log/xConsole.h"
#include "readers/PMRFile.h"
#include "readers/TarnMediafile.h"
#include "status/TarnStatusViewController.h"
#include "support/TarnFileName.h"
#include "support/TarnPreferences.h"

namespace {
// Above this many entries a media folder slows the editing system down.
constexpr qsizetype kLargeFolder = 4001;

// The media folder held open while its files are looked up by name.
class FolderHandle {
  public:
    explicit FolderHandle(const QString& folder)
        : fd_(::open(TarnFileName::encode(folder).constData(),
                     O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {}
    ~FolderHandle() {
        if (fd_ >= 0) ::close(fd_);
    }
    FolderHandle(const FolderHandle&) = delete;
    FolderHandle& operator=(const FolderHandle&) = delete;
    int fd() const { return fd_; }

  private:
    int fd_;
};
}  // namespace

TarnPMRScannerOperation::TarnPMRScannerOperation() {
    setAutoDelete(false);
    TarnDatabaseItem::setOwnFileReader(&TarnMediafile::readItemsOwnFile);
}

void TarnPMRScannerOperation::setCompressionStringForItem(TarnDatabaseItem* item) const {
    if (!item) return;
    if (core_) {
        item->DB_CompressionString = core_->vocabulary().compressionText(*item);
    } else {
        item->DB_CompressionString = TarnVocabulary().compressionText(*item);
    }
}

struct TarnPMRScannerOperation::FolderScan {
    QString folder;
    QString base;  // the folder and a slash
    TarnStatusWheel* wheel = nullptr;
    std::unique_ptr<TarnMediafile> mdb;
    quint64 compositions = 0;
    // The names on disk that the index accounts for.
    // Views into the items' paths (kept in `result` until the folder is
    // done) and into static texts: no name is copied.
    QSet<QStringView> accounted{u"msmMMOB.mdb", u"amaMMOB.mdb", u"msmFMID.pmr", u"amaFMID.pmr",
                                u"Creating"};
    QList<TarnItemPtr> result;
    QString lastProject;
    std::optional<std::pair<std::pair<quint32, quint32>, QString>> lastCompression;
};

// The items of a folder mostly belong to one project: they share one copy of
// its name (a null or empty name is kept as it is, the two differ).
void TarnPMRScannerOperation::shareProjectName(FolderScan& scan, QString& project) {
    if (project.isEmpty()) return;
    if (project == scan.lastProject) {
        project = scan.lastProject;
    } else {
        scan.lastProject = project;
    }
}

namespace {

// The wheel counts down the media database's compositions while the index is
// read, or spins when there is no count.
void startWheel(TarnStatusWheel* wheel, quint64 compositions) {
    if (!wheel) return;
    if (compositions != 0) {
        wheel->setIndeterminate(false);
        wheel->setDoubleValue(0);
        wheel->setMaxValue(double(compositions));
    } else {
        wheel->setIndeterminate(true);
        wheel->startAnimation();
    }
}

void spinWheel(TarnStatusWheel* wheel) {
    if (!wheel) return;
    wheel->setIndeterminate(true);
    wheel->startAnimation();
    wheel->setDoubleValue(0);
    wheel->setMaxValue(100);
}

}  // namespace

void TarnPMRScannerOperation::main() {
    if (!core_ || !coreLock_ || pmrURL_.isEmpty()) return;
    auto* status = TarnStatusViewController::getTheController();
    FolderScan scan;
    scan.wheel = status->Status_GetProgressWheel();
    const qsizetype slash = pmrURL_.lastIndexOf(QLatin1Char('/'));
    scan.folder = slash >= 0 ? pmrURL_.left(slash) : QStringLiteral(".");
    scan.base = scan.folder + QLatin1Char('/');

    openMediaDatabase(scan);
    startWheel(scan.wheel, scan.compositions);

    PMRFile pmr;
    pmr.dataWithContentsOfURL(pmrURL_);
    if (pmr.ItemsCount() == 0) {
        TARN_LOG(QStringLiteral("**** Warning **** can't open %1").arg(pmrURL_));
        return;
    }

    const FolderHandle folderHandle(scan.folder);
    QList<TarnFolderReader::Entry> entries = std::move(folderEntries_);
    if (!hasFolderEntries_) TarnFolderReader::list(scan.folder, entries);
    if (entries.size() >= kLargeFolder) {
        TARN_LOG(QStringLiteral("**** Warning **** %1 contains %2 files")
                     .arg(scan.folder)
                     .arg(quint64(entries.size())));
    }
    scan.accounted.reserve(entries.size() + 8);
    scan.result.reserve(entries.size());

    const quint32 counter = addIndexedItems(scan, pmr, folderHandle.fd());
    spinWheel(scan.wheel);
    if (counter != pmr.ItemsCount()) {
        TARN_LOG(QStringLiteral("Error:: PMR ::%1").arg(pmrURL_));
        TARN_LOG(QStringLiteral("Error:: PMR ::%1").arg(TarnFileName::urlText(pmrURL_)));
        TARN_LOG(QString::asprintf("Item :: %08x of %08x ", counter, pmr.ItemsCount()));
    }
    addUnlistedFiles(scan, entries, folderHandle.fd());

    std::lock_guard<std::mutex> guard(*coreLock_);
    core_->AddItemsFromArray(scan.result);
    status->Status_DeleteProgressWheel(scan.wheel);
}

// The folder's media database completes the items (names in bins,
// compressions, rates) when the user wants it read.
void TarnPMRScannerOperation::openMediaDatabase(FolderScan& scan) const {
    if (TarnPreferences::shared()->integer(QLatin1String(TarnPreferences::kScanMDB)) != 1) return;
    QString mdbPath = scan.base + QLatin1String("msmMMOB.mdb");
    if (!TarnFolderReader::exists(mdbPath)) mdbPath = scan.base + QLatin1String("amaMMOB.mdb");
    if (!TarnFolderReader::exists(mdbPath)) return;
    TarnStatusViewController::getTheController()->Status_SetTextWithString(mdbPath);
    scan.mdb = std::make_unique<TarnMediafile>();
    scan.mdb->openFile(mdbPath, scan.wheel);
    scan.compositions = scan.mdb->getMDBCompositionsCount();
}

// One item per index entry; returns how many the index gave.
quint32 TarnPMRScannerOperation::addIndexedItems(FolderScan& scan, PMRFile& pmr,
                                                 int folderFd) const {
    quint32 counter = 0;
    while (TarnItemPtr item = pmr.FillItem(std::make_shared<TarnDatabaseItem>())) {
        item->placeInFolder(scan.folder, folderFd);
        // The name on disk is accounted for: the last component of the path's
        // URL text with the escapes removed, which TarnFileName::urlText's
        // round trip gives back exactly ("a%41b.wav" stays "a%41b.wav"). An
        // AMA link's path now ends in ".aaf": that name is accounted for too.
        const QString& path = item->DB_itemPath;
        scan.accounted.insert(QStringView(path).mid(path.lastIndexOf(QLatin1Char('/')) + 1));
        ++counter;
        if (scan.wheel && scan.compositions != 0)
            scan.wheel->setDoubleValue(double(scan.compositions) - counter);
        if (item->DB_isAMA) {
            TarnMediafile link;
            link.openFile(item->DB_itemPath, scan.wheel);
        }
        if (scan.mdb) {
            completeFromMediaDatabase(scan, item.get());
        } else if (item->DB_FileExists && item->DB_NameInBin.isEmpty()) {
            item->addinfoToItemFromCorrespondingFile();
        }
        shareProjectName(scan, item->DB_ProjectName);
        scan.result.append(std::move(item));
    }
    return counter;
}

// Files of the folder that the index does not list.
void TarnPMRScannerOperation::addUnlistedFiles(FolderScan& scan,
                                               const QList<TarnFolderReader::Entry>& entries,
                                               int folderFd) const {
    for (const auto& entry : entries) {
        if (entry.isDir || scan.accounted.contains(QStringView(entry.name))) continue;
        auto item = std::make_shared<TarnDatabaseItem>();
        item->setupWithUnrefFile(scan.folder, entry.name);
        item->validatePathAt(folderFd, entry.name);
        if (scan.mdb) completeFromMediaDatabase(scan, item.get());
        scan.result.append(std::move(item));
    }
}

void TarnPMRScannerOperation::completeFromMediaDatabase(FolderScan& scan,
                                                        TarnDatabaseItem* item) const {
    scan.mdb->addInfoToItem(item);
    if (item->isAudio()) {
        item->DB_CompressionString = QStringLiteral("Audio");
        return;
    }
    // The text follows from the code and the resolution alone, and the
    // items of a folder mostly share both.
    const auto key = std::make_pair(item->compressionCode(), item->DB_DIDResolutionID);
    if (!scan.lastCompression || scan.lastCompression->first != key) {
        setCompressionStringForItem(item);
        scan.lastCompression = std::make_pair(key, item->DB_CompressionString);
    } else {
        item->DB_CompressionString = scan.lastCompression->second;
    }
}
