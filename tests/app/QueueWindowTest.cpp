#include <atomic>

#include "AppTestKit.h"
#include "actions/TarnActionCellDelegate.h"
#include "actions/TarnActionCommands.h"
#include "actions/TarnActionOperation.h"
#include "actions/TarnLogPopover.h"
#include "actions/TarnNewActionWindow.h"
#include "actions/TarnQueueModel.h"
#include "actions/TarnQueueWindow.h"

using namespace apptest;

namespace {

struct QueueWindowFixture : ::testing::Test {
    QTemporaryDir tmp;
    QMainWindow window;
    TarnActionManager manager;
    TarnActionCommands commands{&manager, &window};
    TarnQueueWindow* queue = commands.Queue();
    TarnQueueModel* model = queue->model();
    QAbstractItemModelTester tester{model, QAbstractItemModelTester::FailureReportingMode::Fatal};
    // Copies stop inside their first file until cancelled, then take a while
    // to end, as a large file on a slow volume does.
    std::atomic<bool> stall{false}, stalled{false};

    void SetUp() override {
        window.resize(1000, 700);
        window.show();
        QObject::connect(&manager, &TarnActionManager::rowInserted, [this](int row) {
            TarnActionOperation* op = manager.actions().at(row)->Action_Operation();
            op->setProgressObserver([this, op](std::int64_t) {
                if (!stall) return;
                stalled = true;
                while (!op->isCancelled()) QThread::msleep(1);
                QThread::msleep(150);
            });
        });
    }
    QString dst() const { return tmp.path() + "/dst"; }
    TarnItemPtr file(const QString& name, qint64 size = 64 << 10) {
        writeFile(tmp.path() + "/src/" + name, QByteArray(size, name.at(0).toLatin1()));
        return makeItem(tmp.path() + "/src/" + name);
    }
    TarnActionManager::ActionPtr copy(const QString& name, qint64 size = 64 << 10) {
        QDir().mkpath(dst());
        TarnActionOptions o({file(name, size)});
        o.Destination = dst();
        o.Create_projects_folders = o.Create_mxf_folders = false;
        o.mediaFolderRoots = {tmp.path() + "/src"};
        return commands.ContinueActionSetup(o);
    }
    QString status(int row) const { return model->index(row, 1).data().toString(); }
    void clickButton(int row, TarnActionCellDelegate::Button button) {
        QTableView* table = queue->QueueTable();
        const QRect cell = table->visualRect(model->index(row, TarnQueueModel::ButtonsColumn));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          TarnActionCellDelegate::buttonRect(cell, button).center());
    }
};

TEST_F(QueueWindowFixture, CopyFromTheSheetCompletesInTheQueue) {
    const QList<TarnItemPtr> items = {file("A.mxf"), file("B.wav")};
    commands.setMediaFolderRoots([this] { return QStringList{tmp.path() + "/src"}; });
    TarnNewActionWindow* sheet = commands.NewAction(items);
    ASSERT_NE(sheet, nullptr);
    QDir().mkpath(dst());
    QLineEdit* field = sheet->findChild<QLineEdit*>("destinationText");
    field->setText(dst());
    emit field->editingFinished();
    QTest::mouseClick(sheet->findChild<QAbstractButton*>("CheckImSure"), Qt::LeftButton);
    QTest::mouseClick(sheet->findChild<QAbstractButton*>("GO"), Qt::LeftButton);

    EXPECT_TRUE(queue->isVisible());
    EXPECT_EQ(queue->windowModality(), Qt::WindowModal);
    EXPECT_EQ(queue->size(), QSize(window.width(), window.height() - 60));
    ASSERT_EQ(model->rowCount(), 1);
    waitUntil([&] { return status(0) == "Done"; });
    waitUntil([&] { return model->index(0, 2).data(TarnQueueModel::ProgressBusyRole).toBool(); });
    EXPECT_TRUE(model->index(0, 0).data().toString().startsWith("Copy 2 of 2 items"));
    EXPECT_EQ(readFile(dst() + "/Doc/MXF/A.mxf"), readFile(tmp.path() + "/src/A.mxf"));
    EXPECT_EQ(readFile(dst() + "/Doc/WAV/B.wav"), readFile(tmp.path() + "/src/B.wav"));
}

// A row's Cancel button stops its action, and the row stays until the worker
// has stopped; Clear stops the rest once its question is answered "OK".
TEST_F(QueueWindowFixture, CancelAndClearButtonsStopTheActions) {
    stall = true;
    auto running = copy("A.mxf", 20 << 20);
    copy("B.mxf");
    waitUntil([&] { return bool(stalled); });
    EXPECT_EQ(QStringList({status(0), status(1)}), QStringList({"Waiting", "Running"}));
    bool finishedWhenRemoved = false;
    QObject::connect(model, &QAbstractItemModel::rowsAboutToBeRemoved,
                     [&] { finishedWhenRemoved = running->Action_Operation()->isFinished(); });
    clickButton(1, TarnActionCellDelegate::Button::Cancel);
    EXPECT_EQ(status(1), "Cancelled");
    waitUntil([&] { return model->rowCount() == 1; });
    EXPECT_TRUE(finishedWhenRemoved);

    QPushButton* clear = queue->findChild<QPushButton*>("Clear");
    AnsweringPresenter answers(always("Cancel"));
    QTest::mouseClick(clear, Qt::LeftButton);
    EXPECT_EQ(model->rowCount(), 1);
    answers.setRule(always("OK"));
    QTest::mouseClick(clear, Qt::LeftButton);
    EXPECT_EQ(model->rowCount(), 0);
    QTest::mouseClick(clear, Qt::LeftButton);  // an empty queue asks nothing
    EXPECT_EQ(answers.messages(), QStringList(2, "Really clear queue?"));
    EXPECT_EQ(entries(dst()), QStringList());  // neither targets nor partial files
}

TEST_F(QueueWindowFixture, RowsRevealTheirTargetShowTheirLogAndReadAloud) {
    QStringList revealed;
    TarnQueueWindow::setRevealer([&](const QString& folder) { revealed.append(folder); });
    TarnActionOptions gone({makeItem(tmp.path() + "/missing.mxf")});
    gone.Action = TarnActionOptions::deleteWord();
    commands.ContinueActionSetup(gone);
    copy("C.mxf");
    waitUntil([&] { return status(1) == "Done" && status(0) == "Done"; });
    QTableView* table = queue->QueueTable();
    for (int row : {0, 1}) {
        QPoint inside = table->visualRect(model->index(row, 0)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, inside);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, inside);
    }
    TarnQueueWindow::setRevealer({});
    EXPECT_EQ(revealed, QStringList{dst()});  // the Delete row has no folder

    clickButton(0, TarnActionCellDelegate::Button::Info);
    EXPECT_TRUE(queue->popover()->isVisible());
    EXPECT_TRUE(queue->popover()->popoverText()->toPlainText().contains(":: Action :: Copy"));

    QAccessibleInterface* access = QAccessible::queryAccessibleInterface(table);
    ASSERT_TRUE(access && access->tableInterface());
    EXPECT_EQ(access->tableInterface()->cellAt(1, 1)->text(QAccessible::Name), "Done");
    EXPECT_TRUE(access->tableInterface()->cellAt(0, 0)->text(QAccessible::Name).startsWith("Copy"));
}

}  // namespace
