#include "ActionTestKit.h"

using namespace actiontest;

namespace {

struct MoveTest : ActionFixture {};

// A move to another file system copies, then removes the source: cancelled
// part way, or failing at the end (a folder holds the target's name), it
// keeps the source.
TEST_F(MoveTest, AcrossFileSystemsTheSourceGoesOnlyAfterAWholeCopy) {
    if (!shmIsAnotherVolume(tmp.path())) GTEST_SKIP() << "/dev/shm is no other volume here";
    enum Ending { Done, Cancelled, Failed };
    for (const Ending ending : {Done, Cancelled, Failed}) {
        SCOPED_TRACE(int(ending));
        QTemporaryDir other(QStringLiteral("/dev/shm/tarn-move-XXXXXX"));
        const qint64 size = ending == Cancelled ? kBig : 3 * 1024 * 1024 + 17;
        TarnItemPtr a = ending == Cancelled ? big("A.mxf", size) : file("A.mxf", int(size));
        const QString target = other.path() + "/A.mxf";
        if (ending == Failed) writeFile(target + "/inside", "keep");
        TarnActionOptions o = flat({a}, "Move");
        o.Destination = other.path();
        ScriptedAnswers answers({TarnAlert::kSecondButton});
        testsupport::LogCapture console;
        TarnActionOperation op(o);
        op.setProgressObserver([&](std::int64_t copied) {
            if (ending == Cancelled && copied > 0) op.cancel();
        });
        op.start();
        EXPECT_EQ(a->DB_FileExists, ending != Done);
        EXPECT_EQ(QFileInfo(a->DB_itemPath).size(), ending == Done ? 0 : size);
        EXPECT_EQ(entries(other.path()),
                  ending == Cancelled ? QStringList() : QStringList{"A.mxf"});
        if (ending == Failed) {
            EXPECT_EQ(contentOf(target + "/inside"), QByteArray("keep"));
            EXPECT_EQ(contentOf(a->DB_itemPath), content("A.mxf", int(size)));
        }
        if (ending != Done) continue;
        EXPECT_TRUE(console.contains(":: Slow move"));
        EXPECT_TRUE(
            untimed(op.actionLog())
                .endsWith("to :: " + target + "\nT :: DONE ::\nT :: TarnAction Finished\n"));
        EXPECT_EQ(contentOf(target), content("A.mxf", int(size)));
    }
}

// A file where the target folder should be: nothing can be moved there, nor
// copied whatever the answer to "File can not be moved. Copy?".
TEST_F(MoveTest, FiveButtonAnswersDecideAndRemember) {
    writeFile(dst() + "/Doc", "in the way");
    const QList<TarnItemPtr> items{file("A.mxf"), file("B.mxf"), file("C.mxf")};
    const struct Case {
        std::initializer_list<int> answers;  // the first: the error's "Do NotShow Again"
        int asked, skipped, copying;
        bool cancelled;
    } cases[] = {
        {{1001, 1000}, 1, 1, 0, false},        // "Skip All": asked once, every file skipped
        {{1001, 1001, 1003}, 2, 1, 1, false},  // "No" asks again; "Yes to All" answers the rest
        {{1001, 1004}, 1, 0, 0, true},         // "Cancel" stops the run at that file
    };
    for (const Case& c : cases) {
        ScriptedAnswers answers(c.answers);
        TarnActionOperation op(options(items, "Move"));
        op.start();
        const QString log = untimed(op.actionLog());
        EXPECT_EQ(answers.asked.count("File can not be moved.\nCopy?"), c.asked);
        EXPECT_EQ(log.count(":: file is not moveable \n"), c.cancelled ? 1 : 3);
        EXPECT_EQ(log.count(":: SKIPPING \n"), c.skipped);
        EXPECT_EQ(log.count(":: COPYING \n"), c.copying);
        EXPECT_FALSE(log.contains(":: DONE ::"));
        EXPECT_EQ(op.isCancelled(), c.cancelled);
        EXPECT_EQ(op.itemsDone(), c.cancelled ? 1u : 3u);
        EXPECT_EQ(op.BytesDone(), c.cancelled ? 0u : 3 * 4096u);
        EXPECT_EQ(log.endsWith("T :: TarnAction Cancelled\nT :: TarnAction Finished\n"),
                  c.cancelled);
    }
    for (const TarnItemPtr& item : items) EXPECT_TRUE(QFileInfo::exists(item->DB_itemPath));
    EXPECT_EQ(contentOf(dst() + "/Doc"), QByteArray("in the way"));
}

TEST_F(MoveTest, AnUnmovableFileIsCopiedOnYesAndStaysInPlace) {
    TarnItemPtr a = file("A.mxf");
    TarnItemPtr b = file("B.mxf");
    Locked lockA(a->DB_itemPath, 0444), lockB(b->DB_itemPath, 0444);
    if (!lockA.ok() || !lockB.ok()) GTEST_SKIP() << "cannot make a file unmovable here (chattr)";
    ScriptedAnswers answers({1002, 1003});
    testsupport::LogCapture console;
    TarnActionOperation op(options({a, b}, "Move"));
    op.start();
    EXPECT_EQ(answers.asked.size(), 2);
    EXPECT_EQ(op.actionLog().count(":: file is not moveable \n:: COPYING \n"), 2);
    EXPECT_EQ(untimed(op.actionLog()).count("T :: DONE ::\n"), 2);
    EXPECT_EQ(console.count(":: Slow copy"), 2);
    for (const char* name : {"A.mxf", "B.mxf"}) {
        EXPECT_EQ(contentOf(dst() + "/Doc/MXF/" + name), content(name));
        EXPECT_EQ(contentOf(src() + "/" + name), content(name));
    }
    EXPECT_TRUE(a->DB_FileExists);  // still there: not marked missing
}

// An existing target: refused, the unmovable-file question still comes but
// nothing is copied; accepted, the fast move replaces the target whole; onto
// another name of the same file (a hard link), the rename succeeds and changes
// nothing, so the item stays present.
TEST_F(MoveTest, AnExistingTargetIsKeptOrReplacedWholeAndOnlyAGoneFileIsMarkedMissing) {
    const struct Case {
        const char* name;
        std::initializer_list<int> answers;
        bool hardLink, moved;
        QString logged;
    } cases[] = {
        {"refused",
         {TarnAlert::kFirstButton, 1002},
         false,
         false,
         ":: SKIPPING \n:: file is not moveable \n:: COPYING \n"},
        {"accepted", {TarnAlert::kSecondButton}, false, true, ":: OVERWRITING \n"},
        {"the same file", {TarnAlert::kSecondButton}, true, false, ":: OVERWRITING \n"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        QDir(tmp.path()).removeRecursively();
        TarnItemPtr a = file("A.mxf");
        const QString target = dst() + "/Doc/MXF/A.mxf";
        if (c.hardLink) {
            QDir().mkpath(dst() + "/Doc/MXF");
            ASSERT_EQ(::link(QFile::encodeName(a->DB_itemPath).constData(),
                             QFile::encodeName(target).constData()),
                      0);
        } else {
            writeFile(target, "old");
        }
        ScriptedAnswers answers(c.answers);
        TarnActionOperation op(options({a}, "Move"));
        op.start();
        EXPECT_EQ(answers.asked.size(), qsizetype(c.answers.size()));
        EXPECT_EQ(answers.asked.first(), "File exists at destination.\nOverwrite?");
        EXPECT_TRUE(op.actionLog().contains(":: FILE EXISTS AT DESTINATION \n" + c.logged))
            << op.actionLog().toStdString();
        EXPECT_FALSE(op.actionLog().contains("ERROR"));
        EXPECT_EQ(contentOf(target), c.moved || c.hardLink ? content("A.mxf") : "old");
        EXPECT_EQ(contentOf(a->DB_itemPath), c.moved ? "(missing)" : content("A.mxf"));
        EXPECT_EQ(a->DB_FileExists, !c.moved);
        EXPECT_EQ(a->DB_isValid, !c.moved);
    }
}

}  // namespace
