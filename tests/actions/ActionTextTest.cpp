#include "ActionTestKit.h"
#include "actions/TarnAction.h"
#include "actions/TarnNewActionRules.h"

using namespace actiontest;

namespace {

// A queue row: its description counts the items and names where they go (the
// progress text counts those done too); the status follows the worker and a
// cancel wins over the end of the run.
TEST(ActionRow, DescriptionAndStatusFollowTheWorker) {
    QTemporaryDir tmp;
    QList<TarnItemPtr> two;
    for (const QString name : {"A.mxf", "B.mxf"}) {
        writeFile(tmp.path() + "/src/" + name, content(name, 1500));
        two << makeItem(tmp.path() + "/src/" + name);
    }
    const struct Case {
        qsizetype items;
        QString action, destination, description;
    } cases[] = {
        {1, "Copy", tmp.path(), "Copy 1 item 1.50 kB \ndestination:\n" + tmp.path()},
        {2, "Move", tmp.path() + "/not/there", "Move 2 items 3.00 kB \ndestination:\nInvalid path"},
        {2, "Delete", tmp.path(),
         "Delete 2 items 3.00 kB \ndestination:\nSuper Secret Annihilator (SSA)"},
        {0, "Copy", tmp.path(), "InvalidAction"},
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

    TarnActionOptions o(two.mid(0, 1));
    o.Destination = tmp.path() + "/dst";
    o.mediaFolderRoots = {tmp.path() + "/src"};
    TarnAction a(o);
    QStringList seen;
    QObject::connect(&a, &TarnAction::statusChanged, [&](const QString& w) { seen << w; });
    a.SetStatusText();
    a.Action_Operation()->start();
    a.SetStatusText();
    a.Action_cancel();
    a.SetStatusText();
    EXPECT_EQ(seen, (QStringList{"Waiting", "Running", "Done", "Done", "Cancelled", "Cancelled"}));
    TarnAction b(o);
    b.Action_cancel();  // a waiting action shows it at once, and never "Done"
    EXPECT_EQ(b.statusText(), "Cancelled");
    b.Action_Operation()->start();
    EXPECT_EQ(b.statusText(), "Cancelled");
}

// What the command line cannot type: the dialog's percent escapes, a user
// that does not exist, a "~" inside a path, no destination at all.
TEST(ActionDestination, TildesAndEscapesAreResolvedOnlyWhereTheyMeanSomething) {
    const QString here = QDir::currentPath();
    const struct Case {
        QString typed, stored;
    } cases[] = {
        {"~/Media%20Folder/", QDir::homePath() + "/Media Folder"},
        {"~no-such-user-here/x", here + "/~no-such-user-here/x"},
        {"/a/~/b/./c/..", "/a/~/b"},
        {".", here},
        {QString(), QString()},
    };
    for (const Case& c : cases)
        EXPECT_EQ(TarnNewActionRules::normaliseDestination(c.typed), c.stored)
            << c.typed.toStdString();
}

TEST(Alert, NobodyToAskOrAnAbandonedQuestionIsARefusalAndExitIsTheApplicationsBusiness) {
    int shown = 0;
    TarnAlert::setPresenter([&](const TarnAlert::Request&) { return ++shown, 1002; });
    EXPECT_EQ(TarnAlert::ShowDialog_with_NoYesYesToAll("m", "d", [] { return true; }), 0);
    bool exited = false;
    TarnAlert::setExitHandler([&] { exited = true; });
    TarnAlert::ShowDialogAndExit_with_errorName("m", "d");
    TarnAlert::setExitHandler({});
    EXPECT_TRUE(exited);
    EXPECT_EQ(shown, 1);
    TarnAlert::setPresenter({});
    EXPECT_EQ(TarnAlert::ShowDialog_with_NoYesYesToAll("m", "d"), 0);
}

}  // namespace
