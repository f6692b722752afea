#include "AppTestKit.h"
#include "models/VolumeListModel.h"

using namespace apptest;

using Tester = QAbstractItemModelTester;

// The four views of the database stay consistent models through a scan, a
// filter, a sort and a clear.
TEST_F(AppTest, ModelsOfTheDatabaseKeepTheirContracts) {
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

TEST(VolumeListModel, ChecksEveryVolumeAndHandsBackTheTickedOnes) {
    VolumeListModel model({"/", "/Volumes/Media", "/Volumes/Backup"});
    Tester tester(&model, Tester::FailureReportingMode::Fatal);
    EXPECT_EQ(model.data(model.index(1, 1)).toString(), "/Volumes/Media");
    model.setData(model.index(0, 0), Qt::Unchecked, Qt::CheckStateRole);
    EXPECT_EQ(model.selector().createResultingArray(),
              (QStringList{"/Volumes/Media", "/Volumes/Backup"}));
    EXPECT_EQ(model.delectDeselectAll(false), "Select all");
    EXPECT_TRUE(model.selector().createResultingArray().isEmpty());
    EXPECT_EQ(model.delectDeselectAll(true), "Deselect all");
    EXPECT_EQ(model.selector().createResultingArray().size(), 3);
}

// Rows go out as the files they stand for; a missing file gives nothing.
TEST_F(AppTest, DraggedRowsAreTheirExistingFiles) {
    TarnPreferences::shared()->setValue("ShowOnlyExistingFiles", 0);
    scanDemo();
    const DatabaseTableModel& model = *app_->databaseModel();
    int present = -1, missing = -1;
    for (int row = 0; row < model.rowCount(); ++row) {
        const TarnDatabaseItem* item = model.snapshot().itemAt(row);
        if (item->DB_FileExists && present < 0) present = row;
        if (!item->DB_FileExists && !item->DB_isAMA && missing < 0) missing = row;
    }
    ASSERT_GE(present, 0);
    ASSERT_GE(missing, 0);
    const QString path = model.snapshot().itemAt(present)->DB_itemPath;
    std::unique_ptr<QMimeData> dragged(model.mimeData({model.index(present, 0)}));
    ASSERT_NE(dragged, nullptr);
    EXPECT_EQ(dragged->urls(), QList<QUrl>{QUrl::fromLocalFile(path)});
    EXPECT_EQ(dragged->text(), QFileInfo(path).fileName());
    EXPECT_EQ(model.mimeData({model.index(missing, 0)}), nullptr);
    EXPECT_EQ(model.supportedDragActions(), Qt::CopyAction);
}
