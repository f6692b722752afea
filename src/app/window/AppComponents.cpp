#include "window/AppComponents.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTableView>

#include "actions/TarnActionCommands.h"
#include "actions/TarnActionManager.h"
#include "actions/TarnActionOperation.h"
#include "actions/TarnExternalHandoff.h"
#include "alerts/TarnAlertPresenter.h"
#include "bins/BinCommands.h"
#include "bins/TarnDragDropView.h"
#include "console/xConsoleWindow.h"
#include "database/TarnCore.h"
#include "database/TarnViewSnapshot.h"
#include "databases/TarnMDBB_Delete.h"
#include "export/ExportMenu.h"
#include "external/TarnExternalLauncher.h"
#include "shell/TarnAboutBox.h"
#include "shell/TarnAppCommands.h"
#include "status/TarnStatusViewController.h"
#include "version/TarnVersionChecker.h"
#include "window/AppDelegate.h"
#include "window/CoreAccess.h"
#include "window/DatabaseTableView.h"
#include "window/MainWindow.h"

AppComponents::AppComponents(AppDelegate* app) : QObject(app), app_(app) {
    MainWindow* window = app_->window();
    presenter_ = std::make_unique<TarnAlertPresenter>(window);
    TarnActionOperation::setPopHook([] {
        QMetaObject::invokeMethod(
            qApp, [] { QApplication::beep(); }, Qt::QueuedConnection);
    });
    manager_ = std::make_unique<TarnActionManager>();
    actions_ = std::make_unique<TarnActionCommands>(manager_.get(), window);
    TarnCore* core = app_->core();
    actions_->setMediaFolderRoots([core] { return core->mediaFolderRoots(); });
    databases_ = new TarnMDBB_Delete(window);
    launcher_ = new TarnExternalLauncher(this);
    version_ = new TarnVersionChecker(this);
    connect(version_, &TarnVersionChecker::finished, this, [](const QString& text) {
        TarnStatusViewController::getTheController()->Status_SetTextWithString(text);
    });
    connectConsole();
    connectBins();
    connectExports();
    addMenus();
}

AppComponents::~AppComponents() {
    // The queue's worker may still wait on a question: answer it before the
    // presenter goes, then let the manager stop its worker.
    if (presenter_) presenter_->dismissOpenQuestions();
    actions_.reset();
    manager_.reset();
    TarnActionOperation::setPopHook({});
}

void AppComponents::connectConsole() {
    // The console starts hidden; start-up has reset the log before its
    // first line.
    console_ = new xConsoleWindow(app_->window());
    console_->setWindowFlag(Qt::Window);
    connect(app_, &AppDelegate::consoleRequested, console_, &xConsoleWindow::showWindow);
}

void AppComponents::connectBins() {
    bins_ = new BinCommands(app_->core(), TarnStatusViewController::getTheController(), this);
    bins_->setPanelParent(app_->window());
    drop_ = new TarnDragDropView(app_->window()->databaseArea());
    drop_->setAvbOpDelegate(bins_);
    // A set operation changed the database on the GUI thread (never while a
    // scan runs: the commands refuse then): show the new view.
    connect(bins_, &BinCommands::AllTablesReload, this, &AppComponents::republish);
}

void AppComponents::connectExports() {
    connect(app_, &AppDelegate::exportDatabaseViewRequested, this,
            [](QMenu* menu, QTableView* table) {
                // The export menu's items (each keeps its own handler) go
                // straight into the tools menu's submenu.
                auto* exports = new ExportMenu(table, ExportMenu::displayTexts(table), menu);
                menu->addActions(exports->actions());
            });
    connect(app_, &AppDelegate::exportProjectSummaryRequested, this,
            [](QTableView* table, QPushButton* sender) {
                auto* exports = new ExportMenu(table, ExportMenu::displayTexts(table), sender);
                exports->setAttribute(Qt::WA_DeleteOnClose);
                exports->popup(sender->mapToGlobal(QPoint(0, 23)));
            });
}

