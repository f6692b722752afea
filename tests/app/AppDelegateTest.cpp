#include <QLabel>
#include <QLineEdit>
#include <QMenu>

#include "WindowTestKit.h"
#include "TestSupport.h"
#include "log/xConsole.h"
#include "models/SummaryTableModel.h"
#include "support/TarnUtilities.h"
#include "window/DatabaseTableView.h"
#include "window/FilterCommands.h"
#include "window/PreferencesCommands.h"
#include "window/UncaughtErrorHandler.h"

#include <stdexcept>

using apptest::AppTest;

TEST_F(AppTest, StartsEmptyWithTheVersionAndTheSystemInTheLog) {
    EXPECT_TRUE(window().isVisible());
    EXPECT_EQ(table().rowCount(), 0);
    EXPECT_EQ(window().versionLabel()->text(), TarnUtilities::versionText());
    EXPECT_TRUE(window().versionLabel()->text().startsWith(QLatin1String("v")));
    EXPECT_TRUE(xConsole::sharedInstance()->contents().contains(QLatin1String("OSXVersion:")));
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
    const QString root = apptest::demoRoot();
    const Case cases[] = {
        {{QStringLiteral("--volume"), root}, AppDelegate::StartResult::Started, true},
        {{root + QStringLiteral("/Avid MediaFiles")}, AppDelegate::StartResult::Started, true},
        {{QStringLiteral("--volume")}, AppDelegate::StartResult::BadArguments, false},
        {{QStringLiteral("--bogus")}, AppDelegate::StartResult::BadArguments, false},
        {{QStringLiteral("--help")}, AppDelegate::StartResult::HelpShown, false},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.args.join(QLatin1Char(' ')).toStdString());
        TarnCore core;
        AppDelegate app(&core);
        ASSERT_EQ(app.start(QStringList{QStringLiteral("tarn-app")} + c.args), c.result);
        if (!c.scans) continue;
        apptest::waitUntil([&] {
            return !TarnStatusViewController::getTheController()->isRunning() &&
                   app.databaseModel()->rowCount() > 0;
        });
        EXPECT_EQ(app.window()->itemsCountText()->text(),
                  app.summaryModel()->text(QStringLiteral("Items In Database")));
    }
}

TEST_F(AppTest, ToolsMenuHoldsItsItemsInOrder) {
    QMenu* menu = app_->buildToolsMenu(&window());
    EXPECT_EQ(menu->title(), QStringLiteral("Contextual Menu"));
    QStringList titles;
    for (QAction* action : menu->actions()) {
        titles << (action->isSeparator() ? QStringLiteral("-") : action->text());
        EXPECT_TRUE(action->shortcut().isEmpty());
    }
    EXPECT_EQ(titles, (QStringList{QStringLiteral("Show Projects Summary"),
                                   QStringLiteral("Export database view"), QStringLiteral("-"),
                                   QStringLiteral("MDB/OMF Inspector"),
                                   QStringLiteral("Scan single folder")}));
    // The export submenu holds the export menu's four items.
    QMenu* exports = menu->actions().at(1)->menu();
    ASSERT_NE(exports, nullptr);
    EXPECT_TRUE(menu->actions().at(1)->isEnabled());
    EXPECT_EQ(exports->actions().size(), 4);

    // The inspector and the console are other windows': the commands ask for them.
    QSignalSpy inspector(app_.get(), &AppDelegate::inspectorRequested);
    QSignalSpy console(app_.get(), &AppDelegate::consoleRequested);
    menu->actions().at(3)->trigger();
    window().command(QStringLiteral("showConsole"))->trigger();
    apptest::waitUntil([&] { return inspector.count() == 1 && console.count() == 1; });
}

// The AMA scan clears the database first, like the all-volumes scan; a
// missing folder leaves it empty.
TEST_F(AppTest, AmaScanStartsFromAnEmptyDatabase) {
    scanDemo();
    ASSERT_GT(table().rowCount(), 0);
    scanWith([this] { app_->scans()->scanAMAManagementFolder(); });
    EXPECT_EQ(table().rowCount(), 0);
    EXPECT_EQ(window().itemsCountText()->text(), QStringLiteral("0"));
    EXPECT_TRUE(window().statusStrip()->text().startsWith(QLatin1String("Execution Time: ")));
}

TEST_F(AppTest, ClearDatabaseEmptiesTheViewAndTheLog) {
    scanDemo();
    ASSERT_GT(table().rowCount(), 0);
    xConsole::xPrint(QStringLiteral("before the clear\n"));
    app_->ClearDatabase();
    EXPECT_EQ(table().rowCount(), 0);
    EXPECT_EQ(window().itemsCountText()->text(), QStringLiteral("0"));
    EXPECT_EQ(app_->summaryModel()->text(QStringLiteral("Items In Database")), QStringLiteral("0"));
    EXPECT_FALSE(
        xConsole::sharedInstance()->contents().contains(QLatin1String("before the clear")));
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
        {std::make_exception_ptr(std::runtime_error("disk gone")),
         QStringLiteral("std::runtime_error"), QStringLiteral("disk gone")},
        {std::make_exception_ptr(std::bad_alloc()), QStringLiteral("std::bad_alloc"),
         QStringLiteral("std::bad_alloc")},
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
