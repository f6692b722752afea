#include <QTemporaryDir>

#include <pwd.h>
#include <unistd.h>

#include "ActionTestKit.h"
#include "actions/TarnAction.h"
#include "actions/TarnActionOperation.h"
#include "actions/TarnNewActionRules.h"

using namespace actiontest;

namespace {

struct TextFixture : ::testing::Test {
    QTemporaryDir tmp;
    QList<TarnItemPtr> items(int count) {
        QList<TarnItemPtr> list;
        for (int i = 0; i < count; ++i) {
            const QString path = tmp.path() + "/src/F" + QString::number(i) + ".mxf";
            writeFile(path, content(path, 1500));
            list << makeItem(path);
        }
        return list;
    }
};

TEST_F(TextFixture, DescriptionsCountItemsAndShowTheDestination) {
    const struct Case {
        int items;
        QString action, destination, description, progress;
    } cases[] = {
        {1, "Copy", tmp.path(), "Copy 1 item 1.50 kB \ndestination:\n" + tmp.path(),
         "Copy 0 of 1 item 1.50 kB \ndestination:\n" + tmp.path()},
        {2, "Move", tmp.path() + "/not/there", "Move 2 items 3.00 kB \ndestination:\nInvalid path",
         "Move 0 of 2 items 3.00 kB \ndestination:\nInvalid path"},
        {2, "Delete", tmp.path(),
         "Delete 2 items 3.00 kB \ndestination:\nSuper Secret Annihilator (SSA)",
         "Delete 0 of 2 items 3.00 kB \ndestination:\nSuper Secret Annihilator (SSA)"},
    };
    for (const Case& c : cases) {
        TarnActionOptions o(items(c.items));
        o.Action = c.action;
        o.Destination = c.destination;
        TarnAction a(o);
        a.SetStatusText();
        EXPECT_EQ(a.descriptionText(), c.description);
        EXPECT_EQ(a.progressDescription(), c.progress);
    }
    TarnAction none(TarnActionOptions(QList<TarnItemPtr>{}));
    none.SetStatusText();
    EXPECT_EQ(none.descriptionText(), "InvalidAction");
    EXPECT_EQ(none.progressDescription(), "InvalidAction");
    EXPECT_EQ(none.progressMaximum(), 100.0);
}

TEST_F(TextFixture, StatusFollowsTheWorker) {
    TarnActionOptions o(items(1));
    o.Destination = tmp.path() + "/dst";
    TarnAction a(o);
    QStringList seen;
    QObject::connect(&a, &TarnAction::statusChanged, [&](const QString& w) { seen << w; });
    a.SetStatusText();
    EXPECT_EQ(a.statusText(), "Waiting");
    a.Action_Operation()->start();
    EXPECT_EQ(a.statusText(), "Done");
    a.SetStatusText();
    EXPECT_EQ(a.statusText(), "Done");
    a.Action_cancel();
    EXPECT_EQ(a.statusText(), "Cancelled");
    a.SetStatusText();
    EXPECT_EQ(a.statusText(), "Cancelled");  // cancelled wins over finished
    EXPECT_EQ(seen, (QStringList{"Waiting", "Running", "Done", "Done", "Cancelled", "Cancelled"}));

    TarnAction b(o);
    b.Action_cancel();  // a waiting action shows it at once
    EXPECT_EQ(b.statusText(), "Cancelled");
    b.Action_Operation()->start();
    EXPECT_EQ(b.statusText(), "Cancelled");  // no "Done" for a cancelled run
}

TEST_F(TextFixture, SummaryOfTheNewActionDialog) {
    std::optional<quint64> total;
    TarnActionOptions nothing;
    EXPECT_EQ(TarnNewActionRules::updateStatusText(nothing, total),
              "No items selected \nSorry, nothing to do");

    TarnActionOptions o(items(2));
    o.Destination = tmp.path();
    EXPECT_EQ(TarnNewActionRules::updateStatusText(o, total),
              "will Copy \n2 items of 3.00 kB size\ndestination: " + tmp.path());
    EXPECT_EQ(total, 3000u);
    o.items->removeLast();  // the total is kept from the first time
    o.Destination = "/no/such/folder";
    EXPECT_EQ(TarnNewActionRules::updateStatusText(o, total),
              "will Copy \n1 item of 3.00 kB size\ndestination: Invalid path");
    o.Action = "Delete";
    EXPECT_EQ(TarnNewActionRules::updateStatusText(o, total),
              "will Delete \n1 item of 3.00 kB size\ndestination: Super Secret Annihilator (SSA)");

    o.Destination = "~/Media%20Folder";
    TarnNewActionRules::updateStatusText(o, total);
    EXPECT_EQ(o.Destination, QDir::homePath() + "/Media Folder");
}

// The destination the dialog and the worker keep is an absolute, clean folder
// path, however it was typed.
TEST_F(TextFixture, DestinationsBecomeAbsoluteCleanFolders) {
    const QString home = QDir::homePath();
    const QString here = QDir::currentPath();
    const struct passwd* me = ::getpwuid(::geteuid());
    ASSERT_NE(me, nullptr);
    const QString myName = QString::fromLocal8Bit(me->pw_name);
    const QString myHome = QDir::cleanPath(QFile::decodeName(me->pw_dir));
    const struct Case {
        QString typed;
        QString stored;
    } cases[] = {
        {tmp.path(), tmp.path()},
        {tmp.path() + "/", tmp.path()},
        {tmp.path() + "//src/../", tmp.path()},
        {tmp.path() + "/./src", tmp.path() + "/src"},
        {"relative/dst", here + "/relative/dst"},
        {".", here},
        {"~", home},
        {"~/", home},
        {"~/Media%20Folder/", home + "/Media Folder"},
        {"~" + myName + "/x", myHome + "/x"},
        {"~no-such-user-here/x", here + "/~no-such-user-here/x"},
        {"/a/~/b", "/a/~/b"},
        {QString(), QString()},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(TarnNewActionRules::normaliseDestination(c.typed), c.stored)
            << c.typed.toStdString();
        TarnActionOptions o(items(1));
        o.Destination = c.typed;
        TarnActionOperation op(o);
        EXPECT_EQ(op.targetURL(), c.stored) << c.typed.toStdString();
    }
    TarnActionOptions o(items(1));
    o.Destination = tmp.path() + "/src/../";
    TarnActionOperation op(o);
    EXPECT_EQ(op.validPath(), tmp.path());
    EXPECT_TRUE(op.actionLog().contains(":: destination :: " + tmp.path() + " \n"));
}

TEST_F(TextFixture, GoChecksSelectionDestinationAndConfirmation) {
    using Rules = TarnNewActionRules;
    TarnActionOptions o(items(1));
    o.Destination = tmp.path();
    Rules::Verdict v = Rules::PushGo(o);  // valid but not confirmed
    EXPECT_FALSE(v.accepted);
    EXPECT_TRUE(v.valid);
    EXPECT_EQ(v.message, "Please don't hurry, be patient...");
    EXPECT_EQ(
        v.detail,
        "Please verify everything before pressing \"GO\" button\nand check \"I'm sure\" checkbox");

    o.Im_sure = true;
    EXPECT_TRUE(Rules::PushGo(o).accepted);

    o.Destination = tmp.path() + "/later";
    v = Rules::PushGo(o);
    EXPECT_FALSE(v.accepted);
    EXPECT_EQ(v.message, "Please check destination path");
    o.Action = "Delete";
    EXPECT_TRUE(Rules::PushGo(o).accepted);

    o.Action = "Move";
    o.Destination = QString();
    EXPECT_EQ(Rules::PushGo(o).message, "Invalid destination path");
    o.Action = "Delete";
    EXPECT_TRUE(Rules::PushGo(o).accepted);

    TarnActionOptions empty;
    empty.Im_sure = true;
    EXPECT_EQ(Rules::PushGo(empty).message, "No items selected. Nothing to do.");
}

TEST_F(TextFixture, DialogOptionsForASelection) {
    using Rules = TarnNewActionRules;
    TarnActionOptions none = Rules::optionsForSelection({});
    EXPECT_FALSE(none.items.has_value());  // nothing selected: nothing to do
    TarnActionOptions o = Rules::optionsForSelection(items(2));
    ASSERT_TRUE(o.items.has_value());
    EXPECT_EQ(o.items->size(), 2);
    EXPECT_EQ(o.Destination, "Unknown");

    o.Keep_pmr = true;
    Rules::setKeepOriginalFolders(o, true);
    EXPECT_TRUE(o.Keep_pmr);
    Rules::setKeepOriginalFolders(o, false);
    EXPECT_FALSE(o.Keep_original_folders);
    EXPECT_FALSE(o.Keep_pmr);
}

TEST(AlertForms, ButtonsAndAnswerCodes) {
    QStringList buttons;
    int answer = TarnAlert::kThirdButton;
    TarnAlert::setPresenter([&](const TarnAlert::Request& r) {
        buttons << r.buttons.join('|');
        return answer;
    });
    EXPECT_EQ(TarnAlert::ShowDialog_with_NoYesYesToAll("m", "d"), 1002);
    answer = TarnAlert::kSecondButton;
    EXPECT_FALSE(TarnAlert::ShowDialog_with_OkDoNotShowAgain("m", "d"));
    answer = TarnAlert::kFirstButton;
    EXPECT_TRUE(TarnAlert::ShowDialog_with_OkDoNotShowAgain("m", "d"));
    EXPECT_EQ(TarnAlert::ShowDialog_with_YesNo("m", "d"), 1000);
    TarnAlert::ShowDialog_with_errorName("m", "d");
    bool exited = false;
    TarnAlert::setExitHandler([&] { exited = true; });
    TarnAlert::ShowDialogAndExit_with_errorName("m", "d");
    TarnAlert::setExitHandler({});
    EXPECT_TRUE(exited);
    // An abandoned question is never shown.
    EXPECT_EQ(TarnAlert::ShowDialog_with_NoYesYesToAll("m", "d", [] { return true; }), 0);
    TarnAlert::setPresenter({});
    EXPECT_EQ(TarnAlert::ShowDialog_with_NoYesYesToAll("m", "d"), 0);  // nobody to ask: refusal
    EXPECT_EQ(buttons, (QStringList{"No|Yes|Yes to All", "Ok|Do NotShow Again",
                                    "Ok|Do NotShow Again", "OK|Cancel", "OK", "OK"}));
}

}  // namespace
