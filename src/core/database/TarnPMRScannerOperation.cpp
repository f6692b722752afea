#include "database/TarnPMRScannerOperation.h"

#include <QElapsedTimer>
#include <QSet>

#include <fcntl.h>
#include <unistd.h>

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

void TarnPMRScannerOperation::main() {
    if (!core_ || !coreLock_ || pmrURL_.isEmpty()) return;
    QElapsedTimer timer;
    timer.start();
    auto* status = TarnStatusViewController::getTheController();
    TarnStatusWheel* wheel = status->Status_GetProgressWheel();
    auto* prefs = TarnPreferences::shared();

    const qsizetype slash = pmrURL_.lastIndexOf(QLatin1Char('/'));
    const QString folder = slash >= 0 ? pmrURL_.left(slash) : QStringLiteral(".");
    const QString base = folder + QLatin1Char('/');

    // The folder's media database completes the items (names in bins,
    // compressions, rates) when the user wants it read.
    std::unique_ptr<TarnMediafile> mdb;
    quint64 compositions = 0;
    if (prefs->integer(QLatin1String(TarnPreferences::kScanMDB)) == 1) {
        QString mdbPath = base + QLatin1String("msmMMOB.mdb");
        if (!TarnFolderReader::exists(mdbPath)) mdbPath = base + QLatin1String("amaMMOB.mdb");
        if (TarnFolderReader::exists(mdbPath)) {
            status->Status_SetTextWithString(mdbPath);
            mdb = std::make_unique<TarnMediafile>();
            mdb->openFile(mdbPath, wheel);
            compositions = mdb->getMDBCompositionsCount();
        }
    }
    if (wheel) {
        if (compositions != 0) {
            wheel->setIndeterminate(false);
            wheel->setDoubleValue(0);
            wheel->setMaxValue(double(compositions));
        } else {
            wheel->setIndeterminate(true);
            wheel->startAnimation();
        }
    }

    PMRFile pmr;
    pmr.dataWithContentsOfURL(pmrURL_);
    if (pmr.ItemsCount() == 0) {
        TARN_LOG(QStringLiteral("**** Warning **** can't open %1").arg(pmrURL_));
        return;
    }

    const FolderHandle folderHandle(folder);
    QList<TarnFolderReader::Entry> entries;
    TarnFolderReader::list(folder, entries);
    if (entries.size() >= kLargeFolder) {
        TARN_LOG(QStringLiteral("**** Warning **** %1 contains %2 files")
                     .arg(folder)
                     .arg(quint64(entries.size())));
    }
    QSet<QString> accounted{QStringLiteral("msmMMOB.mdb"), QStringLiteral("amaMMOB.mdb"),
                            QStringLiteral("msmFMID.pmr"), QStringLiteral("amaFMID.pmr"),
                            QStringLiteral("Creating")};
    accounted.reserve(entries.size() + 8);
    QList<TarnItemPtr> result;
    result.reserve(entries.size());

    auto completeFromMdb = [&](TarnDatabaseItem* item) {
        mdb->addInfoToItem(item);
        if (item->isAudio()) {
            item->DB_CompressionString = QStringLiteral("Audio");
        } else {
            setCompressionStringForItem(item);
        }
    };

    quint32 counter = 0;
    while (TarnItemPtr item = pmr.FillItem(std::make_shared<TarnDatabaseItem>())) {
        item->placeInFolder(folder, folderHandle.fd());
        // The name on disk is accounted for: the last component of the path's
        // URL text with the escapes removed, which TarnFileName::urlText's
        // round trip gives back exactly ("a%41b.wav" stays "a%41b.wav"). An
        // AMA link's path now ends in ".aaf": that name is accounted for too.
        const QString& path = item->DB_itemPath;
        accounted.insert(path.mid(path.lastIndexOf(QLatin1Char('/')) + 1));
        ++counter;
        if (wheel && compositions != 0) wheel->setDoubleValue(double(compositions) - counter);
        if (item->DB_isAMA) {
            TarnMediafile link;
            link.openFile(item->DB_itemPath, wheel);
        }
        if (mdb) {
            completeFromMdb(item.get());
        } else if (item->DB_FileExists && item->DB_NameInBin.isEmpty()) {
            item->addinfoToItemFromCorrespondingFile();
        }
        result.append(std::move(item));
    }

    if (wheel) {
        wheel->setIndeterminate(true);
        wheel->startAnimation();
        wheel->setDoubleValue(0);
        wheel->setMaxValue(100);
    }

    if (counter != pmr.ItemsCount()) {
        TARN_LOG(QStringLiteral("Error:: PMR ::%1").arg(pmrURL_));
        TARN_LOG(QStringLiteral("Error:: PMR ::%1").arg(TarnFileName::urlText(pmrURL_)));
        TARN_LOG(QString::asprintf("Item :: %08x of %08x ", counter, pmr.ItemsCount()));
    }

    // Files of the folder that the index does not list.
    for (const auto& entry : std::as_const(entries)) {
        if (entry.isDir || accounted.contains(entry.name)) continue;
        auto item = std::make_shared<TarnDatabaseItem>();
        item->setupWithUnrefFile(folder, entry.name);
        item->validatePathAt(folderHandle.fd(), entry.name);
        if (mdb) completeFromMdb(item.get());
        result.append(std::move(item));
    }

    {
        std::lock_guard<std::mutex> guard(*coreLock_);
        core_->AddItemsFromArray(result);
        status->Status_DeleteProgressWheel(wheel);
    }
    (void)timer.elapsed();
}
