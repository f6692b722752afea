#include "window/AppDelegate.h"

#include <QApplication>
#include <QFileInfo>
#include <QItemSelectionModel>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>
#include <QStandardPaths>
#include <QStyle>
#include <QTableView>

#include <cstdio>

#include "DemoVolume.h"
#include "database/TarnCore.h"
#include "database/TarnScanSources.h"
#include "database/TarnScannerQueue.h"
#include "log/xConsole.h"
#include "models/DatabaseTableModel.h"
#include "models/ProjectsModel.h"
#include "models/SnapshotPublisher.h"
#include "models/SummaryTableModel.h"
#include "sheets/ProjectsSummarySheet.h"
#include "shell/TarnAppResources.h"
#include "status/TarnStatusViewController.h"
#include "support/TarnOSXVersion.h"
#include "support/TarnUtilities.h"
#include "window/AppComponents.h"
#include "window/CommandGuard.h"
#include "window/CoreAccess.h"
#include "window/DatabaseTableView.h"
#include "window/FileRevealer.h"
#include "window/FilterCommands.h"
#include "window/MainWindow.h"
#include "window/PreferencesCommands.h"
#include "window/PreviewPopover.h"
#include "window/ScanCommands.h"

AppDelegate::AppDelegate(TarnCore* core, QObject* parent)
    : QObject(parent),
      core_(core ? core : TarnCore::sharedCore()),
      status_(TarnStatusViewController::getTheController()),
      publisher_(new SnapshotPublisher(this)),
      database_(new DatabaseTableModel(this)),
      summary_(new SummaryTableModel(this)),
      projectSummary_(new ProjectsModel(ProjectsModel::Table::ProjectSummary, this)),
      projectFilter_(new ProjectsModel(ProjectsModel::Table::ProjectFilter, this)),
      reveal_(&FileRevealer::reveal) {}

AppDelegate::~AppDelegate() {
    // The queue's worker and the windows around the main window go first.
    delete components_;
    // The scan's thread publishes to the window's models until it ends.
    delete scans_;
    delete preferences_;
    delete filters_;
}

QString AppDelegate::usage() {
    return QStringLiteral(
               "usage: tarn-app [PATH...] [--volume ROOT]... [--all-volumes] [--ama] "
               "[--demo]\n"
               "opens the window and scans what the arguments name:\n") +
           TarnScanSources::usage() +
           QStringLiteral(
               "  --demo                 the demo volume (written beside the build folder "
               "when absent)\n");
}

bool AppDelegate::parseArguments(const QStringList& arguments, TarnScanSources* sources) {
    bool demo = false;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& arg = arguments.at(i);
        const TarnScanSources::Take taken = sources->take(arguments, i);
        if (taken == TarnScanSources::Take::Taken) continue;
        if (taken == TarnScanSources::Take::MissingValue) {
            std::fprintf(stderr, "tarn-app: --volume needs a folder\n%s", qPrintable(usage()));
            return false;
        }
        if (arg == QLatin1String("--demo")) {
            demo = true;
        } else {
            std::fprintf(stderr, "tarn-app: unknown option '%s'\n%s", qPrintable(arg),
                         qPrintable(usage()));
            return false;
        }
    }
    if (demo) {
        // Beside the build folder; an installed program (whose folder is not
        // writable) keeps it with its other data.
        QString root = fixtures::DemoVolume::defaultRoot(QCoreApplication::applicationDirPath());
        QString error;
        if (!fixtures::DemoVolume::ensure(root, &error)) {
            root = QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
                   QStringLiteral("/demo-volume");
            if (!fixtures::DemoVolume::ensure(root, &error)) {
                std::fprintf(stderr, "tarn-app: %s\n", qPrintable(error));
                return false;
            }
        }
        sources->volumes.append(root);
    }
    return true;
}

AppDelegate::StartResult AppDelegate::start(const QStringList& arguments) {
    if (arguments.contains(QLatin1String("--help")) || arguments.contains(QLatin1String("-h"))) {
        std::fputs(qPrintable(usage()), stdout);
        return StartResult::HelpShown;
    }
    TarnScanSources sources;
    if (!parseArguments(arguments, &sources)) return StartResult::BadArguments;

    // The windows exist before the first line (as a window's interface is
    // loaded before the program starts), so the console shows every line;
    // it starts empty and hidden, with the system it runs on.
    build();
    xConsole::sharedInstance()->Reset();
    TARN_LOG(QStringLiteral("OSXVersion:%1").arg(TarnOSXVersion::description()));
    TarnScannerQueue::shared();
    preferences_->fillControls();
    access_->change([](TarnCore& core) { core.clear(); });
    window_->versionLabel()->setText(TarnUtilities::versionText());
    connect(qApp, &QCoreApplication::aboutToQuit, this, &AppDelegate::logTermination);
    window_->show();

    if (!sources.isEmpty()) scans_->scanPaths(sources.scanRoots());
    return StartResult::Started;
}

