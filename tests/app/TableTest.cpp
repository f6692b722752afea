#include "AppTestKit.h"
#include "items/TarnFileSize.h"
#include "window/ColumnMenu.h"
#include "window/PreviewPopover.h"

using namespace apptest;

namespace {

// The paths of `tarn scan ROOT ARGS...` in its order.
QStringList cliPaths(const QStringList& args) {
    const QString out = tarnScan(QStringList{demoRoot()} + args + QStringList{"--format", "json"});
    QStringList paths;
    for (const QJsonValue& item :
         QJsonDocument::fromJson(out.toUtf8()).object().value("items").toArray())
        paths << item.toObject().value("path").toString();
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

// The four views of the database stay consistent models through a scan, a
// filter, a sort and a clear.
TEST_F(AppTest, ModelsOfTheDatabaseKeepTheirContracts) {
    using Tester = QAbstractItemModelTester;
    const Tester::FailureReportingMode fatal = Tester::FailureReportingMode::Fatal;
    Tester database(app_->databaseModel(), fatal), summary(app_->summaryModel(), fatal),
        projects(app_->projectSummaryModel(), fatal), filter(app_->projectFilterModel(), fatal);
    scanDemo();
    EXPECT_GT(table().rowCount(), 0);
    EXPECT_GT(app_->projectFilterModel()->rowCount(), 0);
    app_->sortDescriptorsDidChange({{"filesize", false}});
    window().searchField()->setText("harbour");
    window().searchField()->clear();
    app_->ClearDatabase();
    EXPECT_EQ(table().rowCount(), 0);
}

TEST_F(AppTest, HeaderClickSortsAndASecondClickTurnsTheOrder) {
    scanDemo();
    DatabaseTableView* view = window().databaseTable();
    clickHeader(view, TarnColumn::Filename);
    EXPECT_EQ(columnTexts(*app_, TarnColumn::Path), cliPaths({"--sort", "filename"}));
    clickHeader(view, TarnColumn::Filename);
    EXPECT_EQ(columnTexts(*app_, TarnColumn::Path), cliPaths({"--sort", "filename:desc"}));
    // The earlier column breaks the ties of the new one.
    clickHeader(view, TarnColumn::Size);
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
    EXPECT_EQ(summary("Filtered Items"), QString::number(shown.size()));
    window().searchField()->clear();
    EXPECT_EQ(table().rowCount(), all);
}

// The column menu hides columns (never the file or clip name) and the next
// window starts with them hidden; a column the stored dictionary lacks
// starts hidden too.
TEST_F(AppTest, HiddenColumnsAreRememberedForTheNextWindow) {
    ColumnMenu* menu = window().databaseTable()->headerMenu();
    EXPECT_EQ(menu->actionFor("FilenameCellID"), nullptr);
    EXPECT_EQ(menu->actionFor("ClipnameCellID"), nullptr);
    menu->actionFor("PathCellID")->trigger();
    EXPECT_TRUE(window().databaseTable()->isColumnHidden(section(TarnColumn::Path)));
    const auto hiddenInNextWindow = [] {
        TarnCore core;
        AppDelegate next(&core);
        EXPECT_EQ(next.start({"tarn-app"}), AppDelegate::StartResult::Started);
        QList<TarnColumn> hidden;
        for (TarnColumn column : {TarnColumn::Path, TarnColumn::Project, TarnColumn::Filename,
                                  TarnColumn::Clipname, TarnColumn::Size})
            if (next.window()->databaseTable()->isColumnHidden(section(column))) hidden << column;
        return hidden;
    };
    EXPECT_EQ(hiddenInNextWindow(), QList<TarnColumn>{TarnColumn::Path});
    TarnPreferences::shared()->setValue("kUserDefaultsKeyVisisbleColumns",
                                        QVariantMap{{"ProjectCellID", 1}});
    EXPECT_EQ(hiddenInNextWindow(), QList<TarnColumn>({TarnColumn::Path, TarnColumn::Size}));
}

// The selection fills the summary (missing files with their recorded size)
// and the preview; a double click reveals the file; rows are dragged out as
// the files they stand for, a missing file as nothing.
TEST_F(AppTest, SelectionPreviewRevealAndDrag) {
    TarnPreferences::shared()->setValue("ShowOnlyExistingFiles", 0);
    scanDemo();
    DatabaseTableView* view = window().databaseTable();
    const TarnViewSnapshot& shown = view->databaseModel()->snapshot();
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Space);
    ASSERT_TRUE(view->previewPanel()->isShown());
    EXPECT_EQ(view->previewPanel()->text(), "no item selected");
    view->selectRow(2);
    EXPECT_EQ(view->previewPanel()->text(), shown.itemAt(2)->description());
    QTest::keyClick(view, Qt::Key_Space);
    EXPECT_FALSE(view->previewPanel()->isShown());
    view->selectAll();
    EXPECT_EQ(summary("Selected Items"), QString::number(table().rowCount()));
    EXPECT_EQ(summary("Selected Size"),
              TarnFileSize::toHumanBytes(double(shown.sizeOfRows(0, table().rowCount() - 1))));

    const QRect cell = view->visualRect(table().index(1, section(TarnColumn::Filename)));
    // A double click is a click and a second press (QTest sends only the second).
    QTest::mouseClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    QTest::mouseDClick(view->viewport(), Qt::LeftButton, Qt::NoModifier, cell.center());
    EXPECT_EQ(revealed_, QStringList{shown.itemAt(1)->DB_itemPath});
    EXPECT_EQ(summary("Selected Items"), "1");

    int present = -1, missing = -1;
    for (int row = 0; row < table().rowCount(); ++row) {
        const TarnDatabaseItem* item = shown.itemAt(row);
        if (item->DB_FileExists && present < 0) present = row;
        if (!item->DB_FileExists && !item->DB_isAMA && missing < 0) missing = row;
    }
    ASSERT_TRUE(present >= 0 && missing >= 0);
    const QString path = shown.itemAt(present)->DB_itemPath;
    std::unique_ptr<QMimeData> dragged(table().mimeData({table().index(present, 0)}));
    ASSERT_NE(dragged, nullptr);
    EXPECT_EQ(dragged->urls(), QList<QUrl>{QUrl::fromLocalFile(path)});
    EXPECT_EQ(dragged->text(), QFileInfo(path).fileName());
    EXPECT_EQ(table().mimeData({table().index(missing, 0)}), nullptr);
    EXPECT_EQ(table().supportedDragActions(), Qt::CopyAction);
}
