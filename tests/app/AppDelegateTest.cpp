#include "AppTestKit.h"
#include "actions/TarnActionCommands.h"
#include "actions/TarnNewActionWindow.h"
#include "console/xConsoleWindow.h"
#include "console/xLog.h"
#include "databases/TarnMDBB_Delete.h"
#include "log/xConsole.h"
#include "shell/TarnAboutBox.h"
#include "shell/TarnAppResources.h"
#include "window/AppComponents.h"
#include "window/UncaughtErrorHandler.h"

#include <stdexcept>

using namespace apptest;

// Each named control carries its name as accessible name too, for screen
// readers and UI tests.
TEST_F(AppTest, NamedControlsCarryTheirNames) {
    AppComponents& parts = *app_->components();
    TarnNewActionWindow sheet(QList<TarnItemPtr>{});
    const std::pair<QWidget*, const char*> cases[] = {
        {&window(),
         "DatabaseTable SummaryTable searchField itemsCountText VersionLabel BigRedButton "
         "SmallRedButton ToolsButton ServiceView InfoTextField CentralProgressWheel FilterSheet "
         "ProjectFilterTable FilterSelectAllButton ShowOnlyPrecomputesCheckBox "
         "ShowOnlyImportedMediaCheckbox ShowOnlyAudioMediaCheckbox ShowOnlyNonPortableCheckBox "
         "ShowOnlyBadUMIDCheckbox ShowOnlyUnreferencedMediaCheckbox Preferences "
         "PropertiesExistingFiles PropertiesScanMDB PropertiesScanMXF ExternalBundleTextField "
         "ApplescriptTextview ProjectsSummaryWindow ProjectSumaryTable NewActionButton"},
        {parts.console(),
         "theLog ConsoleSearchField HowManyFound GotoNextSelection pushHelp "
         "pushReadme pushClear"},
        {&sheet,
         "RadioCopy RadioMove RadioDelete CheckProjects CheckMXF CheckKeepOriginalFolders "
         "CheckKeepPMR CheckImSure summaryText destinationText Select GO Cancel"},
        {parts.actions()->Queue(), "QueueTable Clear popover popoverText"},
        {parts.databaseWindow(), "tableView Close Delete summaryText"},
    };
    for (const auto& [root, names] : cases) {
        for (const QString& name : QString(names).split(' ')) {
            QWidget* widget = root->findChild<QWidget*>(name);
            ASSERT_NE(widget, nullptr) << name.toStdString();
            EXPECT_EQ(widget->accessibleName(), name);
        }
    }
}

TEST_F(AppTest, ArgumentsNameWhatToScan) {
    using Result = AppDelegate::StartResult;
    const QString root = demoRoot();
    const std::pair<QStringList, Result> cases[] = {
        {{"--volume", root}, Result::Started}, {{root + "/Avid MediaFiles"}, Result::Started},
        {{"--volume"}, Result::BadArguments},  {{"--bogus"}, Result::BadArguments},
        {{"--help"}, Result::HelpShown},
    };
    for (const auto& [args, result] : cases) {
        SCOPED_TRACE(args.join(' ').toStdString());
        TarnCore core;
        AppDelegate app(&core);
        ASSERT_EQ(app.start(QStringList{"tarn-app"} + args), result);
        if (result != Result::Started) continue;
        waitUntil([&] {
            return !TarnStatusViewController::getTheController()->isRunning() &&
                   app.databaseModel()->rowCount() > 0;
        });
        EXPECT_EQ(app.window()->itemsCountText()->text(),
                  app.summaryModel()->text("Items In Database"));
    }
}

