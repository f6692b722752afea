#pragma once

#include <QList>
#include <QObject>
#include <QStringList>

#include <memory>

#include "items/TarnDatabaseItem.h"

class AppDelegate;
class BinCommands;
class QMenu;
class TarnActionCommands;
class TarnActionManager;
class TarnAlertPresenter;
class TarnDragDropView;
class TarnExternalLauncher;
class TarnMDBB_Delete;
class TarnVersionChecker;
class xConsoleWindow;

// The windows and tools that hang on the main window: the console, the bin
// drop target and bin commands, the export menus, the new-action sheet and
// the queue, the question dialogs, the media database window, the external
// application and script hand-off, the version check, help and About. It
// connects each to the controller's signals and adds their commands to the
// menu bar; the controller itself stays about the database and its views.
class AppComponents : public QObject {
    Q_OBJECT
  public:
    explicit AppComponents(AppDelegate* app);
    ~AppComponents() override;

    xConsoleWindow* console() const { return console_; }
    BinCommands* bins() const { return bins_; }
    TarnActionCommands* actions() const { return actions_.get(); }
    TarnActionManager* actionManager() const { return manager_.get(); }
    TarnAlertPresenter* presenter() const { return presenter_.get(); }
    TarnMDBB_Delete* databaseWindow() const { return databases_; }
    TarnExternalLauncher* launcher() const { return launcher_; }
    TarnVersionChecker* versionChecker() const { return version_; }

    // The items of the selected rows of the database table, in row order.
    QList<TarnItemPtr> selectedItems() const;
    // Their paths, for the files that exist.
    QStringList selectedExistingPaths() const;

  public slots:
    void NewAction();
    void ShowQueue();
    void OpenInExternalApp();
    void ExecuteApplescript();
    void PushmeButton();
    void ShowMDBDeleteWindow();
    void showAbout();

  private:
    void connectConsole();
    void connectBins();
    void connectExports();
    void addMenus();
    void republish();

    AppDelegate* app_;
    xConsoleWindow* console_ = nullptr;
    BinCommands* bins_ = nullptr;
    TarnDragDropView* drop_ = nullptr;
    std::unique_ptr<TarnActionManager> manager_;
    std::unique_ptr<TarnActionCommands> actions_;
    std::unique_ptr<TarnAlertPresenter> presenter_;
    TarnMDBB_Delete* databases_ = nullptr;
    TarnExternalLauncher* launcher_ = nullptr;
    TarnVersionChecker* version_ = nullptr;
};
