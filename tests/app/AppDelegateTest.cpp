#include <QLabel>
#include <QLineEdit>
#include <QMenu>

#include "AppTestKit.h"
#include "TestSupport.h"
#include "log/xConsole.h"
#include "models/SummaryTableModel.h"
#include "support/TarnUtilities.h"
#include "window/DatabaseTableView.h"
#include "window/FilterCommands.h"
#include "window/PreferencesCommands.h"
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

// Every control the program names carries that name for screen readers and
// UI tests.
TEST_F(AppTest, NamedControlsCarryTheirNames) {
    for (const char* name : {"DatabaseTable",
                             "SummaryTable",
                             "searchField",
                             "itemsCountText",
                             "VersionLabel",
                             "BigRedButton",
                             "SmallRedButton",
                             "ToolsButton",
                             "ServiceView",
                             "InfoTextField",
                             "CentralProgressWheel",
                             "FilterSheet",
                             "ProjectFilterTable",
                             "FilterSelectAllButton",
                             "ShowOnlyPrecomputesCheckBox",
                             "ShowOnlyImportedMediaCheckbox",
                             "ShowOnlyAudioMediaCheckbox",
                             "ShowOnlyNonPortableCheckBox",
                             "ShowOnlyBadUMIDCheckbox",
                             "ShowOnlyUnreferencedMediaCheckbox",
                             "Preferences",
                             "PropertiesExistingFiles",
                             "PropertiesScanMDB",
                             "PropertiesScanMXF",
                             "ExternalBundleTextField",
                             "ApplescriptTextview",
                             "ProjectsSummaryWindow",
                             "ProjectSumaryTable"}) {
        SCOPED_TRACE(name);
        const QString wanted = QString::fromLatin1(name);
        QWidget* widget =
            window().objectName() == wanted ? &window() : window().findChild<QWidget*>(wanted);
        ASSERT_NE(widget, nullptr);
        EXPECT_EQ(widget->accessibleName(), wanted);
    }
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

    // The inspector and the console are other windows': the commands ask for them.
    QSignalSpy inspector(app_.get(), &AppDelegate::inspectorRequested);
    QSignalSpy console(app_.get(), &AppDelegate::consoleRequested);
    menu->actions().at(3)->trigger();
    window().command("showConsole")->trigger();
    waitUntil([&] { return inspector.count() == 1 && console.count() == 1; });
}

// The AMA scan clears the database first, like the all-volumes scan; a
// missing folder leaves it empty.
TEST_F(AppTest, AmaScanStartsFromAnEmptyDatabase) {
    scanDemo();
    ASSERT_GT(table().rowCount(), 0);
    scanWith([this] { app_->scans()->scanAMAManagementFolder(); });
    EXPECT_EQ(table().rowCount(), 0);
    EXPECT_EQ(window().itemsCountText()->text(), "0");
    EXPECT_TRUE(window().statusStrip()->text().startsWith("Execution Time: "));
}

TEST_F(AppTest, ClearDatabaseEmptiesTheViewAndTheLog) {
    scanDemo();
    ASSERT_GT(table().rowCount(), 0);
    xConsole::xPrint("before the clear\n");
    app_->ClearDatabase();
    EXPECT_EQ(table().rowCount(), 0);
    EXPECT_EQ(window().itemsCountText()->text(), "0");
    EXPECT_EQ(app_->summaryModel()->text("Items In Database"), "0");
    EXPECT_FALSE(xConsole::sharedInstance()->contents().contains("before the clear"));
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
