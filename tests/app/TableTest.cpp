#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLineEdit>
#include <QSettings>
#include <QTest>

#include "AppTestKit.h"
#include "items/TarnFileSize.h"
#include "models/SummaryTableModel.h"
#include "window/ColumnMenu.h"
#include "window/DatabaseTableView.h"
#include "window/PreviewPopover.h"

using namespace apptest;

namespace {

// The paths of `tarn scan ROOT ARGS...` in its order.
QStringList cliPaths(const QStringList& args) {
    const QString out = tarnScan(QStringList{demoRoot()} + args + QStringList{"--format", "json"});
    QStringList paths;
    const QJsonArray items =
        QJsonDocument::fromJson(out.toUtf8()).object().value("items").toArray();
    for (const QJsonValue& item : items) {
        paths << item.toObject().value("path").toString();
    }
    return paths;
}

void clickHeader(DatabaseTableView* table, TarnColumn column) {
    QHeaderView* header = table->horizontalHeader();
    const int s = section(column);
    QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier,
                      QPoint(header->sectionViewportPosition(s) + header->sectionSize(s) / 2,
                             header->height() / 2));
}

}  // namespace

TEST_F(AppTest, HeaderClickSortsAndASecondClickTurnsTheOrder) {
    scanDemo();
    DatabaseTableView* view = window().databaseTable();
    clickHeader(view, TarnColumn::Filename);
    EXPECT_EQ(columnTexts(*app_, TarnColumn::Path), cliPaths({"--sort", "filename"}));
    EXPECT_EQ(view->horizontalHeader()->sortIndicatorSection(), section(TarnColumn::Filename));
    clickHeader(view, TarnColumn::Filename);
    EXPECT_EQ(columnTexts(*app_, TarnColumn::Path), cliPaths({"--sort", "filename:desc"}));
    // The earlier column breaks the ties of the new one.
    clickHeader(view, TarnColumn::Size);
    ASSERT_EQ(view->sortDescriptors().size(), 2);
    EXPECT_EQ(columnTexts(*app_, TarnColumn::Path),
              cliPaths({"--sort", "filesize", "--sort", "filename:desc"}));
    // Kind has no order of its own: the click changes nothing.
    const QStringList before = columnTexts(*app_, TarnColumn::Path);
    clickHeader(view, TarnColumn::Kind);
    EXPECT_EQ(columnTexts(*app_, TarnColumn::Path), before);
    EXPECT_EQ(view->horizontalHeader()->sortIndicatorSection(), section(TarnColumn::Size));
}

TEST_F(AppTest, TypingInTheSearchFieldFilters) {
    scanDemo();
    const int all = table().rowCount();
    QTest::keyClicks(window().searchField(), "HARB");
    const QStringList shown = columnTexts(*app_, TarnColumn::Path);
    EXPECT_LT(shown.size(), all);
    EXPECT_EQ(shown, cliPaths({"--search", "harb"}));
    EXPECT_EQ(app_->summaryModel()->text("Filtered Items"), QString::number(shown.size()));
    window().searchField()->clear();
    EXPECT_EQ(table().rowCount(), all);
}

TEST_F(AppTest, HiddenColumnsAreRememberedForTheNextWindow) {
    ColumnMenu* menu = window().databaseTable()->headerMenu();
    EXPECT_EQ(menu->actionFor("FilenameCellID"), nullptr);
    EXPECT_EQ(menu->actionFor("ClipnameCellID"), nullptr);
    // The defaults: UMIDs hidden, path shown.
    EXPECT_TRUE(window().databaseTable()->isColumnHidden(section(TarnColumn::FilePackageUID)));
    QAction* path = menu->actionFor("PathCellID");
    ASSERT_NE(path, nullptr);
    EXPECT_TRUE(path->isChecked());
    path->trigger();
    EXPECT_TRUE(window().databaseTable()->isColumnHidden(section(TarnColumn::Path)));
    EXPECT_FALSE(path->isChecked());

    const QVariantMap stored =
        QSettings(QString::fromLocal8Bit(qgetenv("TARN_SETTINGS")), QSettings::IniFormat)
            .value("kUserDefaultsKeyVisisbleColumns")
            .toMap();
    EXPECT_EQ(stored.value("PathCellID").toInt(), 0);
    EXPECT_EQ(stored.value("FilenameCellID").toInt(), 1);
    EXPECT_EQ(stored.size(), TarnColumns::all().size());

    TarnCore core;
    AppDelegate next(&core);
    ASSERT_EQ(next.start({"tarn-app"}), AppDelegate::StartResult::Started);
    EXPECT_TRUE(next.window()->databaseTable()->isColumnHidden(section(TarnColumn::Path)));
    EXPECT_FALSE(next.window()->databaseTable()->isColumnHidden(section(TarnColumn::Project)));
}

// A stored dictionary that lacks a column hides it, but never the file name
// or the clip name.
TEST_F(AppTest, ColumnsMissingFromTheStoredDictionaryStartHidden) {
    TarnPreferences::shared()->setValue("kUserDefaultsKeyVisisbleColumns",
                                        QVariantMap{{"ProjectCellID", 1}});
    TarnCore core;
    AppDelegate next(&core);
    ASSERT_EQ(next.start({"tarn-app"}), AppDelegate::StartResult::Started);
    const DatabaseTableView* view = next.window()->databaseTable();
    EXPECT_FALSE(view->isColumnHidden(section(TarnColumn::Project)));
    EXPECT_FALSE(view->isColumnHidden(section(TarnColumn::Filename)));
    EXPECT_FALSE(view->isColumnHidden(section(TarnColumn::Clipname)));
    EXPECT_TRUE(view->isColumnHidden(section(TarnColumn::Size)));
}

TEST_F(AppTest, SpaceBarPreviewsTheLastSelectedItem) {
    scanDemo();
    DatabaseTableView* view = window().databaseTable();
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Space);
    ASSERT_TRUE(view->previewPanel()->isShown());
    EXPECT_EQ(view->previewPanel()->text(), "no item selected");
    EXPECT_EQ(view->previewPanel()->width(), view->parentWidget()->width());

    view->selectRow(2);
    EXPECT_EQ(view->previewPanel()->text(),
              view->databaseModel()->snapshot().itemAt(2)->description());
    QTest::keyClick(view, Qt::Key_Space);
    EXPECT_FALSE(view->previewPanel()->isShown());
}

TEST_F(AppTest, SelectionFillsTheSummaryAndDoubleClickRevealsTheFile) {
    TarnPreferences::shared()->setValue("ShowOnlyExistingFiles", 0);
    scanDemo();
    DatabaseTableView* view = window().databaseTable();
    const TarnViewSnapshot& shown = view->databaseModel()->snapshot();
    view->selectAll();
    EXPECT_EQ(app_->summaryModel()->text("Selected Items"), QString::number(table().rowCount()));
    // Missing files count with their recorded size.
    EXPECT_EQ(app_->summaryModel()->text("Selected Size"),
              TarnFileSize::toHumanBytes(double(shown.sizeOfRows(0, table().rowCount() - 1))));

    const QRect cell = view->visualRect(table().index(1, section(TarnColumn::Filename)));
    // A double click is a click and a second press (QTest sends only the second).
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    EXPECT_EQ(revealed_, QStringList{shown.itemAt(1)->DB_itemPath});
    EXPECT_EQ(app_->summaryModel()->text("Selected Items"), "1");
}
