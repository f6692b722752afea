#include "ActionTestKit.h"

using namespace actiontest;

namespace {

// No Trash can be made: a file is where the data folder should be.
struct DeleteTest : ActionFixture {
    void SetUp() override {
        writeFile(tmp.path() + "/blocked", "x");
        qputenv("XDG_DATA_HOME", QFile::encodeName(tmp.path() + "/blocked/data"));
    }
};

TEST_F(DeleteTest, WithoutTrashThePermanentDeleteQuestionDecides) {
    QList<TarnItemPtr> items;
    for (const char* n : {"A.mxf", "B.mxf", "C.mxf", "D.mxf"}) items << file(n);
    ScriptedAnswers answers(
        {TarnAlert::kSecondButton, TarnAlert::kFirstButton, TarnAlert::kThirdButton});
    TarnActionOperation op(options(items, "Delete"));
    op.start();
    EXPECT_EQ(answers.asked,
              QStringList(3, "File can not be moved to the Trash.\nTry to delete permanently?"));
    EXPECT_EQ(answers.details.first(), items[0]->DB_itemPath);
    // Yes, No, Yes to All, and that answers the last one.
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ(QFileInfo::exists(items[i]->DB_itemPath), i == 1) << i;
        EXPECT_EQ(items[i]->DB_FileExists, i == 1) << i;
    }
    const QString log = untimed(op.actionLog());
    EXPECT_EQ(log.count(":: SUCCEED ::\n"), 3);
    EXPECT_TRUE(log.contains(":: SKIPPED :: " + items[1]->DB_itemPath + " \n"));
    EXPECT_EQ(op.filesFailed(), 0u);  // trashing failed, but every file had its answer
    EXPECT_EQ(log.count(QRegularExpression(":: ERROR :: \\d+ :: No Trash folder at [^\\n]* \\n")),
              4);
    EXPECT_EQ(op.BytesDone(), 4 * 4096u);
}

TEST_F(DeleteTest, AFileThatCannotBeRemovedIsReported) {
    TarnItemPtr a = file("A.mxf");
    TarnItemPtr b = file("B.mxf");
    // Yes, Ok, Yes, (no second error dialog after "Do NotShow Again")
    ScriptedAnswers answers(
        {TarnAlert::kSecondButton, TarnAlert::kSecondButton, TarnAlert::kSecondButton});
    TarnActionOperation op(options({a, b}, "Delete"));
    {
        Locked folder(src(), 0500);
        if (!folder.ok()) GTEST_SKIP() << "cannot make a folder unchangeable here (chattr)";
        op.start();
    }
    EXPECT_EQ(answers.asked.size(), 3);
    const QString error = ::geteuid() == 0 ? "Operation not permitted" : "Permission denied";
    for (const TarnItemPtr& item : {a, b}) {
        EXPECT_TRUE(
            op.actionLog().contains(":: ERROR :: " + error + " :: " + item->DB_itemPath + " \n"));
        EXPECT_EQ(contentOf(item->DB_itemPath), content(item->DB_ClipName));
        EXPECT_TRUE(item->DB_FileExists);
    }
    EXPECT_FALSE(op.actionLog().contains(":: SUCCEED ::"));
    EXPECT_EQ(op.filesFailed(), 2u);
}

}  // namespace
