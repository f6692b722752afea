#include <QAbstractItemModelTester>
#include <QAccessible>
#include <QDirIterator>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QTest>

#include <atomic>

#include <gtest/gtest.h>

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
    TarnActionManager::ActionPtr copy(const QString& name, qint64 size = 64 << 10) {
        writeFile(tmp.path() + "/src/" + name, QByteArray(size, 'x'));
        QDir().mkpath(dst());
        TarnActionOptions o({makeItem(tmp.path() + "/src/" + name)});
        o.Destination = dst();
        o.Create_projects_folders = o.Create_mxf_folders = false;
        o.mediaFolderRoots = {tmp.path() + "/src"};
        return commands.ContinueActionSetup(o);
    }
    QString cell(int row, int column) const { return model->index(row, column).data().toString(); }
    void clickButton(int row, TarnActionCellDelegate::Button button) {
        QTableView* table = queue->QueueTable();
        const QRect cell = table->visualRect(model->index(row, TarnQueueModel::ButtonsColumn));
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {},
                          TarnActionCellDelegate::buttonRect(cell, button).center());
    }
    int filesUnder(const QString& folder) const {
        int n = 0;
        for (QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
             it.hasNext(); it.next())
            ++n;
        return n;
    }
};

TEST_F(QueueWindowFixture, CopyFromTheSheetCompletesInTheQueue) {
    TarnCore core;
    const QList<TarnItemPtr> items = scannedDemoMedia(tmp.path() + "/vol", core);
    ASSERT_GE(items.size(), 5);
    commands.setMediaFolderRoots([&core] { return core.mediaFolderRoots(); });
    TarnNewActionWindow* sheet = commands.NewAction(items);
    ASSERT_NE(sheet, nullptr);
    QDir().mkpath(dst());
    QLineEdit* field = sheet->findChild<QLineEdit*>("destinationText");
    field->setText(dst());
    emit field->editingFinished();
    QTest::mouseClick(sheet->findChild<QAbstractButton*>("CheckImSure"), Qt::LeftButton);
    QTest::mouseClick(sheet->findChild<QAbstractButton*>("GO"), Qt::LeftButton);

    TarnQueueWindow* queue = commands.Queue();
    EXPECT_TRUE(queue->isVisible());
    EXPECT_EQ(queue->windowModality(), Qt::WindowModal);
    EXPECT_EQ(queue->size(), QSize(window.width(), window.height() - 60));
    ASSERT_EQ(model->rowCount(), 1);
    waitUntil([&] { return cell(0, TarnQueueModel::StatusColumn) == "Done"; });
    waitUntil([&] { return model->index(0, 2).data(TarnQueueModel::ProgressBusyRole).toBool(); });
    EXPECT_TRUE(cell(0, TarnQueueModel::DescriptionColumn)
                    .startsWith(QString("Copy %1 of %1 items").arg(items.size())));
    for (const TarnItemPtr& item : items) {
        const QFileInfo source(item->DB_itemPath);
        const QString target = dst() + "/" + item->get_DB_ProjectName() + "/" +
                               source.suffix().toUpper() + "/" + source.fileName();
        EXPECT_EQ(readFile(target), readFile(source.filePath())) << target.toStdString();
    }
}

TEST_F(QueueWindowFixture, CancelledRunningRowStaysUntilTheWorkerStops) {
    stall = true;
    auto action = copy("Big.mxf", 20 << 20);
    waitUntil([&] { return bool(stalled); });
    EXPECT_EQ(cell(0, TarnQueueModel::StatusColumn), "Running");
    bool finishedWhenRemoved = false;
    QObject::connect(model, &QAbstractItemModel::rowsAboutToBeRemoved,
                     [&] { finishedWhenRemoved = action->Action_Operation()->isFinished(); });

    clickButton(0, TarnActionCellDelegate::Button::Cancel);
    EXPECT_EQ(model->rowCount(), 1);
    EXPECT_EQ(cell(0, TarnQueueModel::StatusColumn), "Cancelled");
    waitUntil([&] { return model->rowCount() == 0; });
    EXPECT_TRUE(finishedWhenRemoved);
    EXPECT_EQ(filesUnder(dst()), 0);  // neither the target nor a partial file
}

TEST_F(QueueWindowFixture, ClearAsksFirstAndCancelChangesNothing) {
    stall = true;
    copy("A.mxf");
    copy("B.mxf");
    waitUntil([&] { return bool(stalled); });
    QPushButton* clear = queue->findChild<QPushButton*>("Clear");
    {
        AnsweringPresenter cancel(always("Cancel"));
        QTest::mouseClick(clear, Qt::LeftButton);
        EXPECT_EQ(cancel.messages(), QStringList{"Really clear queue?"});
        ASSERT_EQ(model->rowCount(), 2);
        EXPECT_EQ(cell(0, TarnQueueModel::StatusColumn), "Waiting");
        EXPECT_EQ(cell(1, TarnQueueModel::StatusColumn), "Running");
    }
    AnsweringPresenter ok(always("OK"));
    QTest::mouseClick(clear, Qt::LeftButton);
    EXPECT_EQ(model->rowCount(), 0);
    QTest::mouseClick(clear, Qt::LeftButton);  // an empty queue asks nothing
    EXPECT_EQ(ok.messages(), QStringList{"Really clear queue?"});
    EXPECT_EQ(filesUnder(dst()), 0);
}

TEST_F(QueueWindowFixture, RowsRevealTheirTargetShowTheirLogAndReadAloud) {
    QStringList revealed;
    TarnQueueWindow::setRevealer([&](const QString& folder) { revealed.append(folder); });
    TarnActionOptions gone({makeItem(tmp.path() + "/missing.mxf")});
    gone.Action = TarnActionOptions::deleteWord();
    commands.ContinueActionSetup(gone);
    copy("C.mxf");
    waitUntil([&] { return cell(1, 1) == "Done" && cell(0, 1) == "Done"; });
    QTableView* table = queue->QueueTable();
    for (int row : {0, 1}) {
        QPoint inside = table->visualRect(model->index(row, 0)).center();
        QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, inside);
        QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, inside);
    }
    TarnQueueWindow::setRevealer({});
    EXPECT_EQ(revealed, QStringList{dst()});  // the Delete row has no folder

    clickButton(0, TarnActionCellDelegate::Button::Info);
    TarnLogPopover* popover = queue->popover();
    EXPECT_TRUE(popover->isVisible());
    EXPECT_EQ(popover->popoverText()->lineWrapMode(), QPlainTextEdit::NoWrap);
    EXPECT_TRUE(popover->popoverText()->toPlainText().contains(":: Action :: Copy"));

    QAccessibleInterface* access = QAccessible::queryAccessibleInterface(table);
    ASSERT_TRUE(access && access->tableInterface());
    EXPECT_EQ(access->tableInterface()->cellAt(1, 1)->text(QAccessible::Name), "Done");
    EXPECT_TRUE(access->tableInterface()->cellAt(0, 0)->text(QAccessible::Name).startsWith("Copy"));
    expectNamedControls(*queue, "QueueTable Clear popover popoverText");
}

}  // namespace
