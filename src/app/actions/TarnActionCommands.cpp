#include "actions/TarnActionCommands.h"

#include <QApplication>
#include <QWidget>

#include "actions/TarnNewActionWindow.h"
#include "actions/TarnQueueWindow.h"
#include "actions/TarnSheet.h"

TarnActionCommands::TarnActionCommands(TarnActionManager* manager, QWidget* window, QObject* parent)
    : QObject(parent), manager_(manager), window_(window) {
    connect(manager_, &TarnActionManager::showRequested, this, &TarnActionCommands::ShowQueue);
}

TarnActionCommands::~TarnActionCommands() {
    // The queue window belongs to the main window (its sheet parent); it
    // must not outlive the manager it shows.
    delete queue_;
}

TarnNewActionWindow* TarnActionCommands::NewAction(const QList<TarnItemPtr>& selectedItems) {
    if (TarnSheet::isSheetOpen(window_)) {
        QApplication::beep();
        return nullptr;
    }
    auto* sheet = new TarnNewActionWindow(selectedItems, window_);
    sheet->setAttribute(Qt::WA_DeleteOnClose);
    connect(sheet, &QDialog::finished, this, [this, sheet](int code) {
        if (code == TarnNewActionWindow::kAccept) ContinueActionSetup(sheet->ActionProperties());
    });
    TarnSheet::beginSheet(sheet, window_);
    return sheet;
}

TarnNewActionWindow* TarnActionCommands::NewAction(const std::vector<TarnItemPtr>& selectedItems) {
    return NewAction(QList<TarnItemPtr>(selectedItems.begin(), selectedItems.end()));
}

TarnActionManager::ActionPtr TarnActionCommands::ContinueActionSetup(
    const TarnActionOptions& properties) {
    TarnActionOptions options = properties;
    if (options.mediaFolderRoots.isEmpty() && roots_) options.mediaFolderRoots = roots_();
    return manager_->SetUpNewActionWithOptions(options);
}

TarnQueueWindow* TarnActionCommands::Queue() {
    if (!queue_) queue_ = new TarnQueueWindow(manager_, window_);
    return queue_;
}

void TarnActionCommands::ShowQueue() {
    Queue()->showWindow(window_);
}
