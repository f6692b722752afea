#include <QThread>

#include <atomic>

#include "ActionTestKit.h"
#include "actions/TarnActionManager.h"
#include "actions/TarnActionOperation.h"

using namespace actiontest;

namespace {

// Holds the overwrite question open until released or abandoned; answers the
// queue's own question from `clearAnswer`.
struct HeldQuestion {
    std::atomic<bool> asked{false};
    std::atomic<bool> release{false};
    std::atomic<int> clearAnswer{TarnAlert::kNoAnswer};
    std::atomic<int> clearAsked{0};
    HeldQuestion() {
        TarnAlert::setPresenter([this](const TarnAlert::Request& r) {
            if (r.message == QLatin1String("Really clear queue?")) {
                ++clearAsked;
                return int(clearAnswer);
            }
            asked = true;
            while (!release && !(r.abandoned && r.abandoned())) QThread::msleep(2);
            return release ? int(TarnAlert::kSecondButton) : int(TarnAlert::kNoAnswer);
        });
    }
    ~HeldQuestion() { TarnAlert::setPresenter({}); }
};

template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) {
        QCoreApplication::processEvents();
        QThread::msleep(1);
    }
}

struct QueueFixture : ::testing::Test {
    QTemporaryDir tmp;
    TarnActionManager manager;
    QString dst() const { return tmp.path() + "/Dst"; }
    // A copy into an existing folder; when its target exists (`held`), its
    // run stops at the overwrite question.
    TarnActionOptions copy(const QString& name, bool held = false) {
        writeFile(tmp.path() + "/src/" + name, content(name));
        QDir().mkpath(dst());
        if (held) writeFile(dst() + "/" + name, "old");
        TarnActionOptions o({makeItem(tmp.path() + "/src/" + name)});
        o.Destination = dst();
        o.Create_projects_folders = o.Create_mxf_folders = false;
        o.mediaFolderRoots = {tmp.path() + "/src"};
        return o;
    }
};

TEST_F(QueueFixture, ActionsRunOneAtATimeNewestOnTop) {
    HeldQuestion held;
    auto first = manager.SetUpNewActionWithOptions(copy("A.mxf", true));
    auto second = manager.SetUpNewActionWithOptions(copy("B.mxf"));
    ASSERT_EQ(manager.numberOfRows(), 2);
    EXPECT_EQ(manager.actions().at(0), second);
    EXPECT_EQ(manager.actions().at(1), first);
    waitUntil([&] { return bool(held.asked); });
    manager.SetCellForRow(0);
    manager.SetCellForRow(1);
    EXPECT_TRUE(manager.timerRunning());
    EXPECT_EQ(first->statusText(), "Running");
    EXPECT_EQ(second->statusText(), "Waiting");
    EXPECT_EQ(second->descriptionText(), "Copy 1 item 4.10 kB \ndestination:\n" + dst());
    EXPECT_EQ(second->progressMaximum(), 4096.0);
    EXPECT_EQ(TarnActionManager::progressValue(*first), 0.0);
    EXPECT_FALSE(TarnActionManager::progressValue(*second).has_value());
    EXPECT_FALSE(QFileInfo::exists(dst() + "/B.mxf"));

    held.release = true;
    manager.waitForIdle();
    EXPECT_EQ(first->statusText(), "Done");
    EXPECT_EQ(second->statusText(), "Done");
    EXPECT_EQ(first->progressDescription(), "Copy 1 of 1 item 4.10 kB \ndestination:\n" + dst());
    EXPECT_EQ(readFile(dst() + "/A.mxf"), content("A.mxf"));
    EXPECT_EQ(readFile(dst() + "/B.mxf"), content("B.mxf"));
}

TEST_F(QueueFixture, RemovingARunningActionWaitsForItsWorker) {
    HeldQuestion held;
    auto running = manager.SetUpNewActionWithOptions(copy("A.mxf", true));
    auto waiting = manager.SetUpNewActionWithOptions(copy("B.mxf"));
    manager.SetCellForRow(0);
    manager.SetCellForRow(1);
    waitUntil([&] { return bool(held.asked); });

    manager.queueRemoveAction(waiting);
    EXPECT_EQ(waiting->statusText(), "Cancelled");  // at once

    manager.queueRemoveAction(running);
    EXPECT_EQ(running->statusText(), "Cancelled");
    EXPECT_EQ(manager.numberOfRows(), 2);  // rows stay until the worker has stopped
    waitUntil([&] { return manager.numberOfRows() == 0; });
    EXPECT_TRUE(running->Action_Operation()->isFinished());
    EXPECT_FALSE(manager.timerRunning());
    // The waiting one never ran; the running one stopped at its question.
    EXPECT_FALSE(waiting->Action_Operation()->actionLog().contains("Execution Started"));
    EXPECT_FALSE(QFileInfo::exists(dst() + "/B.mxf"));
    EXPECT_EQ(readFile(dst() + "/A.mxf"), QByteArray("old"));
    // Removing an action that is gone does nothing.
    manager.continueRemoveAction(running);
    EXPECT_EQ(manager.numberOfRows(), 0);
}

TEST_F(QueueFixture, ClearAsksAndOnOkCancelsAndEmptiesTheQueue) {
    HeldQuestion held;
    EXPECT_FALSE(manager.clearQueue());  // empty: nothing asked
    EXPECT_EQ(held.clearAsked, 0);

    auto running = manager.SetUpNewActionWithOptions(copy("A.mxf", true));
    auto waiting = manager.SetUpNewActionWithOptions(copy("B.mxf"));
    waitUntil([&] { return bool(held.asked); });
    held.clearAnswer = TarnAlert::kSecondButton;  // "Cancel"
    EXPECT_FALSE(manager.clearQueue());
    EXPECT_EQ(manager.numberOfRows(), 2);
    EXPECT_FALSE(running->Action_Operation()->isCancelled());

    held.clearAnswer = TarnAlert::kFirstButton;  // "OK"
    EXPECT_TRUE(manager.clearQueue());
    EXPECT_EQ(held.clearAsked, 2);
    EXPECT_EQ(manager.numberOfRows(), 0);
    EXPECT_TRUE(running->Action_Operation()->isFinished());
    EXPECT_TRUE(waiting->Action_Operation()->isFinished());
    EXPECT_TRUE(running->Action_Operation()->isCancelled());
    EXPECT_EQ(readFile(dst() + "/A.mxf"), QByteArray("old"));
    EXPECT_FALSE(QFileInfo::exists(dst() + "/B.mxf"));
}

}  // namespace
