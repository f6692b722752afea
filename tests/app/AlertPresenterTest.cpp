#include <atomic>
#include <thread>

#include "AppTestKit.h"

using namespace apptest;

namespace {

// A box shows its buttons left to right in the order asked, answers by the
// position of the button pressed, and Escape presses the most cautious one.
TEST(AlertPresenter, ButtonsShowInOrderAndAnswerByPosition) {
    const struct {
        QStringList buttons;
        const char* press;
        int answer;
        int escape;  // kNoAnswer: Escape does nothing, the box is dismissed
    } cases[] = {
        {{"OK"}, "OK", 1000, 1000},
        {{"OK", "Cancel"}, "Cancel", 1001, 1001},
        {{"No", "Yes", "Yes to All"}, "Yes to All", 1002, 1000},
        {{"Ok", "Do NotShow Again"}, "Ok", 1000, 1000},
        {{"Skip All", "No", "Yes", "Yes to All", "Cancel"}, "Yes to All", 1003, 1004},
        {{"Left", "Right"}, "Right", 1001, TarnAlert::kNoAnswer},
    };
    for (const auto& c : cases) {
        for (bool escape : {false, true}) {
            SCOPED_TRACE(c.buttons.join('|').toStdString() + (escape ? " Escape" : ""));
            AnsweringPresenter answers(always(escape ? QString() : c.press));
            answers.onShown = [&](QMessageBox* box, const TarnAlert::Request& request) {
                QList<QAbstractButton*> buttons = box->buttons();
                std::sort(buttons.begin(), buttons.end(), [box](auto* a, auto* b) {
                    return a->mapTo(box, QPoint()).x() < b->mapTo(box, QPoint()).x();
                });
                QStringList order;
                for (QAbstractButton* button : buttons) {
                    order << button->text();
                    EXPECT_EQ(QStringList({button->objectName(), button->accessibleName()}),
                              QStringList(2, button->text()));
                }
                EXPECT_EQ(order, request.buttons);
                EXPECT_EQ(box->icon(), QMessageBox::Warning);
                EXPECT_EQ(QStringList({box->text(), box->informativeText()}),
                          QStringList({"Question", "/t"}));
                EXPECT_EQ(box->defaultButton()->text(), request.buttons.first());
                if (escape && box->escapeButton()) QTest::keyClick(box, Qt::Key_Escape);
                if (escape && !box->escapeButton()) answers.presenter.dismissOpenQuestions();
            };
            EXPECT_EQ(TarnAlert::ShowDialog_with_buttons("Question", "/t", c.buttons),
                      escape ? c.escape : c.answer);
            EXPECT_EQ(answers.presenter.openQuestions(), 0);
        }
    }
}

TEST(AlertPresenter, AWorkersQuestionIsAnsweredOnTheGuiThread) {
    AnsweringPresenter answers(always("Yes"));
    bool onGuiThread = false;
    answers.onShown = [&](QMessageBox*, const TarnAlert::Request&) {
        onGuiThread = QThread::currentThread() == qApp->thread();
    };
    std::atomic<int> answer{-1};
    std::thread worker([&] {
        answer = TarnAlert::ShowDialog_with_NoYesYesToAll("File exists at destination.\nOverwrite?",
                                                          "/dst/a.mxf", [] { return false; });
    });
    waitUntil([&] { return answer != -1; });
    worker.join();
    EXPECT_EQ(answer, TarnAlert::kSecondButton);
    EXPECT_TRUE(onGuiThread);
    EXPECT_EQ(answers.details, QStringList({"/dst/a.mxf"}));
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
        answers.onShown = [&](QMessageBox*, const TarnAlert::Request&) { cancelled = true; };
        std::thread worker([&] {
            answer = TarnAlert::ShowDialog_with_NoYesYesToAll("Overwrite?", "/t",
                                                              [&] { return cancelled.load(); });
        });
        if (shownFirst) {
            waitUntil([&] { return answer != -1 && answers.presenter.openQuestions() == 0; });
        } else {
            QThread::msleep(20);
            cancelled = true;
        }
        worker.join();
        QCoreApplication::processEvents();
        EXPECT_EQ(answer, TarnAlert::kNoAnswer);
        EXPECT_EQ(answers.messages.size(), shownFirst ? 1 : 0);
    }
}

}  // namespace
