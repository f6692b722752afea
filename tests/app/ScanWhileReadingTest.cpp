#include "AppTestKit.h"
#include "MediaItems.h"
#include "window/CoreAccess.h"

using namespace apptest;

namespace {

// The first rows of a model, every column, as a view painting its first
// screen would ask.
void readFirstScreen(const QAbstractItemModel& model) {
    for (int row = 0; row < std::min(model.rowCount(), 40); ++row) {
        for (int column = 0; column < model.columnCount(); ++column) {
            model.data(model.index(row, column));
            model.data(model.index(row, column), Qt::DecorationRole);
        }
    }
}

}  // namespace

// The window reads only the published view. A scan that adds to a database
// of 20,000 items rewrites the items, the order and the shown rows on its
// own threads for a while, and all that time the models are read. Run under
// ThreadSanitizer this shows that the window reads nothing the scan writes.
TEST_F(AppTest, TheViewIsReadWhileAScanRewritesTheDatabase) {
    const QList<TarnItemPtr> items = fixtures::makeMediaItems(20000);
    {
        std::lock_guard<std::mutex> guard(core_.theCoreLock());
        core_.AddItemsFromArray(items);
    }
    core_.LoadDefaults();
    app_->coreAccess()->publish();
    ASSERT_EQ(table().rowCount(), items.size());

    QSignalSpy ended(app_->scans(), &ScanCommands::scanEnded);
    app_->scans()->scanPaths({demoRoot()});
    int passes = 0;
    // The busy flag is cleared after the scan's last touch of the database.
    while (app_->guard()->busy()) {
        readFirstScreen(table());
        readFirstScreen(*app_->summaryModel());
        readFirstScreen(*app_->projectSummaryModel());
        readFirstScreen(*app_->projectFilterModel());
        EXPECT_EQ(table().rowCount(), items.size());
        ++passes;
    }
    waitUntil([&] { return ended.count() > 0; });
    EXPECT_GT(passes, 0);
    EXPECT_GT(table().rowCount(), items.size());
    EXPECT_EQ(summary("Items In Database"), QString::number(core_.getAllItemsCount()));
}
