#include <QProcess>
#include <QTemporaryDir>

#include <unistd.h>

#include "ActionTestKit.h"
#include "TestSupport.h"
#include "actions/TarnActionOperation.h"

using namespace actiontest;

namespace {

// Every delete test gets its own Trash (under a private data folder).
struct DeleteFixture : ::testing::Test {
    QTemporaryDir tmp;
    QByteArray savedDataHome = qgetenv("XDG_DATA_HOME");
    void SetUp() override { qputenv("XDG_DATA_HOME", QFile::encodeName(dataHome())); }
    void TearDown() override {
        if (savedDataHome.isNull())
            qunsetenv("XDG_DATA_HOME");
        else
            qputenv("XDG_DATA_HOME", savedDataHome);
    }
    QString dataHome() const { return tmp.path() + QStringLiteral("/data"); }
    QString src() const { return tmp.path() + QStringLiteral("/Vol/Avid MediaFiles/MXF/1"); }
    // A file where the data folder should be: no Trash can be made.
    void blockTrash() {
        writeFile(tmp.path() + "/blocked", "x");
        qputenv("XDG_DATA_HOME", QFile::encodeName(tmp.path() + "/blocked/data"));
    }
    TarnActionOptions options(const QList<TarnItemPtr>& items) {
        TarnActionOptions o(items);
        o.Action = QStringLiteral("Delete");
        o.mediaFolderRoots = {tmp.path() + QStringLiteral("/Vol")};
        return o;
    }
    TarnItemPtr file(const QString& name) {
        EXPECT_TRUE(writeFile(src() + "/" + name, content(name)));
        return makeItem(src() + "/" + name);
    }
};

TEST_F(DeleteFixture, DeleteMovesToTheTrashAndMarksTheItem) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    TarnActionOperation op(options({a}));
    op.start();
    EXPECT_EQ(untimed(op.actionLog()), QStringLiteral("T :: TarnAction init \n"
                                                      ":: Action :: Delete \n"
                                                      ":: 1 :: items \n"
                                                      "T :: TarnAction queued\n"
                                                      "T :: TarnAction Execution Started\n"
                                                      "T :: DELETING :: %1 \n"
                                                      ":: SUCCEED ::\n"
                                                      "T :: TarnAction Finished\n")
                                           .arg(a->DB_itemPath));
    EXPECT_FALSE(QFileInfo::exists(a->DB_itemPath));
    EXPECT_EQ(readFile(dataHome() + "/Trash/files/A.mxf"), content("A.mxf"));
    EXPECT_FALSE(a->DB_FileExists);
    EXPECT_FALSE(a->DB_isValid);
    EXPECT_FALSE(a->DB_isValid_initial);
    EXPECT_EQ(op.BytesDone(), 4096u);
}

TEST_F(DeleteFixture, AnAlreadyMissingFileLogsNothingButCounts) {
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    QFile::remove(a->DB_itemPath);
    a->DB_FileExists = false;  // as a re-scan finds it
    a->DB_filesize = 1234;
    TarnActionOperation op(options({a}));
    op.start();
    EXPECT_EQ(untimed(op.actionLog()), QStringLiteral("T :: TarnAction init \n"
                                                      ":: Action :: Delete \n"
                                                      ":: 1 :: items \n"
                                                      "T :: TarnAction queued\n"
                                                      "T :: TarnAction Execution Started\n"
                                                      "T :: TarnAction Finished\n"));
    EXPECT_EQ(op.BytesDone(), 1234u);
    EXPECT_EQ(op.itemsDone(), 1u);
}

TEST_F(DeleteFixture, WithoutTrashThePermanentDeleteQuestionDecides) {
    blockTrash();
    QList<TarnItemPtr> items;
    for (const char* n : {"A.mxf", "B.mxf", "C.mxf", "D.mxf"}) items << file(n);
    ScriptedAnswers answers(
        {TarnAlert::kSecondButton, TarnAlert::kFirstButton, TarnAlert::kThirdButton});
    testsupport::LogCapture console;
    TarnActionOperation op(options(items));
    op.start();
    EXPECT_EQ(answers.asked(), QStringList(3, QStringLiteral("File can not be moved to the Trash.\n"
                                                             "Try to delete permanently?")));
    EXPECT_EQ(answers.details().first(), items[0]->DB_itemPath);
    EXPECT_FALSE(QFileInfo::exists(items[0]->DB_itemPath));  // Yes
    EXPECT_TRUE(QFileInfo::exists(items[1]->DB_itemPath));   // No
    EXPECT_FALSE(QFileInfo::exists(items[2]->DB_itemPath));  // Yes to All
    EXPECT_FALSE(QFileInfo::exists(items[3]->DB_itemPath));  // ...answers this one
    EXPECT_TRUE(items[1]->DB_FileExists);
    EXPECT_FALSE(items[3]->DB_FileExists);
    const QString log = untimed(op.actionLog());
    EXPECT_EQ(log.count(":: SUCCEED ::\n"), 3);
    EXPECT_TRUE(log.contains(QStringLiteral(":: SKIPPED :: %1 \n").arg(items[1]->DB_itemPath)));
    EXPECT_EQ(console.count("Delegate returned NO"), 1);
    EXPECT_EQ(op.filesFailed(), 0u);  // trashing failed, but every file had its answer
    EXPECT_EQ(log.count(QRegularExpression(":: ERROR :: \\d+ :: No Trash folder at [^\\n]* \\n")),
              4);
    EXPECT_EQ(op.BytesDone(), 4 * 4096u);
}

TEST_F(DeleteFixture, AFileThatCannotBeRemovedIsReported) {
    blockTrash();
    TarnItemPtr a = file(QStringLiteral("A.mxf"));
    TarnItemPtr b = file(QStringLiteral("B.mxf"));
    bool locked = false;
    if (::geteuid() == 0) {
        locked = QProcess::execute("chattr", {"+i", a->DB_itemPath}) == 0 &&
                 QProcess::execute("chattr", {"+i", b->DB_itemPath}) == 0;
    } else {
        locked = QFile::setPermissions(src(), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    }
    if (!locked) GTEST_SKIP() << "cannot make a file unremovable here (chattr)";
    // Yes, Ok, Yes, (no second error dialog after "Do NotShow Again")
    ScriptedAnswers answers(
        {TarnAlert::kSecondButton, TarnAlert::kSecondButton, TarnAlert::kSecondButton});
    TarnActionOperation op(options({a, b}));
    op.start();
    if (::geteuid() == 0) {
        QProcess::execute("chattr", {"-i", a->DB_itemPath});
        QProcess::execute("chattr", {"-i", b->DB_itemPath});
    } else {
        QFile::setPermissions(
            src(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    }
    EXPECT_EQ(answers.asked().size(), 3);
    EXPECT_EQ(answers.buttons().at(1), QStringLiteral("Ok|Do NotShow Again"));
    EXPECT_FALSE(op.ShowAllErrorDialogs());
    const QString errorLine =
        QStringLiteral(":: ERROR :: %1 :: %2 \n")
            .arg(::geteuid() == 0 ? "Operation not permitted" : "Permission denied");
    EXPECT_TRUE(op.actionLog().contains(errorLine.arg(a->DB_itemPath)));
    EXPECT_TRUE(op.actionLog().contains(errorLine.arg(b->DB_itemPath)));
    EXPECT_FALSE(op.actionLog().contains(":: SUCCEED ::"));
    EXPECT_EQ(op.filesFailed(), 2u);
    EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
    EXPECT_TRUE(a->DB_FileExists);
}

}  // namespace