void AppDelegate::build() {
    window_ = std::make_unique<MainWindow>(database_, summary_, status_);
    access_ = std::make_unique<CoreAccess>(core_, status_, publisher_);
    guard_ = std::make_unique<CommandGuard>(status_, window_.get());
    filters_ = new FilterCommands(access_.get(), guard_.get(), window_.get(), projectFilter_, this);
    preferences_ =
        new PreferencesCommands(access_.get(), guard_.get(), filters_, window_.get(), this);
    scans_ = new ScanCommands(access_.get(), guard_.get(), filters_, window_.get(), status_, this);
    projectsSheet_ = new ProjectsSummarySheet(projectSummary_, window_.get());
    setItemIcon(TarnAppResources::videoIcon());

    connect(publisher_, &SnapshotPublisher::snapshotChanged, this, &AppDelegate::showSnapshot);
    connectCommands();
    connectDatabaseSignals();
    components_ = new AppComponents(this);
}

void AppDelegate::connectCommands() {
    MainWindow* w = window_.get();
    DatabaseTableView* table = w->databaseTable();
    auto command = [w](const char* name) { return w->command(QString::fromLatin1(name)); };
    connect(command("beginAllScan"), &QAction::triggered, scans_, &ScanCommands::beginAllScan);
    connect(command("scanSingleFolder"), &QAction::triggered, scans_,
            &ScanCommands::scanSingleFolder);
    connect(command("scanAMAManagementFolder"), &QAction::triggered, scans_,
            &ScanCommands::scanAMAManagementFolder);
    connect(command("ClearDatabase"), &QAction::triggered, this, &AppDelegate::ClearDatabase);
    connect(command("ShowPreferences"), &QAction::triggered, preferences_,
            &PreferencesCommands::ShowPreferences);
    connect(command("quit"), &QAction::triggered, qApp, &QCoreApplication::quit);
    connect(command("find"), &QAction::triggered, w->searchField(),
            [w] { w->searchField()->setFocus(Qt::ShortcutFocusReason); });
    connect(command("ShowFilter"), &QAction::triggered, filters_, &FilterCommands::ShowFilter);
    connect(command("ShowProjectsSummary"), &QAction::triggered, this,
            &AppDelegate::ShowProjectsSummary);
    connect(command("ShowMainWindow"), &QAction::triggered, this, &AppDelegate::ShowMainWindow);
    connect(command("showConsole"), &QAction::triggered, this, &AppDelegate::showConsole);

    connect(w->bigRedButton(), &QPushButton::clicked, scans_, &ScanCommands::beginAllScan);
    connect(w->smallRedButton(), &QPushButton::clicked, this, &AppDelegate::ClearDatabase);
    connect(w->filterButton(), &QPushButton::clicked, filters_, &FilterCommands::ShowFilter);
    connect(w->toolsButton(), &QPushButton::clicked, this, &AppDelegate::ToolsButton);

    connect(table, &QAbstractItemView::doubleClicked, this, &AppDelegate::doubleClickDatabase);
    connect(table, &DatabaseTableView::sortDescriptorsDidChange, this,
            &AppDelegate::sortDescriptorsDidChange);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &AppDelegate::tableViewSelectionDidChange);

    connect(projectsSheet_, &ProjectsSummarySheet::closeClicked, this,
            &AppDelegate::CloseProjectsSummary);
    connect(projectsSheet_, &ProjectsSummarySheet::exportClicked, this,
            &AppDelegate::ExportProjectSummaryButton);
    connect(scans_, &ScanCommands::projectsSummaryRequested, this, [this] {
        if (!window_->showsSheet()) projectsSheet_->open();
    });
    connect(scans_, &ScanCommands::scanEnded, this, [this] {
        appliedSort_.clear();
        window_->databaseTable()->resetSortDescriptors();
    });
}

// The database's own signals may come from a scan's thread: they touch only
// the window, never the database.
void AppDelegate::connectDatabaseSignals() {
    DatabaseTableView* table = window_->databaseTable();
    connect(core_, &TarnCore::deselectAllRows, table, &QAbstractItemView::clearSelection);
    connect(core_, &TarnCore::previewCleared, table, [table] {
        table->setLastitem(nullptr);
        table->updatePreviewWith(nullptr);
    });
}

