#include "window/MainWindow.h"

#include <QAction>
#include <QDialog>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMenuBar>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

#include "models/DatabaseTableModel.h"
#include "models/SummaryTableModel.h"
#include "sheets/SheetSupport.h"
#include "status/StatusStrip.h"
#include "window/DatabaseTableView.h"

namespace {

QPushButton* redButton(QWidget* parent, const QString& name, const QString& text, bool big) {
    QPushButton* button = SheetSupport::button(parent, name, text);
    button->setStyleSheet(
        QStringLiteral("QPushButton { background: #b3261e; color: white; border: 1px solid #7a1a14;"
                       " border-radius: 4px; padding: %1; font-weight: %2; }"
                       "QPushButton:pressed { background: #7a1a14; }"
                       "QPushButton:disabled { background: #c9a4a1; }")
            .arg(big ? QStringLiteral("6px 16px") : QStringLiteral("3px 10px"),
                 big ? QStringLiteral("bold") : QStringLiteral("normal")));
    return button;
}

}  // namespace

MainWindow::MainWindow(DatabaseTableModel* database, SummaryTableModel* summary,
                       TarnStatusViewController* status) {
    SheetSupport::name(this, QStringLiteral("window"));
    setWindowTitle(QStringLiteral("Tarn"));

    auto* central = new QWidget(this);
    auto* layout = new QVBoxLayout(central);
    layout->setContentsMargins(8, 8, 8, 0);
    layout->setSpacing(6);
    layout->addWidget(buildTopRow());

    area_ = new QWidget(central);
    area_->setObjectName(QStringLiteral("DatabaseArea"));
    auto* areaLayout = new QVBoxLayout(area_);
    areaLayout->setContentsMargins(0, 0, 0, 0);
    table_ = new DatabaseTableView(database, area_);
    areaLayout->addWidget(table_);
    layout->addWidget(area_, 1);

    summary_ = SheetSupport::makeTable(central, QStringLiteral("SummaryTable"), summary);
    summary_->setAccessibleDescription(QStringLiteral("Counts and sizes of the database view"));
    summary_->setSelectionMode(QAbstractItemView::NoSelection);
    summary_->setFocusPolicy(Qt::TabFocus);
    summary_->setAlternatingRowColors(false);
    summary_->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    summary_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    summary_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    summary_->setFixedHeight(summary_->horizontalHeader()->sizeHint().height() +
                             summary_->verticalHeader()->defaultSectionSize() +
                             2 * summary_->frameWidth());
    layout->addWidget(summary_);
    layout->addWidget(buildBottomRow(status));

    setCentralWidget(central);
    buildMenus();
    // As much of the screen as the columns want, less room for the desktop's panels.
    const QRect screen = QGuiApplication::primaryScreen()
                             ? QGuiApplication::primaryScreen()->availableGeometry()
                             : QRect(0, 0, 1440, 900);
    resize(std::min(1440, screen.width() - 32), std::min(860, screen.height() - 48));
}

QWidget* MainWindow::buildTopRow() {
    auto* row = new QWidget(this);
    buttons_ = new QHBoxLayout(row);
    buttons_->setContentsMargins(0, 0, 0, 0);
    bigRed_ =
        redButton(row, QStringLiteral("BigRedButton"), QStringLiteral("Scan all volumes"), true);
    bigRed_->setToolTip(QStringLiteral("Scan the media folders of the volumes you choose"));
    smallRed_ = redButton(row, QStringLiteral("SmallRedButton"), QStringLiteral("Clear"), false);
    smallRed_->setToolTip(QStringLiteral("Empty the database"));
    filter_ = SheetSupport::button(row, QStringLiteral("ShowFilter"), QStringLiteral("Filter…"));
    tools_ = SheetSupport::button(row, QStringLiteral("ToolsButton"), QStringLiteral("Tools"));
    tools_->setCheckable(true);

    search_ = new QLineEdit(row);
    SheetSupport::name(search_, QStringLiteral("searchField"));
    search_->setPlaceholderText(QStringLiteral("Search names, projects and paths"));
    search_->setClearButtonEnabled(true);
    search_->setMinimumWidth(260);

    buttons_->addWidget(bigRed_);
    buttons_->addWidget(smallRed_);
    buttons_->addSpacing(12);
    buttons_->addWidget(filter_);
    buttons_->addWidget(tools_);
    buttons_->addStretch(1);
    buttons_->addWidget(search_);
    return row;
}

