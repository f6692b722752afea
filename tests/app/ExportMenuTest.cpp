#include "AppTestKit.h"
#include "export/ExportMenu.h"
#include "report/TarnExport.h"

namespace {

// A window on a sorted and filtered table whose columns were moved and hidden.
class ExportMenuTest : public ::testing::Test {
  protected:
    void SetUp() override {
        window.setWindowTitle("Tarn <media>");
        model.setHorizontalHeaderLabels({"Name", "Project", "Size"});
        const char* rows[][3] = {{"A001_C002.mxf", "Tom & Jerry <x>", "0"},
                                 {"say \"hi\"; now, then", "line one\nline two", "1"},
                                 {"Director's cut", "", "2"},
                                 {"Café été.wav", "", "3"}};
        for (const auto& row : rows) {
            QList<QStandardItem*> cells;
            for (const char* cell : row) cells << new QStandardItem(QString::fromUtf8(cell));
            model.appendRow(cells);
        }
        shown.setSourceModel(&model);
        shown.setFilterRegularExpression("^[A-Z]");  // drops "say ..."
        shown.sort(0, Qt::DescendingOrder);
        table->setModel(&shown);
        table->horizontalHeader()->moveSection(2, 0);
        table->setColumnHidden(1, true);
        window.setCentralWidget(table);
    }
    // What the export of `tag` writes of the menu's table.
    QByteArray expected(int tag) const {
        const TarnExportTable rows = menu.exportTable();
        return (tag == 3 ? TarnExport::genHtml(rows)
                         : TarnExport::genCsv(rows, tag == 1 ? ";" : ","))
            .toUtf8();
    }

    QTemporaryDir dir;
    QMainWindow window;
    QStandardItemModel model;
    QSortFilterProxyModel shown;
    QTableView* table = new QTableView;
    ExportMenu menu{table, ExportMenu::displayTexts(table)};
};

}  // namespace

// The columns as the header shows them (moved ones where they are now,
// hidden ones included); the rows as the model sorts and filters them.
TEST_F(ExportMenuTest, WritesTheTablesColumnOrderAndRows) {
    const TarnExportTable exported = menu.exportTable();
    EXPECT_EQ(exported.title(), "Tarn <media>");
    EXPECT_EQ(exported.columns(), QStringList({"Size", "Name", "Project"}));
    EXPECT_EQ(exported.rows(), QList<QStringList>({{"2", "Director's cut", ""},
                                                   {"3", "Café été.wav", ""},
                                                   {"0", "A001_C002.mxf", "Tom & Jerry <x>"}}));
    for (int tag : {1, 2, 3}) {
        const QString out = dir.filePath(QString("out-%1").arg(tag));
        ASSERT_TRUE(menu.writeExport(tag, out));
        EXPECT_EQ(apptest::contentOf(out), expected(tag)) << tag;
    }
    EXPECT_TRUE(expected(1).startsWith("\"Size\";\"Name\";\"Project\";"));
    EXPECT_FALSE(menu.writeExport(4, dir.filePath("four")));
    // Without a source every cell is empty.
    EXPECT_EQ(ExportMenu(table, nullptr).exportTable().rows().at(0), QStringList({"", "", ""}));
}

// Through the save panel, which proposes "export" and keeps the format's
// extension; the file is written even when the menu is gone by then (a
// popped-up menu is).
TEST_F(ExportMenuTest, SavePanelWritesWithTheFixedExtension) {
    const std::tuple<int, const char*, const char*> cases[] = {
        {1, "list", "list.csv"}, {2, "list.txt", "list.txt.csv"}, {3, "page.HTML", "page.HTML"}};
    for (const auto& [tag, typed, written] : cases) {
        ExportMenu(table, ExportMenu::displayTexts(table)).onMenuClick(tag);
        auto* panel = window.findChild<QFileDialog*>("ExportSavePanel");
        ASSERT_NE(panel, nullptr);
        EXPECT_EQ(QFileInfo(panel->selectedFiles().value(0)).completeBaseName(), "export");
        panel->selectFile(dir.filePath(QString::fromLatin1(typed)));
        static_cast<QDialog*>(panel)->accept();  // as the panel's own button does
        EXPECT_EQ(apptest::contentOf(dir.filePath(QString::fromLatin1(written))), expected(tag));
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

// The page goes to the temporary folder and the desktop opens it: here a text
// browser takes the place of the desktop's file opener.
TEST_F(ExportMenuTest, ViewAsHtmlOpensAPageInTheTemporaryFolder) {
    QTextBrowser desktop;
    QDesktopServices::setUrlHandler("file", &desktop, "setSource");
    for (QAction* item : menu.actions())
        if (item->data().toInt() == ExportMenu::ViewAsHtml) item->trigger();
    QDesktopServices::unsetUrlHandler("file");
    const QFileInfo page(desktop.source().toLocalFile());
    EXPECT_EQ(page.absolutePath(), QFileInfo(QDir::tempPath()).absoluteFilePath());
    EXPECT_TRUE(page.fileName().contains(QRegularExpression("^\\d{8}-\\d{6}export\\.html$")));
    EXPECT_EQ(apptest::contentOf(page.filePath()), expected(3));
    QFile::remove(page.filePath());
}
