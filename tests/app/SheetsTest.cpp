#include <QCheckBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTableView>
#include <QTest>

#include "AppTestKit.h"
#include "sheets/FilterSheet.h"
#include "sheets/PreferencesSheet.h"

using namespace apptest;

namespace {

QStringList projectsShown(const AppDelegate& app) {
    QStringList names = columnTexts(app, TarnColumn::Project);
    names.removeDuplicates();
    return names;
}

}  // namespace

TEST_F(AppTest, FilterSheetBoxesFilterTheTable) {
    scanDemo();
    const int all = table().rowCount();
    window().databaseTable()->selectRow(1);
    app_->filters()->ShowFilter();
    FilterSheet* sheet = app_->filters()->filterSheet();
    ASSERT_TRUE(sheet->isVisible());
    // Opening the sheet changes no row: the selection stays.
    EXPECT_EQ(app_->summaryModel()->text("Selected Items"), "1");
    EXPECT_EQ(sheet->projectFilterTable()->model()->rowCount(),
              app_->projectSummaryModel()->rowCount());

    sheet->flagBox(FilterSheet::Flag::AudioMedia)->click();
    EXPECT_TRUE(TarnFilter::sharedFilter()->filterFlagAudioMedia());
    const QStringList kinds = columnTexts(*app_, TarnColumn::Compression);
    EXPECT_GT(kinds.size(), 0);
    EXPECT_LT(kinds.size(), all);
    for (const QString& kind : kinds) EXPECT_EQ(kind, "Audio");

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

TEST_F(AppTest, ProjectBoxesChooseTheProjectsShown) {
    scanDemo();
    const QStringList projects = projectsShown(*app_);
    ASSERT_GT(projects.size(), 1);
    app_->filters()->ShowFilter();
    FilterSheet* sheet = app_->filters()->filterSheet();
    QAbstractItemModel* list = sheet->projectFilterTable()->model();

    // Untick the first project: its rows go, it stays listed.
    const QString first = list->data(list->index(0, 1)).toString();
    list->setData(list->index(0, 0), Qt::Unchecked, Qt::CheckStateRole);
    EXPECT_EQ(list->data(list->index(0, 0), Qt::CheckStateRole).toInt(), Qt::Unchecked);
    EXPECT_FALSE(projectsShown(*app_).contains(first));
    EXPECT_EQ(list->data(list->index(0, 1)).toString(), first);

    sheet->selectAllButton()->click();
    EXPECT_EQ(sheet->selectAllButton()->text(), "Select all");
    EXPECT_EQ(table().rowCount(), 0);
    sheet->selectAllButton()->click();
    EXPECT_EQ(sheet->selectAllButton()->text(), "Deselect all");
    EXPECT_EQ(projectsShown(*app_), projects);
}

TEST_F(AppTest, PreferencesAreStoredAsTheyChange) {
    scanDemo();
    const int existing = table().rowCount();
    app_->preferences()->ShowPreferences();
    PreferencesSheet* sheet = app_->preferences()->preferencesSheet();
    ASSERT_TRUE(sheet->isVisible());
    EXPECT_TRUE(sheet->propertiesExistingFiles()->isChecked());
    EXPECT_EQ(sheet->applescriptTextview()->toPlainText(), TarnPreferences::basescript());

    // Showing missing files too brings their rows in at once.
    sheet->propertiesExistingFiles()->click();
    EXPECT_EQ(TarnPreferences::shared()->integer("ShowOnlyExistingFiles"), 0);
    EXPECT_GT(table().rowCount(), existing);

    sheet->propertiesScanMDB()->click();
    EXPECT_EQ(TarnPreferences::shared()->integer("ScanMDB"), 0);
    sheet->externalBundleTextField()->setText("org.example.player");
    emit sheet->externalBundleTextField()->editingFinished();
    EXPECT_EQ(TarnPreferences::shared()->string("ExternalAppBundleID"), "org.example.player");

    sheet->applescriptTextview()->setPlainText("echo mine");
    app_->preferences()->SaveScript();
    EXPECT_EQ(TarnPreferences::shared()->string("ExtApplescript"), "echo mine");
    app_->preferences()->ResetScript();
    EXPECT_EQ(sheet->applescriptTextview()->toPlainText(), TarnPreferences::basescript());

    bool quit = false;
    app_->preferences()->setTerminate([&quit] { quit = true; });
    app_->preferences()->ResetPreferencesToDefaults();
    EXPECT_TRUE(quit);
    EXPECT_FALSE(sheet->isVisible());
    EXPECT_EQ(TarnPreferences::shared()->integer("ScanMDB"), 1);
}
