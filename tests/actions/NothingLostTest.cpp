#include <sys/file.h>

#include <algorithm>
#include <functional>

#include "ActionTestKit.h"

using namespace actiontest;

namespace {

// Runs that are cancelled or fail part way: no partial file stays, no source
// or old target is lost.
struct NothingLost : ActionFixture {};

// A cancel before, during or after the run is logged once, announced once,
// and changes nothing that is done.
TEST_F(NothingLost, ACancelIsLoggedOnceWhenItComesAndKeepsWhatIsDone) {
    const struct Case {
        const char* when;
        std::function<void(TarnActionOperation&)> run;
        QString logEnd;
        bool copied;
    } cases[] = {
        {"before the run",
         [](TarnActionOperation& op) {
             op.cancel();
             op.cancel();
             op.start();
             op.cancel();
         },
         "T :: TarnAction init \n:: Action :: Copy \n:: 1 :: items \n:: destination :: %1 \n"
         "T :: TarnAction queued\nT :: TarnAction Cancelled\n",
         false},
        {"during the run",
         [](TarnActionOperation& op) {
             op.setProgressObserver([&](std::int64_t) {
                 op.cancel();
                 op.cancel();
             });
             op.start();
             op.cancel();
         },
         "T :: TarnAction Finished\n", false},
        {"after the run",
         [](TarnActionOperation& op) {
             op.start();
             op.cancel();
             op.cancel();
         },
         "T :: TarnAction Finished\nT :: TarnAction Cancelled\n", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.when);
        QDir(tmp.path()).removeRecursively();
        TarnItemPtr a = file("A.mxf");
        TarnActionOperation op(flat({a}));
        int announced = 0;
        QObject::connect(&op, &TarnActionOperation::isCancelledChanged, [&](bool cancelled) {
            EXPECT_TRUE(cancelled);
            ++announced;
        });
        c.run(op);
        EXPECT_EQ(op.actionLog().count("TarnAction Cancelled"), 1);
        EXPECT_EQ(announced, 1);
        EXPECT_TRUE(op.isFinished());
        EXPECT_TRUE(untimed(op.actionLog()).endsWith(QString(c.logEnd).replace("%1", dst())))
            << op.actionLog().toStdString();
        EXPECT_EQ(entries(dst()), c.copied ? QStringList{"A.mxf"} : QStringList{});
        EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
    }
}

TEST_F(NothingLost, CancelDuringACopyRemovesThePartialTargetAndEndsTheRun) {
    TarnItemPtr a = big("A.mxf", kBig);
    TarnActionOperation op(flat({a, file("B.mxf")}));
    std::int64_t seen = 0;
    op.setProgressObserver([&](std::int64_t copied) {
        if (copied > 0 && !op.isCancelled()) {
            seen = copied;
            op.cancel();  // from inside the copy's progress callback
        }
    });
    op.start();
    EXPECT_GT(seen, 0);
    EXPECT_LT(seen, kBig);
    EXPECT_EQ(entries(dst()), QStringList{});
    EXPECT_EQ(QFileInfo(a->DB_itemPath).size(), kBig);
    EXPECT_EQ(op.itemsDone(), 1u);
    EXPECT_EQ(op.BytesDone(), 0u);  // the cancelled file is not counted
    EXPECT_EQ(op.filesFailed(), 0u);
    EXPECT_TRUE(
        untimed(op.actionLog())
            .endsWith("T :: TarnAction Cancelled\nT :: ERROR ::\nT :: TarnAction Finished\n"));
}

TEST_F(NothingLost, InterruptedOverwriteKeepsTheOldTarget) {
    TarnItemPtr a = big("A.mxf", kBig);
    TarnActionOptions o = flat({a});
    writeFile(dst() + "/A.mxf", "the old take");
    ScriptedAnswers answers({TarnAlert::kSecondButton});
    TarnActionOperation op(o);
    op.setProgressObserver([&](std::int64_t copied) {
        if (copied > 0) op.cancel();
    });
    op.start();
    EXPECT_EQ(readFile(dst() + "/A.mxf"), QByteArray("the old take"));
    EXPECT_EQ(entries(dst()), QStringList{"A.mxf"});
}

TEST_F(NothingLost, FailedCopyLeavesNoPartialAndNothingChanged) {
    // The target name is taken by a folder: the data is copied, the final
    // rename fails, and the copy must vanish without a trace.
    TarnItemPtr a = file("A.mxf");
    TarnActionOptions o = flat({a});
    writeFile(dst() + "/A.mxf/inside", "keep");
    ScriptedAnswers answers({TarnAlert::kSecondButton});
    TarnActionOperation op(o);
    op.start();
    EXPECT_TRUE(untimed(op.actionLog()).contains(":: OVERWRITING \nT :: ERROR ::\n"));
    EXPECT_EQ(readFile(dst() + "/A.mxf/inside"), QByteArray("keep"));
    EXPECT_EQ(partials(dst()), QStringList{});
    EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
    EXPECT_EQ(op.BytesDone(), 4096u);  // a failure is not a cancellation: the run goes on
}

// Partial copies left in a folder: only ours that nobody holds are removed,
// and a running copy holds its own while it reports every chunk.
TEST_F(NothingLost, OnlyAbandonedPartialCopiesAreSwept) {
    QDir().mkpath(dst());
    const QString prefix = TarnFileCopier::temporaryPrefix();
    const struct Case {
        QString name;
        enum Kind { File, HeldFile, Folder, Link } kind;
        bool removed;
    } cases[] = {
        {prefix + "A.mxf.x1Y2z3", Case::File, true},
        {prefix + "B.mxf.Ab12Cd", Case::HeldFile, false},
        {prefix + "C.mxf.abcdef", Case::Folder, false},
        {prefix + "D.mxf.ABCDEF", Case::Link, false},
        {prefix + "E.mxf", Case::File, false},         // no random tail
        {prefix + "F.mxf.ab-cde", Case::File, false},  // not one of ours
        {"G.mxf.Ab12Cd", Case::File, false},
        {"A.mxf", Case::File, false},
    };
    std::vector<std::unique_ptr<QFile>> held;
    writeFile(tmp.path() + "/target", "keep");
    for (const Case& c : cases) {
        const QString path = dst() + "/" + c.name;
        if (c.kind == Case::Folder) writeFile(path + "/inside", "keep");
        if (c.kind == Case::Link)
            ASSERT_TRUE(QFile::link(tmp.path() + "/target", path));
        else if (c.kind != Case::Folder)
            writeFile(path, "partial");
        if (c.kind == Case::HeldFile) {
            held.push_back(std::make_unique<QFile>(path));
            ASSERT_TRUE(held.back()->open(QIODevice::ReadOnly));
            ASSERT_EQ(::flock(held.back()->handle(), LOCK_EX | LOCK_NB), 0);
        }
    }
    const QStringList removed = TarnFileCopier::removeAbandonedTemporaries(dst());
    for (const Case& c : cases) {
        EXPECT_EQ(removed.contains(c.name), c.removed) << c.name.toStdString();
        EXPECT_EQ(entries(dst()).contains(c.name), !c.removed) << c.name.toStdString();
    }
    EXPECT_EQ(readFile(tmp.path() + "/target"), QByteArray("keep"));

    TarnActionOperation op(flat({big("A.mxf", kBig)}));
    QStringList sweptDuringCopy;
    QList<std::int64_t> reports;
    op.setProgressObserver([&](std::int64_t copied) {
        if (copied > 0 && sweptDuringCopy.isEmpty())
            sweptDuringCopy << TarnFileCopier::removeAbandonedTemporaries(dst()) << "(swept)";
        reports << copied;
    });
    op.start();
    EXPECT_EQ(sweptDuringCopy, QStringList{"(swept)"});
    EXPECT_TRUE(std::is_sorted(reports.begin(), reports.end()));
    EXPECT_GE(reports.size(), kBig / TarnFileCopier::kChunkBytes);
    EXPECT_EQ(reports.last(), kBig);
    EXPECT_FALSE(op.actionLog().contains("ERROR"));
    QFile copy(dst() + "/A.mxf");
    ASSERT_TRUE(copy.open(QIODevice::ReadOnly));
    const QByteArray head = copy.read(4);
    copy.seek(kBig - 4);
    EXPECT_EQ(head + copy.read(4), "headtail");
}

}  // namespace
