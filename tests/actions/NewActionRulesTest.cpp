#include <QTemporaryDir>

#include "ActionTestKit.h"
#include "actions/TarnNewActionRules.h"

namespace {

using Rules = TarnNewActionRules;

// "GO" takes the options to the queue only with a selection, a usable
// destination (none needed to delete) and "I'm sure" ticked; otherwise it says
// what is missing.
TEST(NewActionRules, GoNamesWhatIsMissing) {
    QTemporaryDir tmp;
    const QList<TarnItemPtr> one = {testsupport::makeItem("/v/a.mxf")};
    struct Case {
        const char* action;
        QString destination;
        bool sure, selected, accepted;
        const char* message;
    } cases[] = {
        {"Copy", tmp.path(), false, true, false, "Please don't hurry, be patient..."},
        {"Copy", tmp.path(), true, true, true, ""},
        {"Copy", tmp.path() + "/later", true, true, false, "Please check destination path"},
        {"Delete", tmp.path() + "/later", true, true, true, ""},
        {"Move", QString(), true, true, false, "Invalid destination path"},
        {"Delete", QString(), true, true, true, ""},
        {"Copy", tmp.path(), true, false, false, "No items selected. Nothing to do."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string(c.action) + " " + c.message);
        TarnActionOptions o = Rules::optionsForSelection(c.selected ? one : QList<TarnItemPtr>{});
        o.Action = c.action;
        o.Destination = c.destination;
        o.Im_sure = c.sure;
        const Rules::Verdict v = Rules::PushGo(o);
        EXPECT_EQ(v.accepted, c.accepted);
        EXPECT_EQ(v.message, c.accepted ? "" : c.message);
    }
}

// Keeping the original folders is what allows keeping the index files.
TEST(NewActionRules, IndexFilesAreKeptOnlyWithTheOriginalFolders) {
    TarnActionOptions o = Rules::optionsForSelection({testsupport::makeItem("/v/a.mxf")});
    EXPECT_EQ(o.Destination, "Unknown");
    o.Keep_pmr = true;
    Rules::setKeepOriginalFolders(o, true);
    EXPECT_TRUE(o.Keep_pmr);
    Rules::setKeepOriginalFolders(o, false);
    EXPECT_FALSE(o.Keep_original_folders || o.Keep_pmr);
}

// A fatal error is shown, then the installed exit handler ends the program.
TEST(NewActionRules, AFatalAlertIsShownThenExits) {
    actiontest::ScriptedAnswers answers({TarnAlert::kFirstButton});
    bool exited = false;
    TarnAlert::setExitHandler([&] { exited = true; });
    TarnAlert::ShowDialogAndExit_with_errorName("Tarn error DB-001", "d");
    TarnAlert::setExitHandler({});
    EXPECT_TRUE(exited);
    EXPECT_EQ(answers.asked, QStringList{"Tarn error DB-001"});
}

}  // namespace
