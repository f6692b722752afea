#include "database/TarnScanner.h"

#include <QElapsedTimer>
#include <QStorageInfo>

#include "database/TarnCore.h"
#include "database/TarnScannerQueue.h"
#include "log/xConsole.h"
#include "status/TarnStatusViewController.h"

namespace {

QString withSlash(const QString& path) {
    return path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
}

}  // namespace

TarnScanner::TarnScanner(TarnCore* core, TarnStatusViewController* status)
    : core_(core ? core : TarnCore::sharedCore()),
      status_(status ? status : TarnStatusViewController::getTheController()) {}

TarnScanner::~TarnScanner() {
    waitForFinished();
}

QStringList TarnScanner::mediaFolderRoots(const QString& volumeRoot) {
    const QString v = withSlash(volumeRoot);
    return {v + QLatin1String("Avid MediaFiles/MXF/"),
            v + QLatin1String("MXF/MXF/"),
            v + QLatin1String("Avid MediaFiles/UME/"),
            v + QLatin1String("Users/Shared/AvidMediaComposer/MXF/MXF/"),
            v + QLatin1String("Users/Shared/AvidMediaComposer/Avid MediaFiles/MXF/"),
            v + QLatin1String("OMFI MediaFiles/")};
}

QStringList TarnScanner::umeFolderRoots(const QString& volumeRoot) {
    const QString v = withSlash(volumeRoot);
    return {v + QLatin1String("Users/Shared/AvidMediaComposer/Avid MediaFiles/UME/"),
            v + QLatin1String("Users/Shared/AvidMediaComposer/MXF/UME/"),
            v + QLatin1String("MXF/UME/")};
}

QString TarnScanner::AMAManagementFolder() {
    return QStringLiteral("/Users/Shared/AvidMediaComposer/AMA Management/");
}

QStringList TarnScanner::mountedVolumes() {
    QStringList volumes;
    for (const QStorageInfo& volume : QStorageInfo::mountedVolumes()) {
        if (!volume.isValid() || !volume.isReady()) continue;
        const QString root = volume.rootPath();
        const QByteArray type = volume.fileSystemType();
        if (type == "proc" || type == "sysfs" || type == "tmpfs" || type == "devtmpfs" ||
            type == "overlay" || type == "squashfs" || type.startsWith("cgroup"))
            continue;
        if (root.section(QLatin1Char('/'), -1).startsWith(QLatin1Char('.'))) continue;
        volumes.append(root);
    }
    return volumes;
}

QStringList TarnScanner::rootsFor(Kind kind, const QStringList& inputs) {
    switch (kind) {
        case Kind::AllVolumes: {
            QStringList roots;
            for (const QString& volume : inputs) {
                roots += mediaFolderRoots(volume);
                // The UME roots are formed and deliberately not scanned.
                (void)umeFolderRoots(volume);
            }
            return roots;
        }
        case Kind::SingleFolder:
            return inputs;
        case Kind::AMAManagementFolder:
            return {AMAManagementFolder()};
    }
    return {};
}

bool TarnScanner::begin(Kind kind) {
    if (!status_->tryStartRunning()) return false;
    {
        // A finished background scan leaves its thread to be joined, unless
        // this start comes from that thread (a handler of scanFinished).
        std::thread previous;
        {
            std::lock_guard<std::mutex> guard(lock_);
            if (worker_.joinable()) {
                if (worker_.get_id() == std::this_thread::get_id()) {
                    retired_.push_back(std::move(worker_));
                } else {
                    previous = std::move(worker_);
                }
            }
        }
        if (previous.joinable()) previous.join();
    }
    status_->Status_SetTextWithString(QStringLiteral("Working"));
    status_->Status_GetBigWheel()->startAnimation();
    if (kind != Kind::SingleFolder) core_->clear();
    // The project filter starts with every project checked.
    core_->setFilterFlagProjects(true);
    emit itemCountChanged(core_->getItemsCountUnfiltered());
    emit allTablesReload();
    return true;
}

bool TarnScanner::run(Kind kind, const QStringList& inputs) {
    if (!begin(kind)) return false;
    backgroundBlock(kind, rootsFor(kind, inputs));
    return true;
}

bool TarnScanner::start(Kind kind, const QStringList& inputs) {
    if (!begin(kind)) return false;
    const QStringList roots = rootsFor(kind, inputs);
    std::lock_guard<std::mutex> guard(lock_);
    worker_ = std::thread([this, kind, roots] { backgroundBlock(kind, roots); });
    return true;
}

void TarnScanner::waitForFinished() {
    // Threads are joined outside the lock: a finishing scan may take it to
    // start the next one.
    const auto self = std::this_thread::get_id();
    for (;;) {
        std::thread next;
        {
            std::lock_guard<std::mutex> guard(lock_);
            if (worker_.joinable() && worker_.get_id() != self) {
                next = std::move(worker_);
            } else {
                for (auto& old : retired_) {
                    if (old.joinable() && old.get_id() != self) {
                        next = std::move(old);
                        break;
                    }
                }
            }
        }
        if (!next.joinable()) break;
        next.join();
    }
}

double TarnScanner::lastExecutionTime() const {
    return lastSeconds_.load();
}

void TarnScanner::backgroundBlock(Kind kind, const QStringList& roots) {
    QElapsedTimer timer;
    timer.start();
    for (const QString& root : roots) core_->AddFile(root);
    core_->scannerQueue()->waitUntilAllOperationsAreFinished();
    {
        // Everything the operations appended is published under this lock.
        std::lock_guard<std::mutex> guard(core_->theCoreLock());
    }
    status_->StopAllWheels();
    core_->makeUnique();
    emit searchFieldCleared();
    core_->LoadDefaults();
    // The database is ready: commands may run while the view catches up.
    status_->setIsRunning(false);

    const double seconds = double(timer.nsecsElapsed()) / 1e9;
    const QString executionTime = QString::asprintf("Execution Time: %f", seconds);
    if (kind != Kind::AllVolumes) TARN_LOG(executionTime);
    lastSeconds_ = seconds;

    emit itemCountChanged(core_->getItemsCountUnfiltered());
    emit allTablesReload();
    status_->Status_GetBigWheel()->stopAnimation();
    if (kind != Kind::AllVolumes) status_->Status_SetTextWithString(QStringLiteral("Done"));
    status_->Status_SetTextWithString(executionTime);
    if (kind == Kind::AllVolumes && !roots.isEmpty()) emit projectsSummaryRequested();
    emit scanFinished(seconds);
}