void AppComponents::addMenus() {
    QMenuBar* bar = app_->window()->menuBar();
    auto add = [this](QMenu* menu, const QString& name, const QString& title, auto slot,
                      const QKeySequence& keys = QKeySequence()) {
        QAction* action = menu->addAction(title);
        action->setObjectName(name);
        if (!keys.isEmpty()) action->setShortcut(keys);
        connect(action, &QAction::triggered, this, slot);
        return action;
    };
    QMenu* actions = bar->addMenu(QStringLiteral("&Actions"));
    add(actions, QStringLiteral("NewAction"), QStringLiteral("New action…"),
        &AppComponents::NewAction, QKeySequence(QStringLiteral("Ctrl+N")));
    add(actions, QStringLiteral("ShowQueue"), QStringLiteral("Queue…"), &AppComponents::ShowQueue,
        QKeySequence(QStringLiteral("Ctrl+Shift+Q")));
    actions->addSeparator();
    add(actions, QStringLiteral("OpenInExternalApp"),
        QStringLiteral("Open in external application"), &AppComponents::OpenInExternalApp,
        QKeySequence(QStringLiteral("Ctrl+E")));
    add(actions, QStringLiteral("ExecuteApplescript"), QStringLiteral("Run script on selection"),
        &AppComponents::ExecuteApplescript);
    actions->addSeparator();
    add(actions, QStringLiteral("ShowMDBDeleteWindow"),
        QStringLiteral("Select and delete databases…"), &AppComponents::ShowMDBDeleteWindow);

    // The two commands an editor reaches for most also sit beside the filter
    // and tools buttons.
    const struct {
        const char* name;
        const char* title;
        void (AppComponents::*slot)();
    } buttons[] = {{"NewActionButton", "New action…", &AppComponents::NewAction},
                   {"ShowQueueButton", "Queue", &AppComponents::ShowQueue}};
    for (const auto& entry : buttons) {
        auto* button = new QPushButton(QString::fromUtf8(entry.title), app_->window());
        button->setObjectName(QString::fromLatin1(entry.name));
        button->setAccessibleName(QString::fromLatin1(entry.name));
        connect(button, &QPushButton::clicked, this, entry.slot);
        app_->window()->buttonRow()->addWidget(button);
    }

    QMenu* bins = bar->addMenu(QStringLiteral("&Bins"));
    const struct {
        int tag;
        const char* name;
        const char* title;
    } openers[] = {{1, "OpenAVBIntersect", "Intersect with bins…"},
                   {2, "OpenAVBSubtract", "Subtract bins…"},
                   {3, "OpenAVBAdd", "Add bins…"}};
    for (const auto& opener : openers) {
        QAction* action = bins->addAction(QString::fromUtf8(opener.title));
        action->setObjectName(QString::fromUtf8(opener.name));
        const int tag = opener.tag;
        connect(action, &QAction::triggered, bins_, [this, tag] { bins_->OpenAVB(tag); });
    }
    add(bins, QStringLiteral("parseAmaLinksinBin"), QStringLiteral("AMA links in bin…"),
        [this] { bins_->parseAmaLinksinBin(); });

    QMenu* help = bar->addMenu(QStringLiteral("&Help"));
    add(help, QStringLiteral("OpenHelp"), QStringLiteral("Tarn web site"),
        [] { TarnAppCommands::OpenHelp(); });
    add(help, QStringLiteral("PushmeButton"), QStringLiteral("Check for a newer version"),
        &AppComponents::PushmeButton);
    add(help, QStringLiteral("showAbout"), QStringLiteral("About Tarn"), &AppComponents::showAbout);
}

void AppComponents::republish() {
    app_->coreAccess()->change([](TarnCore&) {});
}

QList<TarnItemPtr> AppComponents::selectedItems() const {
    return app_->window()->databaseTable()->getSelectedItemsArray();
}

QStringList AppComponents::selectedExistingPaths() const {
    return TarnExternalHandoff::existingPathsOfItems(selectedItems());
}

void AppComponents::NewAction() {
    actions_->NewAction(selectedItems());
}

void AppComponents::ShowQueue() {
    actions_->ShowQueue();
}

void AppComponents::OpenInExternalApp() {
    launcher_->OpenInExternalApp(selectedExistingPaths());
}

void AppComponents::ExecuteApplescript() {
    launcher_->ExecuteApplescript(selectedExistingPaths());
}

void AppComponents::PushmeButton() {
    version_->checkTarnVersion();
}

void AppComponents::ShowMDBDeleteWindow() {
    QMetaObject::invokeMethod(
        this, [this] { databases_->showWindow(app_->window()); }, Qt::QueuedConnection);
}

void AppComponents::showAbout() {
    TarnAboutBox about(app_->window());
    about.exec();
}
