#include <QAction>
#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QHeaderView>
#include <QMainWindow>
#include <QRegularExpression>
#include <QSortFilterProxyModel>
#include <QStandardItemModel>
#include <QTableView>
#include <QTemporaryDir>
#include <QUrl>

#include "AppTestKit.h"

#include "export/ExportMenu.h"

namespace {

// The report suite's golden files (QT_TESTCASE_SOURCEDIR is the tests folder).
QByteArray golden(const char* name) {
    const QString path = QT_TESTCASE_SOURCEDIR "/report/golden/" + QString(name);
    EXPECT_TRUE(QFile::exists(path)) << name;
    return apptest::readFile(path);
}

// Records the files the app asks the desktop to open.
class UrlCatcher : public QObject {
    Q_OBJECT
  public:
    UrlCatcher() { QDesktopServices::setUrlHandler("file", this, "open"); }
    ~UrlCatcher() override { QDesktopServices::unsetUrlHandler("file"); }
    QStringList opened;
  public slots:
    void open(const QUrl& url) { opened.append(url.toLocalFile()); }
};

// A window with the rows the report suite's golden files were written from.
class ExportMenuTest : public ::testing::Test {
  protected:
    void SetUp() override {
        window.setWindowTitle("Tarn <media>");
        model.setHorizontalHeaderLabels({"File \"Name\"", "Project"});
        const char* rows[][2] = {{"A001_C002.mxf", "Tom & Jerry <x>"},
                                 {"say \"hi\"; now, then", "line one\nline two"},
                                 {"Director's cut", ""},
                                 {"Café été.wav", ""}};
        for (const auto& row : rows) {
            model.appendRow({new QStandardItem(QString::fromUtf8(row[0])),
                             new QStandardItem(QString::fromUtf8(row[1]))});
        }
        table->setModel(&model);
        window.setCentralWidget(table);
    }

    QTemporaryDir dir;
    QMainWindow window;
    QStandardItemModel model;
    QTableView* table = new QTableView;
};

}  // namespace

TEST_F(ExportMenuTest, WritesTheGoldenFiles) {
    ExportMenu menu(table, ExportMenu::displayTexts(table));
    const struct {
        int tag;
        const char* golden;
    } cases[] = {{1, "sample-semicolon.csv"}, {2, "sample-comma.csv"}, {3, "sample.html"}};
    for (const auto& c : cases) {
        const QString out = dir.filePath(QString("out-%1").arg(c.tag));
        ASSERT_TRUE(menu.writeExport(c.tag, out));
        EXPECT_EQ(apptest::readFile(out), golden(c.golden)) << c.tag;
    }
    EXPECT_FALSE(menu.writeExport(4, dir.filePath("four")));
    // Without a source every cell is empty.
    EXPECT_EQ(ExportMenu(table, nullptr).exportTable().rows().at(0), QStringList({"", ""}));
}

// The columns as the header shows them (moved ones where they are now,
// hidden ones included); the rows as the model sorts and filters them.
TEST_F(ExportMenuTest, FollowsTheTablesColumnOrderAndRows) {
    model.setHorizontalHeaderLabels({"Name", "Project", "Size"});
    for (int row = 0; row < model.rowCount(); ++row) {
        model.setItem(row, 2, new QStandardItem(QString::number(row)));
    }
    QSortFilterProxyModel shown;
    shown.setSourceModel(&model);
    shown.setFilterRegularExpression("^[A-Z]");  // drops "say ..."
    shown.sort(0, Qt::DescendingOrder);
    table->setModel(&shown);
    table->horizontalHeader()->moveSection(2, 0);
    table->setColumnHidden(1, true);

    const TarnExportTable exported =
        ExportMenu(table, ExportMenu::displayTexts(table)).exportTable();
    EXPECT_EQ(exported.title(), "Tarn <media>");
    EXPECT_EQ(exported.columns(), QStringList({"Size", "Name", "Project"}));
    EXPECT_EQ(exported.rows(), QList<QStringList>({{"2", "Director's cut", ""},
                                                   {"3", "Café été.wav", ""},
                                                   {"0", "A001_C002.mxf", "Tom & Jerry <x>"}}));
}

// Through the save panel, which proposes "export" and keeps the format's
// extension; the file is written even when the menu is gone by then (a
// popped-up menu is).
TEST_F(ExportMenuTest, SavePanelWritesWithTheFixedExtension) {
    const struct {
        int tag;
        const char* typed;
        const char* written;
        const char* golden;
    } cases[] = {{1, "list", "list.csv", "sample-semicolon.csv"},
                 {2, "list.txt", "list.txt.csv", "sample-comma.csv"},
                 {3, "page.HTML", "page.HTML", "sample.html"}};
    for (const auto& c : cases) {
        ExportMenu(table, ExportMenu::displayTexts(table)).onMenuClick(c.tag);
        auto* panel = window.findChild<QFileDialog*>("ExportSavePanel");
        ASSERT_NE(panel, nullptr);
        EXPECT_EQ(panel->windowTitle(), "Choose the path to save");
        EXPECT_EQ(QFileInfo(panel->selectedFiles().value(0)).completeBaseName(), "export");
        panel->selectFile(dir.filePath(QString::fromLatin1(c.typed)));
        static_cast<QDialog*>(panel)->accept();  // as the panel's own button does
        EXPECT_EQ(apptest::readFile(dir.filePath(QString::fromLatin1(c.written))),
                  golden(c.golden));
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

TEST_F(ExportMenuTest, MenuItemsAndViewAsHtml) {
    UrlCatcher desktop;
    ExportMenu menu(table, ExportMenu::displayTexts(table));
    QStringList titles;
    for (QAction* action : menu.actions()) {
        titles.append(QString("%1 %2").arg(action->data().toInt()).arg(action->text()));
    }
    EXPECT_EQ(titles, QStringList({"1 Export as Mac CSV / Semicolon-Separated",
                                   "2 Export as Windows CSV / Comma-Separated", "3 Export as Html",
                                   "0 View as Html"}));
    menu.actions().at(3)->trigger();
    ASSERT_EQ(desktop.opened.size(), 1);
    const QFileInfo page(desktop.opened.at(0));
    EXPECT_EQ(page.absolutePath(), QFileInfo(QDir::tempPath()).absoluteFilePath());
    EXPECT_TRUE(page.fileName().contains(QRegularExpression("^\\d{8}-\\d{6}export\\.html$")));
    EXPECT_EQ(apptest::readFile(page.filePath()), golden("sample.html"));
    QFile::remove(page.filePath());
    EXPECT_EQ(ExportMenu::viewFileName(QDateTime(QDate(2024, 1, 31), QTime(9, 45, 2))),
              "20240131-094502export.html");
}

#include "ExportMenuTest.moc"
