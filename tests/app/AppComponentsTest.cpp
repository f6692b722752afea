#include <QDirIterator>
#include <QDropEvent>
#include <QMimeData>
#include <QPushButton>
#include <QUrl>

#include <gtest/gtest.h>

#include "AppTestKit.h"
#include "actions/TarnNewActionWindow.h"
#include "console/xConsoleWindow.h"
#include "console/xLog.h"
#include "window/AppComponents.h"

using namespace apptest;

namespace {

QString firstDemoBin() {
    QDirIterator it(demoRoot(), {"*.avb"}, QDir::Files, QDirIterator::Subdirectories);
    return it.hasNext() ? it.next() : QString();
}

// A bin dragged from the file manager and dropped on the table area.
void dropOn(QWidget* area, const QString& bin) {
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(bin)});
    const Qt::DropActions offered = Qt::CopyAction | Qt::MoveAction | Qt::LinkAction;
    QDragEnterEvent enter(QPoint(50, 50), offered, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(area, &enter);
    QDropEvent drop(QPoint(50, 50), offered, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(area, &drop);
    QCoreApplication::sendPostedEvents();
}

}  // namespace

// The pieces around the main window act on what the window shows: a bin
// dropped on the table narrows the table itself, the new-action sheet gets
// the selected rows, and the console opens from its command.
TEST_F(AppTest, BinDroppedOnTheWindowNarrowsTheShownRows) {
    scanDemo();
    const int before = table().rowCount();
    const QString bin = firstDemoBin();
    ASSERT_FALSE(bin.isEmpty());
    dropOn(window().databaseArea(), bin);
    waitUntil([&] { return table().rowCount() != before; });
    EXPECT_GT(table().rowCount(), 0);
    EXPECT_EQ(text(*app_->summaryModel(), 0, 2), QString::number(table().rowCount()));
}

TEST_F(AppTest, NewActionButtonOpensTheSheetOnTheSelection) {
    scanDemo();
    window().databaseTable()->selectAll();
    EXPECT_EQ(app_->components()->selectedItems().size(), table().rowCount());
    auto* button = window().findChild<QPushButton*>("NewActionButton");
    ASSERT_NE(button, nullptr);
    button->click();
    auto* sheet = window().findChild<TarnNewActionWindow*>();
    ASSERT_NE(sheet, nullptr);
    EXPECT_TRUE(sheet->isVisible());
    sheet->reject();
}

TEST_F(AppTest, ConsoleCommandShowsTheConsole) {
    xConsoleWindow* console = app_->components()->console();
    EXPECT_FALSE(console->isVisible());
    window().command("showConsole")->trigger();
    waitUntil([&] { return console->isVisible(); });
    console->flushLog();
    EXPECT_TRUE(console->theLog()->toPlainText().contains("OSXVersion:"));
}
