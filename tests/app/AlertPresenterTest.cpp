#include <QApplication>
#include <QPushButton>
#include <QTest>
#include <QTimer>

#include <algorithm>
#include <atomic>
#include <thread>

#include "AppTestKit.h"
#include "actions/TarnActionManager.h"
#include "actions/TarnActionOperation.h"

using namespace apptest;

namespace {

// The buttons of a box from left to right.
QStringList visualOrder(QMessageBox* box) {
    QList<QAbstractButton*> buttons = box->buttons();
    std::sort(buttons.begin(), buttons.end(), [box](QAbstractButton* a, QAbstractButton* b) {
        return a->mapTo(box, QPoint()).x() < b->mapTo(box, QPoint()).x();
    });
    QStringList texts;
    for (QAbstractButton* button : buttons) texts << button->text();
    return texts;
}

TEST(AlertPresenter, EveryFormShowsItsButtonsInOrderAndAnswersByPosition) {
    const auto error = [] {
        TarnAlert::ShowDialog_with_errorName("Not implemented", "Maybe");
        return 0;
    };
    const auto yesNo = [] { return TarnAlert::ShowDialog_with_YesNo("Really clear?", "Sure?"); };
    const auto overwrite = [] { return TarnAlert::ShowDialog_with_NoYesYesToAll("Exists", "/t"); };
    const auto okOrNever = [] {
        return int(TarnAlert::ShowDialog_with_OkDoNotShowAgain("E", "/t"));
    };
    const auto five = [] {
        return TarnAlert::ShowDialog_with_buttons(
            "File can not be moved.\nCopy?", "/s",
            {"Skip All", "No", "Yes", "Yes to All", "Cancel"});
    };
    const struct {
        std::function<int()> ask;
        const char* buttons;
        const char* press;
        int expected;
    } cases[] = {
        {error, "OK", "OK", 0},
        {yesNo, "OK|Cancel", "Cancel", 1001},
        {yesNo, "OK|Cancel", "OK", 1000},
        {overwrite, "No|Yes|Yes to All", "Yes to All", 1002},
        {okOrNever, "Ok|Do NotShow Again", "Do NotShow Again", 0},
        {okOrNever, "Ok|Do NotShow Again", "Ok", 1},
        {five, "Skip All|No|Yes|Yes to All|Cancel", "Yes to All", 1003},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(std::string(c.buttons) + " " + c.press);
        AnsweringPresenter answers(always(c.press));
        QStringList order;
        answers.onShown([&](QMessageBox* box, const TarnAlert::Request& request) {
            order = visualOrder(box);
            EXPECT_EQ(box->icon(), QMessageBox::Warning);
            EXPECT_EQ(box->text(), request.message);
            EXPECT_EQ(box->informativeText(), request.detail);
            EXPECT_EQ(box->defaultButton()->text(), request.buttons.first());
            for (QAbstractButton* button : box->buttons()) {
                EXPECT_EQ(button->objectName(), button->text());
                EXPECT_EQ(button->accessibleName(), button->text());
            }
        });
        EXPECT_EQ(c.ask(), c.expected);
        EXPECT_EQ(answers.buttons(), QStringList({c.buttons}));
        EXPECT_EQ(order.join('|'), c.buttons);
        EXPECT_EQ(answers.presenter().openQuestions(), 0);
    }
}

TEST(AlertPresenter, EscapeAnswersTheMostCautiousButton) {
    const struct {
        QStringList buttons;
        int expected;
    } cases[] = {
        {{"No", "Yes", "Yes to All"}, 1000},
        {{"Skip All", "No", "Yes", "Yes to All", "Cancel"}, 1004},
        {{"OK", "Cancel"}, 1001},
        {{"Ok", "Do NotShow Again"}, 1000},
        {{"OK"}, 1000},
        {{"Left", "Right"}, TarnAlert::kNoAnswer},  // Escape does nothing; dismissed
    };
    for (const auto& c : cases) {
        AnsweringPresenter answers;
        answers.onShown([&](QMessageBox* box, const TarnAlert::Request&) {
            if (box->escapeButton())
                QTest::keyClick(box, Qt::Key_Escape);
            else
                answers.presenter().dismissOpenQuestions();
        });
        EXPECT_EQ(TarnAlert::ShowDialog_with_buttons("Question", "", c.buttons), c.expected)
            << c.buttons.join('|').toStdString();
    }
}

TEST(AlertPresenter, AWorkersQuestionIsAnsweredOnTheGuiThread) {
    AnsweringPresenter answers(always("Yes"));
    bool onGuiThread = false;
    answers.onShown([&](QMessageBox*, const TarnAlert::Request&) {
        onGuiThread = QThread::currentThread() == qApp->thread();
    });
    std::atomic<int> answer{-1};
    std::thread worker([&] {
        answer = TarnAlert::ShowDialog_with_NoYesYesToAll("File exists at destination.\nOverwrite?",
                                                          "/dst/a.mxf", [] { return false; });
    });
    waitUntil([&] { return answer != -1; });
    worker.join();
    EXPECT_EQ(answer, TarnAlert::kSecondButton);
    EXPECT_TRUE(onGuiThread);
    EXPECT_EQ(answers.details(), QStringList({"/dst/a.mxf"}));
}

// A question whose action is cancelled goes unanswered: one cancelled before
// its turn is never shown (the worker gives up without the GUI thread, which
// runs no events meanwhile), an open one closes.
TEST(AlertPresenter, ACancelledActionsQuestionIsDroppedOrClosed) {
    for (bool shownFirst : {false, true}) {
        SCOPED_TRACE(shownFirst);
        AnsweringPresenter answers;  // nobody answers
        std::atomic<bool> cancelled{false};
        std::atomic<int> answer{-1};
        answers.onShown([&](QMessageBox*, const TarnAlert::Request&) { cancelled = true; });
        std::thread worker([&] {
            answer = TarnAlert::ShowDialog_with_NoYesYesToAll("Overwrite?", "/t",
                                                              [&] { return cancelled.load(); });
        });
        if (shownFirst) {
            waitUntil([&] { return answer != -1 && answers.presenter().openQuestions() == 0; });
        } else {
            QThread::msleep(20);
            cancelled = true;
        }
        worker.join();
        QCoreApplication::processEvents();
        EXPECT_EQ(answer, TarnAlert::kNoAnswer);
        EXPECT_EQ(answers.messages().size(), shownFirst ? 1 : 0);
    }
}

// Actions through the queue, as the window runs them.
struct QueueFixture : ::testing::Test {
    QTemporaryDir tmp;
    TarnActionManager manager;
    QString src() const { return tmp.path() + "/Vol/Avid MediaFiles/MXF/1"; }
    QString dst() const { return tmp.path() + "/Dst"; }
    QString target(const QString& name) const { return dst() + "/Doc/MXF/" + name; }
    TarnItemPtr file(const QString& name) {
        EXPECT_TRUE(writeFile(src() + "/" + name, content(name)));
        return makeItem(src() + "/" + name);
    }
    TarnActionManager::ActionPtr start(const QString& action, const QList<TarnItemPtr>& items) {
        EXPECT_TRUE(writeFile(target("A.mxf"), "old target"));
        TarnActionOptions o(items);
        o.Action = action;
        o.Destination = dst();
        o.Im_sure = true;
        o.mediaFolderRoots = {tmp.path() + "/Vol/Avid MediaFiles/MXF"};
        return manager.SetUpNewActionWithOptions(o);
    }
    bool finished(const TarnActionManager::ActionPtr& action) {
        return action->Action_Operation()->isFinished();
    }
};

TEST_F(QueueFixture, AMovesOverwriteQuestionIsAnsweredThroughTheDialog) {
    // A refused overwrite leaves the file "not moveable", which asks again.
    const QString overwrite = "File exists at destination.\nOverwrite?";
    const struct {
        const char* press;
        bool moved;
        QStringList asked;
    } cases[] = {{"Yes", true, {overwrite}},
                 {"No", false, {overwrite, "File can not be moved.\nCopy?"}}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.press);
        AnsweringPresenter answers(always(c.press));
        auto action = start("Move", {file("A.mxf")});
        waitUntil([&] { return finished(action); });
        EXPECT_EQ(answers.messages(), c.asked);
        EXPECT_EQ(answers.details().value(0), target("A.mxf"));
        EXPECT_EQ(readFile(target("A.mxf")), c.moved ? content("A.mxf") : "old target");
        EXPECT_EQ(QFileInfo::exists(src() + "/A.mxf"), !c.moved);
        QFile::remove(src() + "/A.mxf");
    }
}