void AppDelegate::showSnapshot() {
    const auto& snapshot = publisher_->current();
    database_->setSnapshot(snapshot);
    summary_->setSnapshot(snapshot);
    projectSummary_->setSnapshot(snapshot);
    projectFilter_->setSnapshot(snapshot);
    // New rows take the selection with them.
    tableViewSelectionDidChange();
}

void AppDelegate::logTermination() {
    TARN_LOG(QStringLiteral("Tarn terminated succesfully"));
}

QMenu* AppDelegate::buildToolsMenu(QWidget* parent) {
    auto* menu = new QMenu(QStringLiteral("Contextual Menu"), parent);
    menu->setObjectName(QStringLiteral("Contextual Menu"));
    menu->setAccessibleName(QStringLiteral("Contextual Menu"));
    menu->addAction(QStringLiteral("Show Projects Summary"), this,
                    &AppDelegate::ShowProjectsSummary);
    QMenu* exports = menu->addMenu(QStringLiteral("Export database view"));
    emit exportDatabaseViewRequested(exports, window_->databaseTable());
    exports->setEnabled(!exports->isEmpty());
    menu->addSeparator();
    menu->addAction(QStringLiteral("MDB/OMF Inspector"), this,
                    &AppDelegate::CreateOMFFileInspector);
    menu->addAction(QStringLiteral("Scan single folder"), scans_, &ScanCommands::scanSingleFolder);
    return menu;
}

void AppDelegate::setRevealHandler(std::function<void(const QString&)> reveal) {
    reveal_ = std::move(reveal);
}

void AppDelegate::setItemIcon(const QIcon& icon) {
    itemIcon_ = icon;
    database_->setItemIcon(icon);
}

void AppDelegate::ShowMainWindow() {
    if (guard_->busy()) return;
    window_->show();
    window_->raise();
    window_->activateWindow();
    database_->setSnapshot(publisher_->current());  // the same rows: the selection stays
}

void AppDelegate::ClearDatabase() {
    if (guard_->busy()) return;
    access_->change([](TarnCore& core) { core.clear(); });
    xConsole::sharedInstance()->Reset();
    window_->itemsCountText()->setText(QString::number(access_->view().allItemsCount()));
    appliedSort_.clear();
    window_->databaseTable()->resetSortDescriptors();
    filters_->AllTablesReload();
}

void AppDelegate::ShowProjectsSummary() {
    access_->change([](TarnCore& core) { core.prepareProjectsSummary(); });
    if (guard_->sheetShown()) return;
    projectsSheet_->open();
}

void AppDelegate::CloseProjectsSummary() {
    projectsSheet_->accept();
}

void AppDelegate::ExportProjectSummaryButton(QPushButton* sender) {
    emit exportProjectSummaryRequested(projectsSheet_->projectSumaryTable(), sender);
}

void AppDelegate::ToolsButton() {
    QPushButton* button = window_->toolsButton();
    QMenu* menu = buildToolsMenu(button);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    button->setChecked(true);
    connect(menu, &QMenu::aboutToHide, button, [button] { button->setChecked(false); });
    menu->popup(button->mapToGlobal(QPoint(0, 23)));
}

void AppDelegate::doubleClickDatabase(const QModelIndex& index) {
    const TarnItemPtr item = access_->view().itemPtrAt(index.row());
    if (item && reveal_) reveal_(item->DB_itemPath);
}

void AppDelegate::CreateOMFFileInspector() {
    QMetaObject::invokeMethod(this, &AppDelegate::inspectorRequested, Qt::QueuedConnection);
}

void AppDelegate::showConsole() {
    QMetaObject::invokeMethod(this, &AppDelegate::consoleRequested, Qt::QueuedConnection);
}

void AppDelegate::sortDescriptorsDidChange(const QList<TarnSortDescriptor>& descriptors) {
    const bool sorted = access_->change([&descriptors](TarnCore& core) {
        core.sortUsingDescriptors(descriptors);
        core.applyFilter();
    });
    if (sorted) {
        appliedSort_ = descriptors;
    } else {
        window_->databaseTable()->showSortDescriptors(appliedSort_);
    }
}

void AppDelegate::tableViewSelectionDidChange() {
    DatabaseTableView* table = window_->databaseTable();
    qsizetype count = 0;
    for (const auto& span : table->selectedRowSpans()) count += span.second - span.first + 1;
    summary_->setSelection(count, table->calculateSelectedSize());
    const int row = table->lastSelectedRow();
    if (row < 0) {
        table->setLastitem(nullptr);
        return;
    }
    table->setLastitem(table->databaseModel()->snapshot().itemPtrAt(row));
    table->updatePreviewWith(table->lastitem());
}
