#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPushButton>

#include "AppTestKit.h"
#include "actions/TarnNewActionWindow.h"
#include "console/xConsoleWindow.h"
#include "console/xLog.h"
#include "log/xConsole.h"
#include "support/TarnUtilities.h"
#include "window/AppComponents.h"
#include "window/UncaughtErrorHandler.h"

#include <stdexcept>

using namespace apptest;

TEST_F(AppTest, StartsEmptyWithTheVersionAndTheSystemInTheLog) {
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(table().rowCount(), 0);
    EXPECT_EQ(window().versionLabel()->text(), TarnUtilities::versionText());
    EXPECT_TRUE(window().versionLabel()->text().startsWith("v"));
    EXPECT_TRUE(xConsole::sharedInstance()->contents().contains("OSXVersion:"));
}

TEST_F(AppTest, NamedControlsCarryTheirNames) {
    expectNamedControls(
        window(),
        "DatabaseTable SummaryTable searchField itemsCountText VersionLabel BigRedButton "
        "SmallRedButton ToolsButton ServiceView InfoTextField CentralProgressWheel FilterSheet "
        "ProjectFilterTable FilterSelectAllButton ShowOnlyPrecomputesCheckBox "
        "ShowOnlyImportedMediaCheckbox ShowOnlyAudioMediaCheckbox ShowOnlyNonPortableCheckBox "
        "ShowOnlyBadUMIDCheckbox ShowOnlyUnreferencedMediaCheckbox Preferences "
        "PropertiesExistingFiles PropertiesScanMDB PropertiesScanMXF ExternalBundleTextField "
        "ApplescriptTextview ProjectsSummaryWindow ProjectSumaryTable NewActionButton");
}

TEST_F(AppTest, ArgumentsNameWhatToScan) {
    struct Case {
        QStringList args;
        AppDelegate::StartResult result;
        bool scans;
    };
    const QString root = demoRoot();
    const Case cases[] = {
        {{"--volume", root}, AppDelegate::StartResult::Started, true},
        {{root + "/Avid MediaFiles"}, AppDelegate::StartResult::Started, true},
        {{"--volume"}, AppDelegate::StartResult::BadArguments, false},
        {{"--bogus"}, AppDelegate::StartResult::BadArguments, false},
        {{"--help"}, AppDelegate::StartResult::HelpShown, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(' ').toStdString());
        TarnCore core;
        AppDelegate app(&core);
        ASSERT_EQ(app.start(QStringList{"tarn-app"} + c.args), c.result);
        if (!c.scans) continue;
        waitUntil([&] {
            return !TarnStatusViewController::getTheController()->isRunning() &&
                   app.databaseModel()->rowCount() > 0;
        });
        EXPECT_EQ(app.window()->itemsCountText()->text(),
                  app.summaryModel()->text("Items In Database"));
    }
}

TEST_F(AppTest, ToolsMenuHoldsItsItemsInOrder) {
    QMenu* menu = app_->buildToolsMenu(&window());
    EXPECT_EQ(menu->title(), "Contextual Menu");
    QStringList titles;
    for (QAction* action : menu->actions()) {
        titles << (action->isSeparator() ? "-" : action->text());
        EXPECT_TRUE(action->shortcut().isEmpty());
    }
    EXPECT_EQ(titles, (QStringList{"Show Projects Summary", "Export database view", "-",
                                   "MDB/OMF Inspector", "Scan single folder"}));
    // The export submenu holds the export menu's four items.
    QMenu* exports = menu->actions().at(1)->menu();
    ASSERT_NE(exports, nullptr);
    EXPECT_TRUE(menu->actions().at(1)->isEnabled());
    EXPECT_EQ(exports->actions().size(), 4);

    // The inspector is another window's: the command asks for it. The
    // console opens from its command.
    QSignalSpy inspector(app_.get(), &AppDelegate::inspectorRequested);
    QSignalSpy console(app_.get(), &AppDelegate::consoleRequested);
    xConsoleWindow* consoleWindow = app_->components()->console();
    EXPECT_FALSE(consoleWindow->isVisible());
    menu->actions().at(3)->trigger();
    window().command("showConsole")->trigger();
    waitUntil([&] { return inspector.count() == 1 && consoleWindow->isVisible(); });
    EXPECT_EQ(console.count(), 1);
    consoleWindow->flushLog();
    EXPECT_TRUE(consoleWindow->theLog()->toPlainText().contains("OSXVersion:"));
}

// Clearing empties the view and the log. The AMA scan clears the database
// first, like the all-volumes scan; a missing folder leaves it empty.
TEST_F(AppTest, ClearAndAmaScanEmptyTheView) {
    for (bool ama : {false, true}) {
        SCOPED_TRACE(ama ? "AMA scan" : "clear");
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
        if (ama) {
            EXPECT_TRUE(window().statusStrip()->text().startsWith("Execution Time: "));
        } else {
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
    EXPECT_TRUE(sheet->isVisible());
    sheet->reject();
}

// The alert of an error nothing handled names the error and its reason; a
// throw of anything but an exception is "UncaughtException".
TEST(UncaughtError, AlertNamesTheErrorAndItsReason) {
    struct Case {
        std::exception_ptr error;
        QString name;
        QString reason;
    };
    const Case cases[] = {
        {std::make_exception_ptr(std::runtime_error("disk gone")), "std::runtime_error",
         "disk gone"},
        {std::make_exception_ptr(std::bad_alloc()), "std::bad_alloc", "std::bad_alloc"},
        {std::make_exception_ptr(42), QString(), QString()},
    };
    for (const Case& c : cases) {
        QString name;
        QString reason;
        UncaughtErrorHandler::describe(c.error, &name, &reason);
        EXPECT_EQ(name, c.name);
        EXPECT_EQ(reason, c.reason);
    }
}
