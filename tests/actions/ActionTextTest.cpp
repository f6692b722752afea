#include "ActionTestKit.h"
#include "actions/TarnAction.h"
#include "actions/TarnNewActionRules.h"

using namespace actiontest;

namespace {

// A queue row: its description counts the items and names where they go; the
// progress text counts those done too. (Its status: the queue's tests.)
TEST(ActionRow, DescriptionCountsTheItemsAndNamesTheDestination) {
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

// Nobody to ask, or a question abandoned before it is shown: a refusal.
TEST(Alert, WithoutAnAnswerTheQuestionIsRefused) {
    TarnAlert::setPresenter(
        [](const TarnAlert::Request&) { return int(TarnAlert::kSecondButton); });
    EXPECT_EQ(TarnAlert::ShowDialog_with_NoYesYesToAll("m", "d", [] { return true; }), 0);
    TarnAlert::setPresenter({});
    EXPECT_EQ(TarnAlert::ShowDialog_with_NoYesYesToAll("m", "d"), 0);
}

}  // namespace
