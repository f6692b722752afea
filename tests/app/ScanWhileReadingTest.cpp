#include <QTableView>

#include "AppTestKit.h"
#include "window/DatabaseTableView.h"

using apptest::AppTest;

namespace {

// Every cell of a model, as a view painting it would ask.
int readAll(const QAbstractItemModel& model) {
    int texts = 0;
    for (int row = 0; row < model.rowCount(); ++row) {
        for (int column = 0; column < model.columnCount(); ++column) {
            texts += model.data(model.index(row, column)).toString().isEmpty() ? 0 : 1;
            model.data(model.index(row, column), Qt::DecorationRole);
        }
    }
    return texts;
}

}  // namespace

// The window reads only the published view: a scan that adds to the
// database (and so rewrites the items the view shows) runs on its threads
// while every model is read and the table painted. Run under
// ThreadSanitizer, this shows that nothing is read while it is written.
TEST_F(AppTest, TheViewIsReadWhileAScanRewritesTheDatabase) {
    scanDemo();
    const QStringList before = apptest::columnTexts(*app_, TarnColumn::Path);
    const int cells = readAll(table());

    QSignalSpy ended(app_->scans(), &ScanCommands::scanEnded);
    app_->scans()->scanPaths({apptest::demoRoot()});
    int passes = 0;
    while (ended.count() == 0) {
        EXPECT_EQ(readAll(table()), cells);
        readAll(*app_->summaryModel());
        readAll(*app_->projectSummaryModel());
        readAll(*app_->projectFilterModel());
        window().databaseTable()->viewport()->repaint();
        window().databaseTable()->selectAll();
        QCoreApplication::processEvents();
        ++passes;
    }
    EXPECT_GT(passes, 0);
    EXPECT_EQ(apptest::columnTexts(*app_, TarnColumn::Path), before);
    EXPECT_EQ(readAll(table()), cells);
}
