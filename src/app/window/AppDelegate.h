#pragma once

#include <QIcon>
#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

#include "database/TarnSortDescriptor.h"

class AppComponents;
class CommandGuard;
class CoreAccess;
class DatabaseTableModel;
class FilterCommands;
class MainWindow;
class PreferencesCommands;
class ProjectsModel;
class ProjectsSummarySheet;
class QMenu;
class QModelIndex;
class QPushButton;
class QTableView;
class ScanCommands;
class SnapshotPublisher;
class SummaryTableModel;
class TarnCore;
class TarnScanSources;
class TarnStatusViewController;

// The application controller and composition root: it creates the main
// window, its models and sheets, wires the database, the scanner, the
// preferences and the status controller to them, and carries the window's
// commands (the filter, preference and scan commands through the three
// command objects it owns).
//
// Windows that are built elsewhere hang on the signals below: connecting one
// is all the wiring they need.
class AppDelegate : public QObject {
    Q_OBJECT
  public:
    enum class StartResult { Started, HelpShown, BadArguments };

    // The program passes no database and gets the shared one.
    explicit AppDelegate(TarnCore* core = nullptr, QObject* parent = nullptr);
    ~AppDelegate() override;

    // Start-up from the command line (as QApplication::arguments()): the
    // window opens, empty or scanning what the arguments name.
    StartResult start(const QStringList& arguments);
    static QString usage();

    MainWindow* window() const { return window_.get(); }
    TarnCore* core() const { return core_; }
    CoreAccess* coreAccess() const { return access_.get(); }
    CommandGuard* guard() const { return guard_.get(); }
    DatabaseTableModel* databaseModel() const { return database_; }
    SummaryTableModel* summaryModel() const { return summary_; }
    ProjectsModel* projectSummaryModel() const { return projectSummary_; }
    ProjectsModel* projectFilterModel() const { return projectFilter_; }
    ScanCommands* scans() const { return scans_; }
    FilterCommands* filters() const { return filters_; }
    PreferencesCommands* preferences() const { return preferences_; }
    ProjectsSummarySheet* projectsSummarySheet() const { return projectsSheet_; }
    // The console, bins, exports, actions, questions and tools around the window.
    AppComponents* components() const { return components_; }

    // The tools menu ("Contextual Menu") as ToolsButton shows it.
    QMenu* buildToolsMenu(QWidget* parent);
    // What a double-click does with the row's file (reveals it by default).
    void setRevealHandler(std::function<void(const QString&)> reveal);
    // The image of the icon column.
    void setItemIcon(const QIcon& icon);

  public slots:
    void ShowMainWindow();
    void ClearDatabase();
    void ShowProjectsSummary();
    void CloseProjectsSummary();
    void ExportProjectSummaryButton(QPushButton* sender);
    void ToolsButton();
    void doubleClickDatabase(const QModelIndex& index);
    void CreateOMFFileInspector();
    void showConsole();
    // A header click: sort the database, then filter.
    void sortDescriptorsDidChange(const QList<TarnSortDescriptor>& descriptors);
    void tableViewSelectionDidChange();

  signals:
    // "Console" was chosen: show the console window.
    void consoleRequested();
    // "MDB/OMF Inspector" was chosen: show the inspector.
    void inspectorRequested();
    // The tools menu's "Export database view" submenu is being built: fill
    // `menu` with the export items for `table`.
    void exportDatabaseViewRequested(QMenu* menu, QTableView* table);
    // The projects summary's export button: pop up the export menu for
    // `table`, its first item at (0, 23) of `sender`.
    void exportProjectSummaryRequested(QTableView* table, QPushButton* sender);

  private:
    bool parseArguments(const QStringList& arguments, TarnScanSources* sources);
    void build();
    void connectCommands();
    void connectDatabaseSignals();
    void showSnapshot();
    void logTermination();

    TarnCore* core_;
    TarnStatusViewController* status_;
    SnapshotPublisher* publisher_;
    DatabaseTableModel* database_;
    SummaryTableModel* summary_;
    ProjectsModel* projectSummary_;
    ProjectsModel* projectFilter_;
    std::unique_ptr<MainWindow> window_;
    std::unique_ptr<CoreAccess> access_;
    std::unique_ptr<CommandGuard> guard_;
    FilterCommands* filters_ = nullptr;
    PreferencesCommands* preferences_ = nullptr;
    ScanCommands* scans_ = nullptr;
    ProjectsSummarySheet* projectsSheet_ = nullptr;
    AppComponents* components_ = nullptr;
    std::function<void(const QString&)> reveal_;
    QIcon itemIcon_;
    QList<TarnSortDescriptor> appliedSort_;
};
