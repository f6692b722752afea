#include "window/ScanCommands.h"

#include <QLabel>

#include "database/TarnCore.h"
#include "log/xConsole.h"
#include "sheets/OpenPanel.h"
#include "sheets/VolumeSelectorSheet.h"
#include "status/TarnStatusViewController.h"
#include "window/CommandGuard.h"
#include "window/CoreAccess.h"
#include "window/FilterCommands.h"
#include "window/MainWindow.h"

ScanCommands::ScanCommands(CoreAccess* access, CommandGuard* guard, FilterCommands* filters,
                           MainWindow* window, TarnStatusViewController* status, QObject* parent)
    : QObject(parent),
      access_(access),
      guard_(guard),
      filters_(filters),
      window_(window),
      status_(status),
      scanner_(std::make_unique<TarnScanner>(access->core(), status)),
      lister_(&TarnScanner::mountedVolumes) {
    TarnScanner* scanner = scanner_.get();
    // The view is published by the thread that owns the database when the
    // reload is asked for: the GUI thread as a scan starts, the scan's
    // thread when it has finished with the database.
    connect(
        scanner, &TarnScanner::allTablesReload, this, [this] { access_->publish(); },
        Qt::DirectConnection);
    connect(scanner, &TarnScanner::itemCountChanged, this, [this](qsizetype count) {
        window_->itemsCountText()->setText(QString::number(count));
    });
    connect(scanner, &TarnScanner::searchFieldCleared, this,
            [this] { filters_->clearSearchField(); });
    connect(scanner, &TarnScanner::projectsSummaryRequested, this,
            [this] { summaryWanted_ = true; });
    connect(scanner, &TarnScanner::scanFinished, this, &ScanCommands::scanFinished);
}

ScanCommands::~ScanCommands() {
    scanner_->waitForFinished();
}

void ScanCommands::waitForFinished() {
    scanner_->waitForFinished();
}

bool ScanCommands::holdForSheet() {
    if (guard_->busy()) return false;
    if (guard_->sheetShown()) return false;
    if (!status_->tryStartRunning()) return false;
    holding_ = true;
    status_->Status_SetTextWithString(QStringLiteral("Working"));
    status_->Status_GetBigWheel()->startAnimation();
    return true;
}

void ScanCommands::releaseHold(bool cancelled) {
    if (!holding_) return;
    holding_ = false;
    if (cancelled) {
        status_->Status_GetBigWheel()->stopAnimation();
        status_->Status_SetTextWithString(QStringLiteral("Cancelled"));
    }
    status_->setIsRunning(false);
}

void ScanCommands::beginAllScan() {
    if (!holdForSheet()) return;
    selector_ = new VolumeSelectorSheet(lister_ ? lister_() : QStringList(), window_);
    selector_->setAttribute(Qt::WA_DeleteOnClose);
    connect(selector_, &QDialog::finished, this, [this](int result) {
        TARN_LOG(QStringLiteral("Modal Ended"));
        const QStringList volumes = selector_ ? selector_->createResultingArray() : QStringList();
        if (result != 1) {
            releaseHold(true);
            return;
        }
        continueAllScan(volumes);
    });
    selector_->open();
}

void ScanCommands::continueAllScan(const QStringList& volumes) {
    releaseHold(false);
    startScan(TarnScanner::Kind::AllVolumes, volumes);
}

void ScanCommands::scanSingleFolder() {
    if (!holdForSheet()) return;
    auto* panel = new OpenPanel(window_, QStringLiteral("Scan single folder"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    connect(panel, &QDialog::finished, this, [this, panel](int result) {
        if (result != QDialog::Accepted) {
            releaseHold(true);
            return;
        }
        scanPaths(panel->selectedFiles());
    });
    panel->open();
}

void ScanCommands::scanPaths(const QStringList& paths) {
    releaseHold(false);
    startScan(TarnScanner::Kind::SingleFolder, paths);
}

void ScanCommands::scanAMAManagementFolder() {
    if (guard_->busy()) return;
    if (guard_->sheetShown()) return;
    startScan(TarnScanner::Kind::AMAManagementFolder, {});
}

void ScanCommands::startScan(TarnScanner::Kind kind, const QStringList& inputs) {
    summaryWanted_ = false;
    // The project filter starts with every project ticked.
    filters_->filterSheet()->setSelectAllState(true);
    scanner_->start(kind, inputs);
}

void ScanCommands::scanFinished(double seconds) {
    filters_->scanEnded();
    if (summaryWanted_) {
        summaryWanted_ = false;
        emit projectsSummaryRequested();
    }
    emit scanEnded(seconds);
}
