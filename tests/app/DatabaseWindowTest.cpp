#include "AppTestKit.h"
#include "databases/TarnDatabaseFilesModel.h"
#include "databases/TarnMDBB_Delete.h"

using namespace apptest;

namespace {

struct DatabaseWindowFixture : ::testing::Test {
    QTemporaryDir tmp;
    testsupport::ScopedEnv data{"XDG_DATA_HOME", tmp.path() + "/data"};
    QMainWindow main;
    TarnMDBB_Delete window;
    QAbstractItemModelTester tester{window.model(),
                                    QAbstractItemModelTester::FailureReportingMode::Fatal};

    void SetUp() override {
        QString error;
        ASSERT_TRUE(fixtures::DemoVolume::write(tmp.path() + "/Vol", &error)) << qPrintable(error);
        main.show();
        window.setVolumes({tmp.path() + "/Vol"});
    }
    QStringList listedPaths() const {
        QStringList paths;
        for (const auto& file : window.model()->files()) paths << file.path;
        return paths;
    }
    QPushButton* deleteButton() { return window.findChild<QPushButton*>("Delete"); }
    QString summary() { return window.findChild<QLabel*>("summaryText")->text(); }
};

// Not while another sheet is up; then Delete moves exactly the ticked files to
// the Trash once confirmed.
TEST_F(DatabaseWindowFixture, DeleteMovesExactlyTheTickedFilesToTheTrashOnceConfirmed) {
    QDialog other(&main);
    other.setWindowModality(Qt::WindowModal);
    other.show();
    EXPECT_FALSE(window.showWindow(&main));
    other.hide();
    ASSERT_TRUE(window.showWindow(&main));
    EXPECT_EQ(window.windowModality(), Qt::WindowModal);
    // The indexes and databases of the volume's media folders, none ticked.
    const QStringList before = listedPaths();
    ASSERT_EQ(before.size(), 6);
    const QModelIndex first = window.model()->index(0, 0);
    EXPECT_TRUE(first.data().toString().endsWith("\n" + window.model()->files().at(0).folder));
    EXPECT_EQ(summary(), "6 database files, 0 ticked");
    EXPECT_FALSE(deleteButton()->isEnabled());
    for (int row : {1, 4})
        window.model()->setData(window.model()->index(row, 0), Qt::Checked, Qt::CheckStateRole);
    EXPECT_TRUE(deleteButton()->isEnabled());

    AnsweringPresenter answers(always("Cancel"));
    deleteButton()->click();
    EXPECT_EQ(answers.messages, QStringList({"Really delete 2 database files?"}));
    EXPECT_TRUE(testsupport::trashedPaths(tmp.path() + "/data").isEmpty());
    EXPECT_EQ(listedPaths(), before);

    answers.rule = always("OK");
    deleteButton()->click();
    EXPECT_EQ(testsupport::trashedPaths(tmp.path() + "/data"),
              QStringList({before.at(1), before.at(4)}));
    EXPECT_EQ(listedPaths(), QStringList({before.at(0), before.at(2), before.at(3), before.at(5)}));
    EXPECT_FALSE(deleteButton()->isEnabled());
    EXPECT_EQ(summary(), "4 database files, 0 ticked (2 moved to the Trash)");
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

}  // namespace
