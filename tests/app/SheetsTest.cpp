#include <future>

#include "AppTestKit.h"
#include "database/TarnScannerQueue.h"
#include "sheets/FilterSheet.h"
#include "sheets/PreferencesSheet.h"
#include "status/ProgressWheel.h"

using namespace apptest;

TEST_F(AppTest, FilterSheetBoxesFilterTheTable) {
    scanDemo();
    const int all = table().rowCount();
    window().databaseTable()->selectRow(1);
    app_->filters()->ShowFilter();
    FilterSheet* sheet = app_->filters()->filterSheet();
    ASSERT_TRUE(sheet->isVisible());
    EXPECT_EQ(summary("Selected Items"), "1");  // opening the sheet changes no row

    sheet->flagBox(FilterSheet::Flag::AudioMedia)->click();
    const QStringList kinds = columnTexts(*app_, TarnColumn::Compression);
    EXPECT_GT(kinds.size(), 0);
    EXPECT_EQ(kinds, QStringList(kinds.size(), "Audio"));

    // Untick the first project: its rows go, it stays listed.
    QAbstractItemModel* list = sheet->projectFilterTable()->model();
    const QString first = list->index(0, 1).data().toString();
    list->setData(list->index(0, 0), Qt::Unchecked, Qt::CheckStateRole);
    EXPECT_FALSE(columnTexts(*app_, TarnColumn::Project).contains(first));
    EXPECT_EQ(list->index(0, 1).data().toString(), first);
    sheet->selectAllButton()->click();
    EXPECT_EQ(sheet->selectAllButton()->text(), "Select all");
    EXPECT_EQ(table().rowCount(), 0);

    // Reset: every box clear, every row back, the search field empty.
    window().searchField()->setText("harbour");
    app_->filters()->ResetFilterState();
    EXPECT_FALSE(sheet->flagBox(FilterSheet::Flag::AudioMedia)->isChecked());
    EXPECT_TRUE(window().searchField()->text().isEmpty());
    EXPECT_EQ(table().rowCount(), all);
    EXPECT_EQ(sheet->selectAllButton()->text(), "Deselect all");
    app_->filters()->CloseFilter();
    EXPECT_FALSE(sheet->isVisible());
}

TEST_F(AppTest, PreferencesAreStoredAsTheyChangeAndNoSecondSheetOpens) {
    scanDemo();
    const int existing = table().rowCount();
    app_->preferences()->ShowPreferences();
    PreferencesSheet* sheet = app_->preferences()->preferencesSheet();
    ASSERT_TRUE(sheet->isVisible());
    // A second sheet is refused with the "Pop" sound.
    const int pops = app_->guard()->popCount();
    app_->filters()->ShowFilter();
    app_->scans()->beginAllScan();
    app_->ShowProjectsSummary();
    EXPECT_EQ(app_->guard()->popCount(), pops + 3);
    EXPECT_FALSE(app_->filters()->filterSheet()->isVisible());
    EXPECT_FALSE(app_->guard()->busy());
    // Showing missing files too brings their rows in at once.
    sheet->propertiesExistingFiles()->click();
    EXPECT_EQ(TarnPreferences::shared()->integer("ShowOnlyExistingFiles"), 0);
    EXPECT_GT(table().rowCount(), existing);

    sheet->externalBundleTextField()->setText("org.example.player");
    emit sheet->externalBundleTextField()->editingFinished();
    EXPECT_EQ(TarnPreferences::shared()->string("ExternalAppBundleID"), "org.example.player");
    sheet->applescriptTextview()->setPlainText("echo mine");
    app_->preferences()->SaveScript();
    EXPECT_EQ(TarnPreferences::shared()->string("ExtApplescript"), "echo mine");
    app_->preferences()->ResetScript();
    EXPECT_EQ(sheet->applescriptTextview()->toPlainText(), TarnPreferences::basescript());
    // Which files a scan reads.
    sheet->propertiesScanMDB()->click();
    sheet->propertiesScanMXF()->click();
    EXPECT_EQ(TarnPreferences::shared()->integer("ScanMDB"), 0);
    EXPECT_EQ(TarnPreferences::shared()->integer("ScanMXF"), 0);
    sheet->findChild<QPushButton*>("ClosePreferences")->click();
    EXPECT_FALSE(sheet->isVisible());
    app_->preferences()->ShowPreferences();

    bool quit = false;
    app_->preferences()->setTerminate([&quit] { quit = true; });
    app_->preferences()->ResetPreferencesToDefaults();
    EXPECT_TRUE(quit);
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(TarnPreferences::shared()->integer("ShowOnlyExistingFiles"), 1);
    EXPECT_EQ(TarnPreferences::shared()->integer("ScanMDB"), 1);
}

// While a scan runs (held here by a task ahead of it in the scanner's queue),
// the commands with a busy guard do nothing and the view stays what it was;
// the window keeps answering.
TEST_F(AppTest, CommandsDoNothingWhileAScanRuns) {
    scanDemo();
    const QStringList before = columnTexts(*app_, TarnColumn::Path);
    ASSERT_FALSE(before.isEmpty());
    std::promise<void> gate;
    TarnScannerQueue::shared()->addOperation(
        QRunnable::create([opened = gate.get_future().share()] { opened.wait(); }));
    QSignalSpy ended(app_->scans(), &ScanCommands::scanEnded);
    app_->scans()->scanPaths({demoRoot()});
    ASSERT_TRUE(app_->guard()->busy());
    QCoreApplication::processEvents();
    EXPECT_TRUE(window().statusStrip()->bigWheel()->isSpinning());

    app_->ClearDatabase();
    app_->filters()->ShowFilter();
    app_->preferences()->ShowPreferences();
    app_->scans()->beginAllScan();
    app_->scans()->scanAMAManagementFolder();
    app_->filters()->ChangeFilterState(FilterSheet::Flag::AudioMedia, true);
    app_->sortDescriptorsDidChange({{"filesize", false}});
    QTest::keyClicks(window().searchField(), "harb");
    QCoreApplication::processEvents();

    EXPECT_EQ(columnTexts(*app_, TarnColumn::Path), before);
    EXPECT_FALSE(window().showsSheet());
    EXPECT_EQ(app_->scans()->volumeSelector(), nullptr);
    EXPECT_FALSE(TarnFilter::sharedFilter()->filterFlagAudioMedia());
    EXPECT_TRUE(window().databaseTable()->sortDescriptors().isEmpty());
    EXPECT_EQ(ended.count(), 0);

    gate.set_value();
    waitUntil([&] { return ended.count() > 0; });
    EXPECT_FALSE(app_->guard()->busy());
    // The same files again: each is kept once. The search typed meanwhile
    // filters once the scan is over.
    EXPECT_EQ(summary("Items In Database"), QString::number(core_.getAllItemsCount()));
    EXPECT_TRUE(window().statusStrip()->text().startsWith("Execution Time: "));
    window().searchField()->clear();
    EXPECT_EQ(columnTexts(*app_, TarnColumn::Path), before);
}
