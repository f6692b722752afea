#include "actions/TarnQueueWindow.h"

#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QPushButton>
#include <QTableView>
#include <QUrl>
#include <QVBoxLayout>

#include "actions/TarnActionCellDelegate.h"
#include "actions/TarnLogPopover.h"
#include "actions/TarnQueueModel.h"
#include "actions/TarnSheet.h"

namespace {

TarnQueueWindow::Revealer& revealerSlot() {
    static TarnQueueWindow::Revealer revealer;
    return revealer;
}

// Opens the folder in the desktop's file browser (the nearest there is to
// selecting it in the Finder).
void reveal(const QString& folder) {
    if (const TarnQueueWindow::Revealer& revealer = revealerSlot()) {
        revealer(folder);
        return;
    }
    QDesktopServices::openUrl(QUrl::fromLocalFile(folder));
}

}  // namespace

TarnQueueWindow::TarnQueueWindow(TarnActionManager* manager, QWidget* parent)
    : QDialog(parent), manager_(manager), model_(new TarnQueueModel(manager, this)) {
    setObjectName(QStringLiteral("TarnQueueWindow"));
    setWindowTitle(tr("Queue"));
    buildTable();
    addRowCommands();
    popover_ = new TarnLogPopover(this);

    clear_ = new QPushButton(tr("Clear"), this);
    close_ = new QPushButton(tr("Close"), this);
    for (QPushButton* button : {clear_, close_}) {
        button->setObjectName(button->text());
        button->setAccessibleName(button->text());
        button->setAutoDefault(false);
    }
    connect(clear_, &QPushButton::clicked, this, &TarnQueueWindow::ClearQueue);
    connect(close_, &QPushButton::clicked, this, &TarnQueueWindow::closeWindow);
    // Escape and Close alike take the popover with the sheet.
    connect(this, &QDialog::finished, popover_, &QWidget::hide);

    auto* buttons = new QHBoxLayout;
    buttons->addWidget(clear_);
    buttons->addStretch();
    buttons->addWidget(close_);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(table_, 1);
    layout->addLayout(buttons);
}

TarnQueueWindow::~TarnQueueWindow() = default;

void TarnQueueWindow::buildTable() {
    table_ = new QTableView(this);
    table_->setObjectName(QStringLiteral("QueueTable"));
    table_->setAccessibleName(QStringLiteral("QueueTable"));
    table_->setModel(model_);
    delegate_ = new TarnActionCellDelegate(table_);
    table_->setItemDelegate(delegate_);
    table_->setSelectionBehavior(QAbstractItemView::SelectRows);
    table_->setSelectionMode(QAbstractItemView::SingleSelection);
    table_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table_->setWordWrap(false);
    table_->setTextElideMode(Qt::ElideMiddle);
    table_->setShowGrid(false);
    table_->setAlternatingRowColors(true);
    table_->verticalHeader()->hide();
    table_->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table_->verticalHeader()->setDefaultSectionSize(
        TarnActionCellDelegate::rowHeight(table_->fontMetrics()));

    QHeaderView* header = table_->horizontalHeader();
    header->setSectionResizeMode(TarnQueueModel::DescriptionColumn, QHeaderView::Stretch);
    for (int column : {int(TarnQueueModel::StatusColumn), int(TarnQueueModel::ProgressColumn),
                       int(TarnQueueModel::ButtonsColumn)}) {
        header->setSectionResizeMode(column, QHeaderView::Fixed);
        header->resizeSection(column,
                              TarnActionCellDelegate::columnWidth(column, table_->fontMetrics()));
    }

    connect(table_, &QTableView::doubleClicked, this, &TarnQueueWindow::doubleClickQueue);
    connect(delegate_, &TarnActionCellDelegate::cancelClicked, this,
            [this](const QModelIndex& index) { cancelOperation(index.row()); });
    connect(delegate_, &TarnActionCellDelegate::infoClicked, this,
            [this](const QModelIndex& index, const QRect& anchor) {
                ShowInfoPopover(index.row(), anchor);
            });
}

void TarnQueueWindow::addRowCommands() {
    // The drawn buttons have keyboard and context-menu twins for the selected row.
    auto add = [this](const QString& text, const QList<QKeySequence>& keys, auto slot) {
        auto* action = new QAction(text, table_);
        action->setShortcuts(keys);
        action->setShortcutContext(Qt::WidgetShortcut);
        connect(action, &QAction::triggered, this, slot);
        table_->addAction(action);
    };
    add(tr("Cancel Action"), {QKeySequence::Delete, QKeySequence(Qt::Key_Backspace)},
        [this] { cancelOperation(currentRow()); });
    add(tr("Show Log"), {QKeySequence(Qt::CTRL | Qt::Key_I)}, [this] {
        const int row = currentRow();
        const QRect cell = TarnActionCellDelegate::buttonRect(
            table_->visualRect(model_->index(row, TarnQueueModel::ButtonsColumn)),
            TarnActionCellDelegate::Button::Info);
        ShowInfoPopover(row, QRect(table_->viewport()->mapToGlobal(cell.topLeft()), cell.size()));
    });
    add(tr("Reveal Target Folder"), {QKeySequence(Qt::Key_Return), QKeySequence(Qt::Key_Enter)},
        [this] { doubleClickQueue(model_->index(currentRow(), 0)); });
    table_->setContextMenuPolicy(Qt::ActionsContextMenu);
}

int TarnQueueWindow::currentRow() const {
    const QModelIndex current = table_->currentIndex();
    return current.isValid() ? current.row() : -1;
}

void TarnQueueWindow::showWindow(QWidget* parent) {
    QWidget* window = parent ? parent : parentWidget();
    if (!window) window = QApplication::activeWindow();
    if (isVisible()) {
        raise();
        return;
    }
    TarnSheet::beginSheet(this, window, kHeightLess);
}

void TarnQueueWindow::closeWindow() {
    done(QDialog::Rejected);
}

void TarnQueueWindow::reloadData() {
    model_->reloadData();
}

void TarnQueueWindow::ClearQueue() {
    manager_->clearQueue();
    reloadData();
}

void TarnQueueWindow::doubleClickQueue(const QModelIndex& index) {
    if (!index.isValid()) return;
    const QString folder = model_->targetFolderAt(index.row());
    if (!folder.isEmpty()) reveal(folder);
}

void TarnQueueWindow::cancelOperation(int row) {
    model_->cancelOperation(row);
}

void TarnQueueWindow::ShowInfoPopover(int row, const QRect& anchor) {
    if (!model_->actionAt(row)) return;
    popover_->showText(model_->actionLogAt(row), anchor);
}

void TarnQueueWindow::setRevealer(Revealer revealer) {
    revealerSlot() = std::move(revealer);
}
