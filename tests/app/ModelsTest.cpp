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