TEST_F(QueueFixture, AClearWhileTheWorkerWaitsOnAQuestionDoesNotDeadlock) {
    bool cleared = false;
    bool clearReturned = false;
    AnsweringPresenter answers([&](const TarnAlert::Request& request) -> QString {
        if (request.message == "Really clear queue?") return "OK";
        // The worker waits on this box: clear the queue meanwhile.
        cleared = manager.clearQueue();
        clearReturned = true;
        return QString();
    });
    auto action = start("Copy", {file("A.mxf"), file("B.mxf")});
    waitUntil([&] { return clearReturned && answers.presenter().openQuestions() == 0; });
    EXPECT_TRUE(cleared);
    EXPECT_EQ(manager.numberOfRows(), 0);
    EXPECT_TRUE(finished(action));
    EXPECT_TRUE(action->Action_Operation()->isCancelled());
    EXPECT_EQ(answers.messages(),
              QStringList({"File exists at destination.\nOverwrite?", "Really clear queue?"}));
    // Nothing overwritten, nothing half-written, nothing after the cancel.
    EXPECT_EQ(readFile(target("A.mxf")), "old target");
    EXPECT_EQ(entries(dst() + "/Doc/MXF"), QStringList({"A.mxf"}));
}

TEST_F(QueueFixture, ClosingThePresenterAnswersAWaitingWorkerCautiously) {
    auto answers = std::make_unique<AnsweringPresenter>();
    answers->onShown([&](QMessageBox*, const TarnAlert::Request&) {
        QTimer::singleShot(0, [&] { answers.reset(); });
    });
    auto action = start("Copy", {file("A.mxf")});
    waitUntil([&] { return finished(action); });
    // "No": the old target stays.
    EXPECT_EQ(readFile(target("A.mxf")), "old target");
    EXPECT_TRUE(action->Action_Operation()->actionLog().contains(":: SKIPPING"));
}

}  // namespace
