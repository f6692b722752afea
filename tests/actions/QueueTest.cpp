#include <QThread>

#include <atomic>

#include "ActionTestKit.h"
#include "actions/TarnActionManager.h"
#include "actions/TarnActionOperation.h"

using namespace actiontest;

namespace {

template <typename Condition>
void waitUntil(Condition condition) {
    while (!condition()) {
        QCoreApplication::processEvents();
        QThread::msleep(1);
    }
}

// Two copies, the newest on top: the first waits at its overwrite question
// (held open until released or abandoned), so the second waits its turn.
// (Clearing the queue and cancelling through its rows: the queue window's tests.)
TEST(Queue, ActionsRunOneAtATimeAndARemovedOneStopsOrNeverRuns) {
    for (const bool removed : {false, true}) {
        SCOPED_TRACE(removed ? "removed" : "released");
        QTemporaryDir tmp;
        const QString dst = tmp.path() + "/Dst";
        std::atomic<bool> asked{false}, release{false};
        TarnAlert::setPresenter([&](const TarnAlert::Request& r) {
            asked = true;
            while (!release && !(r.abandoned && r.abandoned())) QThread::msleep(2);
            return release ? int(TarnAlert::kSecondButton) : int(TarnAlert::kNoAnswer);
        });
        writeFile(dst + "/A.mxf", "old");
        TarnActionManager manager;
        QList<TarnActionManager::ActionPtr> actions;
        for (const QString name : {"A.mxf", "B.mxf"}) {
            writeFile(tmp.path() + "/src/" + name, content(name));
            TarnActionOptions o({makeItem(tmp.path() + "/src/" + name)});
            o.Destination = dst;
            o.Create_projects_folders = o.Create_mxf_folders = false;
            o.mediaFolderRoots = {tmp.path() + "/src"};
            actions << manager.SetUpNewActionWithOptions(o);
        }
        const TarnActionManager::ActionPtr first = actions.at(0), second = actions.at(1);
        EXPECT_EQ(manager.actions(), QList({second, first}));
        waitUntil([&] { return bool(asked); });
        manager.SetCellForRow(0);
        manager.SetCellForRow(1);
        EXPECT_TRUE(manager.timerRunning());
        EXPECT_EQ(first->statusText(), "Running");
        EXPECT_EQ(second->statusText(), "Waiting");
        EXPECT_EQ(TarnActionManager::progressValue(*first), 0.0);
        EXPECT_FALSE(TarnActionManager::progressValue(*second).has_value());
        EXPECT_FALSE(QFileInfo::exists(dst + "/B.mxf"));
        if (removed) {
            manager.queueRemoveAction(second);
            EXPECT_EQ(second->statusText(), "Cancelled");  // at once
            manager.queueRemoveAction(first);
            EXPECT_EQ(manager.numberOfRows(), 2);  // until the worker has stopped
            waitUntil([&] { return manager.numberOfRows() == 0; });
            EXPECT_TRUE(first->Action_Operation()->isFinished());
            EXPECT_FALSE(manager.timerRunning());
            EXPECT_FALSE(second->Action_Operation()->actionLog().contains("Execution Started"));
            manager.continueRemoveAction(first);  // gone already: nothing happens
        } else {
            release = true;
            manager.waitForIdle();
            EXPECT_EQ(second->statusText(), "Done");
        }
        EXPECT_EQ(first->statusText(), removed ? "Cancelled" : "Done");
        EXPECT_EQ(readFile(dst + "/A.mxf"), removed ? QByteArray("old") : content("A.mxf"));
        EXPECT_EQ(readFile(dst + "/B.mxf"), removed ? QByteArray() : content("B.mxf"));
        TarnAlert::setPresenter({});
    }
}

}  // namespace
