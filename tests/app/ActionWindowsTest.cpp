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

// A window with the new-action sheet and the queue, over files written under
// src/. Copies can be made to stop inside their first file until cancelled,
// then take a while to end, as a large file on a slow volume does.
struct ActionWindowsTest : ::testing::Test {
    QTemporaryDir tmp;
    QMainWindow window;
    TarnActionManager manager;
    TarnActionCommands commands{&manager, &window};
    TarnQueueWindow* queue = commands.Queue();
    TarnQueueModel* model = queue->model();
    QAbstractItemModelTester tester{model, QAbstractItemModelTester::FailureReportingMode::Fatal};
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
        EXPECT_TRUE(
            writeFile(tmp.path() + "/src/" + name, QByteArray(size, name.at(0).toLatin1())));
        return makeItem(tmp.path() + "/src/" + name);
    }
    // A copy straight into dst/.
    TarnActionManager::ActionPtr copy(const QList<TarnItemPtr>& items) {
        QDir().mkpath(dst());
        TarnActionOptions o(items);
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
    // Near the left edge: a check box takes clicks on its box and label only.
    static void click(const QWidget& sheet, const char* name) {
        auto* button = sheet.findChild<QAbstractButton*>(QString::fromLatin1(name));
        ASSERT_NE(button, nullptr) << name;
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(8, button->height() / 2));
    }
    static void typeDestination(const QWidget& sheet, const QString& text) {
        auto* field = sheet.findChild<QLineEdit*>("destinationText");
        field->selectAll();
        QTest::keyClicks(field, text);
        QTest::keyClick(field, Qt::Key_Return);
    }
};

TEST_F(ActionWindowsTest, SheetControlsEditTheOptionsAndTheLiveSummary) {
    TarnNewActionWindow sheet(QList<TarnItemPtr>{file("clip1.mxf", 1000), file("clip2.mxf", 2000)});
    sheet.show();
    EXPECT_EQ(sheet.summary(), "will Copy \n2 items of 3.00 kB size\ndestination: Invalid path");
    QStringList ticked;  // in the order of the sheet
    for (const QAbstractButton* button : sheet.findChildren<QAbstractButton*>())
        if (button->isChecked()) ticked << button->objectName();
    EXPECT_EQ(ticked, QStringList({"RadioCopy", "CheckProjects", "CheckMXF"}));
    auto* keepPmr = sheet.findChild<QAbstractButton*>("CheckKeepPMR");
    EXPECT_TRUE(keepPmr->isHidden());

    click(sheet, "RadioDelete");
    EXPECT_EQ(sheet.ActionProperties().Action, "Delete");
    click(sheet, "RadioMove");
    typeDestination(sheet, tmp.path());
    EXPECT_EQ(sheet.summary(), "will Move \n2 items of 3.00 kB size\ndestination: " + tmp.path());
    click(sheet, "CheckProjects");
    click(sheet, "CheckMXF");
    click(sheet, "CheckKeepOriginalFolders");
    EXPECT_TRUE(keepPmr->isEnabled());
    keepPmr->click();
    EXPECT_TRUE(sheet.ActionProperties().Keep_pmr);
    click(sheet, "CheckKeepOriginalFolders");  // off: the index files cannot be kept
    EXPECT_FALSE(keepPmr->isEnabled() || keepPmr->isChecked() || sheet.ActionProperties().Keep_pmr);
    click(sheet, "CheckKeepOriginalFolders");
    const TarnActionOptions& o = sheet.ActionProperties();
    EXPECT_EQ(
        QList<bool>({o.Create_projects_folders, o.Create_mxf_folders, o.Keep_original_folders}),
        QList<bool>({false, false, true}));

    click(sheet, "Select");  // the folder chooser, a sheet on the sheet
    auto* panel = sheet.findChild<QFileDialog*>("SelectDestinationPanel");
    ASSERT_NE(panel, nullptr);
    panel->setDirectory(tmp.path());
    panel->selectFile(tmp.path() + "/src");
    static_cast<QDialog*>(panel)->accept();
    EXPECT_TRUE(sheet.summary().endsWith("destination: " + tmp.path() + "/src"));
}