// The window starts empty with the version shown and the system in the log.
// The inspector is another window's: its command asks for it. The console
// opens from its own command.
TEST_F(AppTest, StartsEmptyAndOpensTheToolsAndTheConsole) {
    EXPECT_EQ(table().rowCount(), 0);
    EXPECT_TRUE(window().versionLabel()->text().startsWith("v"));
    EXPECT_TRUE(xConsole::sharedInstance()->contents().contains("OSXVersion:"));
    QMenu* menu = app_->buildToolsMenu(&window());
    QStringList titles;
    for (QAction* action : menu->actions()) titles << action->text();
    EXPECT_EQ(titles, (QStringList{"Show Projects Summary", "Export database view", "",
                                   "MDB/OMF Inspector", "Scan single folder"}));
    EXPECT_EQ(menu->actions().at(1)->menu()->actions().size(), 4);  // the export menu
    QSignalSpy inspector(app_.get(), &AppDelegate::inspectorRequested);
    xConsoleWindow* console = app_->components()->console();
    EXPECT_FALSE(console->isVisible());
    menu->actions().at(3)->trigger();
    window().command("showConsole")->trigger();
    waitUntil([&] { return inspector.count() == 1 && console->isVisible(); });
}

// Clearing empties the view and the log. The AMA scan clears the database
// first, like the all-volumes scan; a missing folder leaves it empty.
TEST_F(AppTest, ClearAndAmaScanEmptyTheView) {
    for (bool ama : {false, true}) {
        SCOPED_TRACE(ama);
        scanDemo();
        ASSERT_GT(table().rowCount(), 0);
        xConsole::xPrint("before the clear\n");
        if (ama)
            scanWith([this] { app_->scans()->scanAMAManagementFolder(); });
        else
            app_->ClearDatabase();
        EXPECT_EQ(table().rowCount(), 0);
        EXPECT_EQ(window().itemsCountText()->text(), "0");
        EXPECT_EQ(summary("Items In Database"), "0");
        if (!ama) {
            EXPECT_FALSE(xConsole::sharedInstance()->contents().contains("before the clear"));
        }
    }
}

TEST_F(AppTest, NewActionButtonOpensTheSheetOnTheSelection) {
    scanDemo();
    window().databaseTable()->selectAll();
    EXPECT_EQ(app_->components()->selectedItems().size(), table().rowCount());
    window().findChild<QPushButton*>("NewActionButton")->click();
    auto* sheet = window().findChild<TarnNewActionWindow*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(
        sheet->summary().startsWith(QString("will Copy \n%1 items").arg(table().rowCount())));
    sheet->reject();
}

// The alert of an error nothing handled names the error and its reason; a
// throw of anything but an exception is "UncaughtException".
TEST(UncaughtError, AlertNamesTheErrorAndItsReason) {
    const std::tuple<std::exception_ptr, QString, QString> cases[] = {
        {std::make_exception_ptr(std::runtime_error("disk gone")), "std::runtime_error",
         "disk gone"},
        {std::make_exception_ptr(std::bad_alloc()), "std::bad_alloc", "std::bad_alloc"},
        {std::make_exception_ptr(42), QString(), QString()},
    };
    for (const auto& [error, name, reason] : cases) {
        QString shownName, shownReason;
        UncaughtErrorHandler::describe(error, &shownName, &shownReason);
        EXPECT_EQ(QStringList({shownName, shownReason}), QStringList({name, reason}));
    }
}

// The images come from a resource file inside a static library: a link that
// drops its registration leaves them empty.
TEST(AppResources, IconsAndTheAboutBoxAreThere) {
    for (const auto& [icon, size] :
         {std::pair{TarnAppResources::videoIcon(), 32}, {TarnAppResources::applicationIcon(), 256}})
        EXPECT_EQ(icon.pixmap(size, size).size(), QSize(size, size)) << size;
    TarnAppResources::applyApplicationIdentity();
    EXPECT_EQ(QGuiApplication::desktopFileName(), "tarn");
    EXPECT_FALSE(QApplication::windowIcon().isNull());

    TarnAboutBox about;
    EXPECT_TRUE(about.findChild<QLabel*>("aboutVersion")
                    ->text()
                    .contains(QRegularExpression("^v\\d+\\.\\d+\\.\\d+ build \\d+$")));
    EXPECT_TRUE(about.findChild<QLabel*>("aboutLicence")->text().contains(qVersion()));
}
