#include <QLineEdit>
#include <QRunnable>
#include <QTest>

#include <future>
#include <utility>

#include "AppTestKit.h"
#include "database/TarnScannerQueue.h"
#include "models/SummaryTableModel.h"
#include "sheets/FilterSheet.h"
#include "sheets/PreferencesSheet.h"
#include "status/ProgressWheel.h"
#include "status/StatusStrip.h"
#include "window/CommandGuard.h"
#include "window/DatabaseTableView.h"
#include "window/FilterCommands.h"
#include "window/PreferencesCommands.h"

using namespace apptest;

namespace {

// Holds the scanner queue, and with it the scan, until released.
struct QueueGate {
    QueueGate() {
        TarnScannerQueue::shared()->addOperation(
            QRunnable::create([opened = open.get_future().share()] { opened.wait(); }));
    }
    ~QueueGate() { release(); }
    void release() {
        if (!std::exchange(released, true)) open.set_value();
    }
    std::promise<void> open;
    bool released = false;
};

}  // namespace

// While a scan runs, the commands with a busy guard do nothing and the view
// stays what it was; the window keeps answering.
TEST_F(AppTest, CommandsDoNothingWhileAScanRuns) {
    scanDemo();
    const QStringList before = columnTexts(*app_, TarnColumn::Path);
    ASSERT_FALSE(before.isEmpty());

    QSignalSpy ended(app_->scans(), &ScanCommands::scanEnded);
    QueueGate gate;
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

    gate.release();
    waitUntil([&] { return ended.count() > 0; });
    EXPECT_FALSE(app_->guard()->busy());
    // The same files again: each is kept once. The search typed meanwhile
    // filters once the scan is over.
    EXPECT_EQ(app_->summaryModel()->text("Items In Database"),
              QString::number(core_.getAllItemsCount()));
    EXPECT_TRUE(window().statusStrip()->text().startsWith("Execution Time: "));
    window().searchField()->clear();
    EXPECT_EQ(columnTexts(*app_, TarnColumn::Path), before);
}

// A second sheet is refused with the "Pop" sound.
TEST_F(AppTest, ASecondSheetPops) {
    app_->preferences()->ShowPreferences();
    ASSERT_TRUE(app_->preferences()->preferencesSheet()->isVisible());
    const int pops = app_->guard()->popCount();
    app_->filters()->ShowFilter();
    app_->scans()->beginAllScan();
    app_->ShowProjectsSummary();
    EXPECT_EQ(app_->guard()->popCount(), pops + 3);
    EXPECT_FALSE(app_->filters()->filterSheet()->isVisible());
    EXPECT_FALSE(app_->guard()->busy());
    app_->preferences()->ClosePreferences();
    app_->filters()->ShowFilter();
    EXPECT_TRUE(app_->filters()->filterSheet()->isVisible());
    app_->filters()->CloseFilter();
}
