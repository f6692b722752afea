#include <algorithm>

#include "ActionTestKit.h"

using namespace actiontest;

namespace {

// Runs that are cancelled or fail part way: no partial file stays, no source
// or old target is lost.
struct NothingLost : ActionFixture {};

// A cancel before, during or after the run is logged once, announced once,
// and changes nothing that is done.
TEST_F(NothingLost, ACancelIsLoggedOnceWhenItComesAndKeepsWhatIsDone) {
    enum When { Before, During, After };
    const QString logEnds[] = {
        "T :: TarnAction queued\nT :: TarnAction Cancelled\n",
        "T :: TarnAction Finished\n",
        "T :: TarnAction Finished\nT :: TarnAction Cancelled\n",
    };
    for (const When when : {Before, During, After}) {
        SCOPED_TRACE(int(when));
        QDir(tmp.path()).removeRecursively();
        TarnItemPtr a = file("A.mxf");
        TarnActionOperation op(flat({a}));
        QList<bool> announced;
        QObject::connect(&op, &TarnActionOperation::isCancelledChanged,
                         [&](bool cancelled) { announced << cancelled; });
        for (int twice = 0; twice < 2 && when == Before; ++twice) op.cancel();
        if (when == During)
            op.setProgressObserver([&](std::int64_t) {
                op.cancel();
                op.cancel();
            });
        op.start();
        for (int twice = 0; twice < (when == After ? 2 : 1); ++twice) op.cancel();
        EXPECT_EQ(op.actionLog().count("TarnAction Cancelled"), 1);
        EXPECT_EQ(announced, QList<bool>{true});
        EXPECT_TRUE(op.isFinished());
        EXPECT_TRUE(untimed(op.actionLog()).endsWith(logEnds[when]))
            << op.actionLog().toStdString();
        EXPECT_EQ(entries(dst()), when == After ? QStringList{"A.mxf"} : QStringList{});
        EXPECT_EQ(contentOf(a->DB_itemPath), content("A.mxf"));
    }
}

// A copy that stops: cancelled part way (from the copy's own progress report)
// it ends the run; failing at the end (a folder holds the target's name, so
// the final rename fails) it is no cancellation, and the run goes on. Either
// way the source and any old target stay, and no partial copy is left.
TEST_F(NothingLost, ACopyThatStopsKeepsTheSourceAndTheOldTarget) {
    const struct Case {
        QString old;  // a file there before, under the destination
        bool cancelled;
        QStringList left;
        quint64 bytesDone;
        QString logged;
    } cases[] = {
        {"/O.mxf", true, {"O.mxf"}, 0, "Cancelled\nT :: ERROR ::\nT :: TarnAction Finished\n"},
        {"/A.mxf", true, {"A.mxf"}, 0, ":: OVERWRITING \n"},
        {"/A.mxf/inside", false, {"A.mxf", "B.mxf"}, 8192, ":: Is a directory \nT :: STARTING"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.old.toStdString());
        QDir(tmp.path()).removeRecursively();
        TarnItemPtr a = c.cancelled ? big("A.mxf", kBig) : file("A.mxf");
        TarnActionOptions o = flat({a, file("B.mxf")});
        writeFile(dst() + c.old, "the old take");
        ScriptedAnswers answers({TarnAlert::kSecondButton});
        TarnActionOperation op(o);
        op.setProgressObserver([&](std::int64_t copied) {
            if (c.cancelled && copied > 0) op.cancel();
        });
        op.start();
        EXPECT_EQ(entries(dst()), c.left);
        EXPECT_EQ(contentOf(dst() + c.old), QByteArray("the old take"));
        EXPECT_EQ(QFileInfo(a->DB_itemPath).size(), c.cancelled ? kBig : 4096);
        EXPECT_EQ(op.itemsDone(), c.cancelled ? 1u : 2u);
        EXPECT_EQ(op.BytesDone(), c.bytesDone);  // a cancelled file is not counted
        EXPECT_EQ(op.filesFailed(), c.cancelled ? 0u : 1u);
        EXPECT_TRUE(untimed(op.actionLog()).contains(c.logged)) << op.actionLog().toStdString();
    }
}

// Partial copies left in a folder: only our files are removed (one another
// run holds: the stopped-copy command test), and a running copy holds its own
// while it reports every chunk.
TEST_F(NothingLost, OnlyAbandonedPartialCopiesAreSwept) {
    const QString prefix = TarnFileCopier::temporaryPrefix(), ours = prefix + "A.mxf.x1Y2z3";
    writeFile(tmp.path() + "/target", "keep");
    writeFile(dst() + "/" + prefix + "C.mxf.abcdef/inside", "keep");  // a folder
    ASSERT_TRUE(QFile::link(tmp.path() + "/target", dst() + "/" + prefix + "D.mxf.ABCDEF"));
    // Ours; no random tail; not one of ours; not partial copies.
    for (const QString& name :
         QStringList{ours, prefix + "E.mxf", prefix + "F.mxf.ab-cde", "G.mxf.Ab12Cd", "A.mxf"})
        writeFile(dst() + "/" + name, "partial");
    QStringList kept = entries(dst());
    EXPECT_EQ(TarnFileCopier::removeAbandonedTemporaries(dst()), QStringList{ours});
    kept.removeAll(ours);
    EXPECT_EQ(entries(dst()), kept);
    EXPECT_EQ(contentOf(tmp.path() + "/target"), QByteArray("keep"));

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
