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

#include <gtest/gtest.h>

#include "export/ExportMenu.h"
#include "report/TarnExport.h"

namespace {

QByteArray golden(const char* name) {
    // The report suite's golden files (QT_TESTCASE_SOURCEDIR is the tests folder).
    QFile file(QStringLiteral(QT_TESTCASE_SOURCEDIR "/report/golden/") + QLatin1String(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing golden>");
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("<missing>");
}

// Records the URLs the app asks the desktop to open.
class UrlCatcher : public QObject {
    Q_OBJECT
  public:
    UrlCatcher() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "open"); }
    ~UrlCatcher() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    QList<QUrl> opened;
  public slots:
    void open(const QUrl& url) { opened.append(url); }
};

// A window with the golden sample's rows in a table (the same rows the
// report suite's golden files were written from).
class ExportMenuTest : public ::testing::Test {
  protected:
    void SetUp() override {
        window.setWindowTitle(QStringLiteral("Tarn <media>"));
        model.setHorizontalHeaderLabels(
            {QStringLiteral("File \"Name\""), QStringLiteral("Project")});
        addRow(QStringLiteral("A001_C002.mxf"), QStringLiteral("Tom & Jerry <x>"));
        addRow(QStringLiteral("say \"hi\"; now, then"), QStringLiteral("line one\nline two"));
        addRow(QStringLiteral("Director's cut"), QString());
        addRow(QStringLiteral("Café été.wav"), QStringLiteral(""));
        table = new QTableView;
        table->setModel(&model);
        window.setCentralWidget(table);
    }
    void addRow(const QString& a, const QString& b) {
        model.appendRow({new QStandardItem(a), new QStandardItem(b)});
    }
    QString path(const QString& name) const { return dir.filePath(name); }
    QFileDialog* savePanel() const {
        return window.findChild<QFileDialog*>(QStringLiteral("ExportSavePanel"));
    }

    QTemporaryDir dir;
    QMainWindow window;
    QStandardItemModel model;
    QTableView* table = nullptr;
};

}  // namespace

TEST_F(ExportMenuTest, FourItemsInOrder) {
    ExportMenu menu(table, ExportMenu::displayTexts(table));
    QStringList titles;
    QList<int> tags;
    for (QAction* action : menu.actions()) {
        titles.append(action->text());
        tags.append(action->data().toInt());
        EXPECT_TRUE(action->shortcut().isEmpty());
    }
    EXPECT_EQ(titles, QStringList({"Export as Mac CSV / Semicolon-Separated",
                                   "Export as Windows CSV / Comma-Separated", "Export as Html",
                                   "View as Html"}));
    EXPECT_EQ(tags, QList<int>({1, 2, 3, 0}));
}

TEST_F(ExportMenuTest, WritesTheGoldenFiles) {
    ExportMenu menu(table, ExportMenu::displayTexts(table));
    const struct {
        int tag;
        const char* golden;
    } cases[] = {
        {ExportMenu::MacCsv, "sample-semicolon.csv"},
        {ExportMenu::WindowsCsv, "sample-comma.csv"},
        {ExportMenu::SaveHtml, "sample.html"},
        {ExportMenu::ViewAsHtml, "sample.html"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.tag);
        const QString out = path(QStringLiteral("out-%1").arg(c.tag));
        ASSERT_TRUE(menu.writeExport(c.tag, out));
        EXPECT_EQ(contents(out), golden(c.golden));
    }
    EXPECT_FALSE(menu.writeExport(4, path(QStringLiteral("four"))));
    EXPECT_FALSE(QFileInfo::exists(path(QStringLiteral("four"))));
}

