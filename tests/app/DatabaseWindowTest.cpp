#include <QAbstractItemModelTester>
#include <QDir>
#include <QHeaderView>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>

#include "AppTestKit.h"
#include "DemoVolume.h"
#include "TestSupport.h"
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
        ASSERT_TRUE(fixtures::DemoVolume::write(volume(), &error)) << error.toStdString();
        main.resize(900, 700);
        main.show();
        window.setVolumes({volume()});
    }
    QString volume() const { return tmp.path() + "/Vol"; }
    QString dataHome() const { return tmp.path() + "/data"; }
    QStringList listedPaths() const {
        QStringList paths;
        for (const auto& file : window.model()->files()) paths << file.path;
        return paths;
    }
    QPushButton* button(const char* name) {
        return window.findChild<QPushButton*>(QString::fromLatin1(name));
    }
    void tick(int row) {
        window.model()->setData(window.model()->index(row, 0), Qt::Checked, Qt::CheckStateRole);
    }
};

TEST_F(DatabaseWindowFixture, ListsTheDemoVolumesIndexesAndDatabasesNoneTicked) {
    ASSERT_TRUE(window.showWindow(&main));
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(window.windowModality(), Qt::WindowModal);
    EXPECT_EQ(window.parentWidget(), &main);
    EXPECT_EQ(window.windowTitle(), "Select and delete databases");
    QTableView* table = window.findChild<QTableView*>("tableView");
    ASSERT_NE(table, nullptr);
    EXPECT_EQ(table->model()->columnCount(), 1);
    EXPECT_EQ(table->model()->headerData(0, Qt::Horizontal).toString(), "Items");
    const QStringList relative = [&] {
        QStringList out;
        for (const QString& path : listedPaths()) out << QDir(volume()).relativeFilePath(path);
        return out;
    }();
    EXPECT_EQ(relative,
              QStringList({"Avid MediaFiles/MXF/1/msmFMID.pmr", "Avid MediaFiles/MXF/1/msmMMOB.mdb",
                           "Avid MediaFiles/MXF/2/msmFMID.pmr", "Avid MediaFiles/MXF/2/msmMMOB.mdb",
                           "OMFI MediaFiles/msmFMID.pmr", "OMFI MediaFiles/msmMMOB.mdb"}));
    for (int row = 0; row < table->model()->rowCount(); ++row) {
        const QModelIndex index = table->model()->index(row, 0);
        EXPECT_EQ(index.data(Qt::CheckStateRole).toInt(), Qt::Unchecked);
        const auto& file = window.model()->files().at(row);
        const QString text = index.data().toString();
        EXPECT_TRUE(text.startsWith(file.fileName)) << text.toStdString();
        EXPECT_TRUE(text.endsWith("\n" + file.folder)) << text.toStdString();
    }
    expectNamedControls(window, "tableView Close Delete summaryText");
    EXPECT_FALSE(button("Delete")->isEnabled());
    tick(2);
    EXPECT_TRUE(button("Delete")->isEnabled());
    EXPECT_EQ(window.findChild<QLabel*>("summaryText")->text(), "6 database files, 1 ticked");
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
}

TEST_F(DatabaseWindowFixture, DeleteMovesExactlyTheTickedFilesToTheTrashOnceConfirmed) {
    ASSERT_TRUE(window.showWindow(&main));
    const QStringList before = listedPaths();
    ASSERT_EQ(before.size(), 6);
    tick(1);
    tick(4);

    AnsweringPresenter answers(always("Cancel"));
    button("Delete")->click();
    EXPECT_EQ(answers.messages(), QStringList({"Really delete 2 database files?"}));
    EXPECT_TRUE(testsupport::trashedPaths(dataHome()).isEmpty());
    EXPECT_EQ(listedPaths(), before);
    EXPECT_EQ(window.model()->tickedCount(), 2);

    answers.setRule(always("OK"));
    button("Delete")->click();
    EXPECT_EQ(testsupport::trashedPaths(dataHome()), QStringList({before.at(1), before.at(4)}));
    EXPECT_EQ(listedPaths(), QStringList({before.at(0), before.at(2), before.at(3), before.at(5)}));
    EXPECT_EQ(window.model()->tickedCount(), 0);
    EXPECT_FALSE(button("Delete")->isEnabled());
    EXPECT_EQ(window.findChild<QLabel*>("summaryText")->text(),
              "4 database files, 0 ticked (2 moved to the Trash)");
}

TEST_F(DatabaseWindowFixture, NotOpenedWhileAnotherSheetIsUp) {
    QDialog other(&main);
    other.setWindowModality(Qt::WindowModal);
    other.show();
    EXPECT_FALSE(window.showWindow(&main));
    EXPECT_FALSE(window.isVisible());
    other.hide();
    EXPECT_TRUE(window.showWindow(&main));
}

}  // namespace
