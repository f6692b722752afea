#include <QThread>

#include <atomic>

#include "ActionTestKit.h"
#include "actions/TarnAction.h"
#include "actions/TarnActionManager.h"
#include "actions/TarnNewActionRules.h"

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
// (held open until abandoned), so the second waits its turn. Removed, the
// waiting one never runs and the running one keeps its row until its worker
// has stopped. (Answering, clearing and completing: the queue window's tests.)
TEST(Queue, ActionsRunOneAtATimeAndARemovedOneStopsOrNeverRuns) {
    // The queue posts its work to this thread's event loop.
    static int argc = 1;
    static char program[] = "tarn_test_actions", *argv[] = {program, nullptr};
    QCoreApplication application(argc, argv);
    QTemporaryDir tmp;
    const QString dst = tmp.path() + "/Dst";
    std::atomic<bool> asked{false};
    TarnAlert::setPresenter([&](const TarnAlert::Request& r) {
        asked = true;
        while (r.abandoned && !r.abandoned()) QThread::msleep(2);
        return int(TarnAlert::kNoAnswer);
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

    manager.queueRemoveAction(second);
    EXPECT_EQ(second->statusText(), "Cancelled");  // at once
    manager.queueRemoveAction(first);
    EXPECT_EQ(manager.numberOfRows(), 2);
    waitUntil([&] { return manager.numberOfRows() == 0; });
    EXPECT_TRUE(first->Action_Operation()->isFinished());
    EXPECT_EQ(first->statusText(), "Cancelled");  // never "Done"
    EXPECT_FALSE(manager.timerRunning());
    EXPECT_FALSE(second->Action_Operation()->actionLog().contains("Execution Started"));
    manager.continueRemoveAction(first);  // gone already: nothing happens
    EXPECT_EQ(contentOf(dst + "/A.mxf"), QByteArray("old"));
    EXPECT_FALSE(QFileInfo::exists(dst + "/B.mxf"));
    TarnAlert::setPresenter({});
}

// A queue row: its description counts the items and names where they go; the
// progress text counts those done too. (Its status: the queue's tests.)
struct ActionRow : ActionFixture {};

TEST_F(ActionRow, DescriptionCountsTheItemsAndNamesTheDestination) {
    const QList<TarnItemPtr> two{file("A.mxf", 1500), file("B.mxf", 1500)};
    const struct Case {
        qsizetype items;
        QString action, destination, description;
    } cases[] = {
        {1, "Copy", src(), "Copy 1 item 1.50 kB \ndestination:\n" + src()},
        {2, "Move", dst(), "Move 2 items 3.00 kB \ndestination:\nInvalid path"},
        {2, "Delete", src(),
         "Delete 2 items 3.00 kB \ndestination:\nSuper Secret Annihilator (SSA)"},
        {0, "Copy", src(), "InvalidAction"},
    };
    for (const Case& c : cases) {
        TarnActionOptions o(two.mid(0, c.items));
        o.Action = c.action;
        o.Destination = c.destination;
        TarnAction a(o);
        a.SetStatusText();
        EXPECT_EQ(a.descriptionText(), c.description);
        EXPECT_EQ(a.progressDescription(),
                  QString(c.description).replace(c.action + " ", c.action + " 0 of "));
    }
}

// What the command line cannot type: the dialog's percent escapes, a user
// that does not exist, a "~" inside a path, no destination at all.
TEST(ActionDestination, TildesAndEscapesAreResolvedOnlyWhereTheyMeanSomething) {
    const QString here = QDir::currentPath();
    const struct Case {
        QString typed, stored;
    } cases[] = {{"~/Media%20Folder/", QDir::homePath() + "/Media Folder"},
                 {"~no-such-user-here/x", here + "/~no-such-user-here/x"},
                 {"/a/~/b/./c/..", "/a/~/b"},
                 {".", here},
                 {QString(), QString()}};
    for (const Case& c : cases)
        EXPECT_EQ(TarnNewActionRules::normaliseDestination(c.typed), c.stored)
            << c.typed.toStdString();
}

// Nobody to ask: a refusal. (A question abandoned before it is shown: the
// alert presenter's tests.)
TEST(Alert, WithNobodyToAskTheQuestionIsRefused) {
    TarnAlert::setPresenter({});
    EXPECT_EQ(TarnAlert::ShowDialog_with_NoYesYesToAll("m", "d"), 0);
}

}  // namespace