QWidget* MainWindow::buildBottomRow(TarnStatusViewController* status) {
    auto* service = new QWidget(this);
    SheetSupport::name(service, QStringLiteral("ServiceView"));
    auto* row = new QHBoxLayout(service);
    row->setContentsMargins(0, 0, 0, 4);
    strip_ = new StatusStrip(status, service);
    itemsCount_ = new QLabel(QStringLiteral("0"), service);
    SheetSupport::name(itemsCount_, QStringLiteral("itemsCountText"));
    itemsCount_->setAccessibleDescription(QStringLiteral("Items in the database"));
    auto* itemsCaption = new QLabel(QStringLiteral("items"), service);
    version_ = new QLabel(service);
    SheetSupport::name(version_, QStringLiteral("VersionLabel"));
    version_->setEnabled(false);
    row->addWidget(strip_, 1);
    row->addWidget(itemsCount_);
    row->addWidget(itemsCaption);
    row->addSpacing(16);
    row->addWidget(version_);
    return service;
}

QAction* MainWindow::addCommand(QMenu* menu, const QString& name, const QString& title,
                                const QKeySequence& shortcut) {
    QAction* action = menu->addAction(title);
    action->setObjectName(name);
    if (!shortcut.isEmpty()) action->setShortcut(shortcut);
    commands_.insert(name, action);
    return action;
}

void MainWindow::buildMenus() {
    QMenu* scan = menuBar()->addMenu(QStringLiteral("&Scan"));
    addCommand(scan, QStringLiteral("beginAllScan"), QStringLiteral("Scan all volumes…"),
               QKeySequence(QStringLiteral("Ctrl+R")));
    addCommand(scan, QStringLiteral("scanSingleFolder"), QStringLiteral("Scan single folder…"),
               QKeySequence(QStringLiteral("Ctrl+O")));
    addCommand(scan, QStringLiteral("scanAMAManagementFolder"),
               QStringLiteral("Scan AMA management folder"));
    scan->addSeparator();
    addCommand(scan, QStringLiteral("ClearDatabase"), QStringLiteral("Clear database"),
               QKeySequence(QStringLiteral("Ctrl+Shift+Backspace")));
    scan->addSeparator();
    addCommand(scan, QStringLiteral("ShowPreferences"), QStringLiteral("Preferences…"),
               QKeySequence(QStringLiteral("Ctrl+,")));
    addCommand(scan, QStringLiteral("quit"), QStringLiteral("Quit"), QKeySequence::Quit);

    QMenu* view = menuBar()->addMenu(QStringLiteral("&View"));
    addCommand(view, QStringLiteral("find"), QStringLiteral("Search"), QKeySequence::Find);
    addCommand(view, QStringLiteral("ShowFilter"), QStringLiteral("Filter…"),
               QKeySequence(QStringLiteral("Ctrl+Shift+F")));
    addCommand(view, QStringLiteral("ShowProjectsSummary"), QStringLiteral("Projects summary"),
               QKeySequence(QStringLiteral("Ctrl+Shift+P")));
    view->addSeparator();
    addCommand(view, QStringLiteral("ShowMainWindow"), QStringLiteral("Main window"),
               QKeySequence(QStringLiteral("Ctrl+1")));
    addCommand(view, QStringLiteral("showConsole"), QStringLiteral("Console"),
               QKeySequence(QStringLiteral("Ctrl+2")));
}

QAction* MainWindow::command(const QString& name) const {
    return commands_.value(name);
}

bool MainWindow::showsSheet() const {
    const auto dialogs = findChildren<QDialog*>(Qt::FindDirectChildrenOnly);
    for (const QDialog* dialog : dialogs) {
        if (dialog->isVisible() && dialog->windowModality() != Qt::NonModal) return true;
    }
    return false;
}