// One sheet at a time on the window; Cancel queues nothing; GO refuses (and
// says why) until "I'm sure" is ticked, then queues the action, whose row
// follows it to its end.
TEST_F(ActionWindowsTest, CopyFromTheSheetCompletesInTheQueue) {
    const QList<TarnItemPtr> items = {file("A.mxf"), file("B.wav")};
    commands.setMediaFolderRoots([this] { return QStringList{tmp.path() + "/src"}; });
    TarnNewActionWindow* sheet = commands.NewAction(items);
    ASSERT_NE(sheet, nullptr);
    EXPECT_EQ(sheet->parentWidget(), &window);
    EXPECT_EQ(sheet->windowModality(), Qt::WindowModal);
    EXPECT_EQ(commands.NewAction(items), nullptr);  // a second sheet: only "Pop"
    click(*sheet, "Cancel");
    EXPECT_EQ(manager.numberOfRows(), 0);

    sheet = commands.NewAction(items);
    ASSERT_NE(sheet, nullptr);
    QDir().mkpath(dst());
    typeDestination(*sheet, dst());
    AnsweringPresenter answers(always("OK"));
    click(*sheet, "GO");
    EXPECT_EQ(answers.messages, QStringList{"Please don't hurry, be patient..."});
    EXPECT_TRUE(sheet->isVisible());
    click(*sheet, "CheckImSure");
    click(*sheet, "GO");
    EXPECT_TRUE(queue->isVisible());
    EXPECT_EQ(queue->windowModality(), Qt::WindowModal);
    ASSERT_EQ(model->rowCount(), 1);
    waitUntil([&] { return status(0) == "Done"; });
    waitUntil([&] { return model->index(0, 2).data(TarnQueueModel::ProgressBusyRole).toBool(); });
    EXPECT_TRUE(model->index(0, 0).data().toString().startsWith("Copy 2 of 2 items"));
    EXPECT_EQ(contentOf(dst() + "/Doc/MXF/A.mxf"), contentOf(tmp.path() + "/src/A.mxf"));
    EXPECT_EQ(contentOf(dst() + "/Doc/WAV/B.wav"), contentOf(tmp.path() + "/src/B.wav"));

    // The row reveals its target folder on a double click, shows its log, and
    // reads aloud.
    QStringList revealed;
    TarnQueueWindow::setRevealer([&](const QString& folder) { revealed.append(folder); });
    QTableView* table = queue->QueueTable();
    const QPoint inside = table->visualRect(model->index(0, 0)).center();
    QTest::mouseClick(table->viewport(), Qt::LeftButton, {}, inside);
    QTest::mouseDClick(table->viewport(), Qt::LeftButton, {}, inside);
    TarnQueueWindow::setRevealer({});
    EXPECT_EQ(revealed, QStringList{dst()});
    clickButton(0, TarnActionCellDelegate::Button::Info);
    EXPECT_TRUE(queue->popover()->isVisible());
    EXPECT_TRUE(queue->popover()->popoverText()->toPlainText().contains(":: Action :: Copy"));
    QAccessibleInterface* access = QAccessible::queryAccessibleInterface(table);
    ASSERT_TRUE(access && access->tableInterface());
    EXPECT_EQ(access->tableInterface()->cellAt(0, 1)->text(QAccessible::Name), "Done");
    EXPECT_TRUE(access->tableInterface()->cellAt(0, 0)->text(QAccessible::Name).startsWith("Copy"));
}

// A row's Cancel button stops its action, and the row stays until the worker
// has stopped; Clear stops the rest once its question is answered "OK".
TEST_F(ActionWindowsTest, CancelAndClearButtonsStopTheActions) {
    stall = true;
    auto running = copy({file("A.mxf", 20 << 20)});
    copy({file("B.mxf")});
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
    answers.rule = always("OK");
    QTest::mouseClick(clear, Qt::LeftButton);
    EXPECT_EQ(model->rowCount(), 0);
    QTest::mouseClick(clear, Qt::LeftButton);  // an empty queue asks nothing
    EXPECT_EQ(answers.messages, QStringList(2, "Really clear queue?"));
    EXPECT_EQ(entries(dst()), QStringList());  // neither targets nor partial files
}

// The overwrite question of a copy whose target exists, open while the
// queue is cleared: neither waits on the other.
TEST_F(ActionWindowsTest, AClearWhileTheWorkerWaitsOnAQuestionDoesNotDeadlock) {
    ASSERT_TRUE(writeFile(dst() + "/A.mxf", "old target"));
    bool cleared = false;
    bool clearReturned = false;
    AnsweringPresenter answers([&](const TarnAlert::Request& request) -> QString {
        if (request.message == "Really clear queue?") return "OK";
        // The worker waits on this box: clear the queue meanwhile.
        cleared = manager.clearQueue();
        clearReturned = true;
        return QString();
    });
    auto action = copy({file("A.mxf"), file("B.mxf")});
    waitUntil([&] { return clearReturned && answers.presenter.openQuestions() == 0; });
    EXPECT_TRUE(cleared);
    EXPECT_EQ(manager.numberOfRows(), 0);
    EXPECT_TRUE(action->Action_Operation()->isFinished());
    EXPECT_TRUE(action->Action_Operation()->isCancelled());
    EXPECT_EQ(answers.messages,
              QStringList({"File exists at destination.\nOverwrite?", "Really clear queue?"}));
    // Nothing overwritten, nothing half-written, nothing after the cancel.
    EXPECT_EQ(contentOf(dst() + "/A.mxf"), "old target");
    EXPECT_EQ(entries(dst()), QStringList({"A.mxf"}));
}

TEST_F(ActionWindowsTest, ClosingThePresenterAnswersAWaitingWorkerCautiously) {
    ASSERT_TRUE(writeFile(dst() + "/A.mxf", "old target"));
    auto answers = std::make_unique<AnsweringPresenter>();
    answers->onShown = [&](QMessageBox*, const TarnAlert::Request&) {
        QTimer::singleShot(0, [&] { answers.reset(); });
    };
    auto action = copy({file("A.mxf")});
    waitUntil([&] { return action->Action_Operation()->isFinished(); });
    // "No": the old target stays.
    EXPECT_EQ(contentOf(dst() + "/A.mxf"), "old target");
    EXPECT_TRUE(action->Action_Operation()->actionLog().contains(":: SKIPPING"));
}

}  // namespace