// The columns as the header shows them (moved ones where they are now,
// hidden ones included); the rows as the model sorts and filters them.
TEST_F(ExportMenuTest, FollowsTheTablesColumnOrderAndRows) {
    model.setHorizontalHeaderLabels(
        {QStringLiteral("Name"), QStringLiteral("Project"), QStringLiteral("Size")});
    for (int row = 0; row < model.rowCount(); ++row) {
        model.setItem(row, 2, new QStandardItem(QString::number(row)));
    }
    QSortFilterProxyModel shown;
    shown.setSourceModel(&model);
    shown.setFilterKeyColumn(0);
    shown.setFilterRegularExpression(QStringLiteral("^[A-Z]"));  // drops "say ..."
    shown.sort(0, Qt::DescendingOrder);
    table->setModel(&shown);
    table->horizontalHeader()->moveSection(2, 0);  // Size first
    table->setColumnHidden(1, true);               // Project hidden

    ExportMenu menu(table, ExportMenu::displayTexts(table));
    const TarnExportTable exported = menu.exportTable();
    EXPECT_EQ(exported.title(), QStringLiteral("Tarn <media>"));
    EXPECT_EQ(exported.columns(), QStringList({"Size", "Name", "Project"}));
    ASSERT_EQ(exported.rows().size(), 3);
    EXPECT_EQ(exported.rows().at(0), QStringList({"2", "Director's cut", ""}));
    EXPECT_EQ(exported.rows().at(1), QStringList({"3", "Café été.wav", ""}));
    EXPECT_EQ(exported.rows().at(2), QStringList({"0", "A001_C002.mxf", "Tom & Jerry <x>"}));
}

TEST_F(ExportMenuTest, CellsComeFromTheSourceOnly) {
    ExportMenu none(table, nullptr);
    const TarnExportTable empty = none.exportTable();
    EXPECT_EQ(empty.columns().size(), 2);
    EXPECT_EQ(empty.rows().at(0), QStringList({"", ""}));

    ExportMenu source(table, [](int row, int column) {
        return column == 0 ? QStringLiteral("r%1").arg(row) : QString();
    });
    EXPECT_EQ(source.exportTable().rows().at(3), QStringList({"r3", ""}));
}

// Through the save panel: "export" with the format's extension, which stays
// even when another one is typed; the file is written even when the menu that
// opened the panel is already gone (a popped-up menu is).
TEST_F(ExportMenuTest, SavePanelWritesWithTheFixedExtension) {
    const struct {
        int tag;
        const char* typed;
        const char* written;
        const char* golden;
    } cases[] = {
        {ExportMenu::MacCsv, "list", "list.csv", "sample-semicolon.csv"},
        {ExportMenu::WindowsCsv, "list.txt", "list.txt.csv", "sample-comma.csv"},
        {ExportMenu::SaveHtml, "page.HTML", "page.HTML", "sample.html"},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.typed);
        auto* menu = new ExportMenu(table, ExportMenu::displayTexts(table));
        menu->onMenuClick(c.tag);
        delete menu;
        QFileDialog* panel = savePanel();
        ASSERT_NE(panel, nullptr);
        EXPECT_EQ(panel->acceptMode(), QFileDialog::AcceptSave);
        EXPECT_EQ(panel->windowTitle(), QStringLiteral("Choose the path to save"));
        EXPECT_TRUE(panel->selectedFiles().value(0).endsWith(
            QLatin1String("/export.") + QFileInfo(QString::fromLatin1(c.golden)).suffix()));
        panel->setDirectory(dir.path());
        panel->selectFile(path(QString::fromLatin1(c.typed)));
        static_cast<QDialog*>(panel)->accept();  // as the panel's own button does
        EXPECT_EQ(contents(path(QString::fromLatin1(c.written))), golden(c.golden));
        QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        EXPECT_EQ(savePanel(), nullptr);
    }
}

TEST_F(ExportMenuTest, ViewAsHtmlOpensAPageInTheTemporaryFolder) {
    UrlCatcher desktop;
    ExportMenu menu(table, ExportMenu::displayTexts(table));
    menu.actions().at(3)->trigger();
    ASSERT_EQ(desktop.opened.size(), 1);
    const QString page = desktop.opened.at(0).toLocalFile();
    EXPECT_EQ(QFileInfo(page).absolutePath(), QFileInfo(QDir::tempPath()).absoluteFilePath());
    EXPECT_TRUE(QFileInfo(page).fileName().contains(
        QRegularExpression(QStringLiteral("^\\d{8}-\\d{6}export\\.html$"))));
    EXPECT_EQ(contents(page), golden("sample.html"));
    QFile::remove(page);

    EXPECT_EQ(ExportMenu::viewFileName(QDateTime(QDate(2024, 1, 31), QTime(9, 45, 2))),
              QStringLiteral("20240131-094502export.html"));
}

#include "ExportMenuTest.moc"
