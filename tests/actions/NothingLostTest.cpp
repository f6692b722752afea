#include <QTemporaryDir>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <memory>
#include <vector>

#include "ActionTestKit.h"
#include "actions/TarnActionOperation.h"
#include "actions/TarnFileCopier.h"

using namespace actiontest;

namespace {

constexpr qint64 kBig = 384LL * 1024 * 1024;

// A large file that takes no disk space; its first and last bytes are set.
bool makeSparse(const QString& path, qint64 size) {
    QDir().mkpath(QFileInfo(path).path());
    int fd = ::open(QFile::encodeName(path).constData(), O_CREAT | O_WRONLY | O_TRUNC, 0644);
    if (fd < 0) return false;
    bool ok = ::pwrite(fd, "head", 4, 0) == 4 && ::ftruncate(fd, size) == 0 &&
              ::pwrite(fd, "tail", 4, size - 4) == 4;
    ::close(fd);
    return ok;
}

bool hasPartials(const QString& folder) {
    for (const QString& name : entries(folder))
        if (name.startsWith(TarnFileCopier::temporaryPrefix())) return true;
    return false;
}

struct CancelFixture : ::testing::Test {
    QTemporaryDir tmp;
    QString src() const { return tmp.path() + QStringLiteral("/Vol/MXF/1"); }
    QString dst() const { return tmp.path() + QStringLiteral("/Dst"); }
    TarnActionOptions options(const QList<TarnItemPtr>& items, const QString& action = "Copy") {
        TarnActionOptions o(items);
        o.Action = action;
        o.Destination = dst();
        o.Create_projects_folders = o.Create_mxf_folders = false;
        o.mediaFolderRoots = {tmp.path() + QStringLiteral("/Vol")};
        QDir().mkpath(dst());
        return o;
    }
    TarnItemPtr big(const QString& name) {
        EXPECT_TRUE(makeSparse(src() + "/" + name, kBig));
        return makeItem(src() + "/" + name);
    }
    TarnItemPtr small(const QString& name) {
        EXPECT_TRUE(writeFile(src() + "/" + name, content(name)));
        return makeItem(src() + "/" + name);
    }
};

TEST_F(CancelFixture, CancelledBeforeItsTurnTheActionDoesNothing) {
    TarnItemPtr a = small("A.mxf");
    TarnActionOperation op(options({a}));
    bool observed = false;
    QObject::connect(&op, &TarnActionOperation::isCancelledChanged,
                     [&](bool cancelled) { observed = cancelled; });
    op.cancel();
    op.start();
    EXPECT_TRUE(observed);
    EXPECT_TRUE(op.isFinished());
    EXPECT_EQ(untimed(op.actionLog()), QStringLiteral("T :: TarnAction init \n"
                                                      ":: Action :: Copy \n"
                                                      ":: 1 :: items \n"
                                                      ":: destination :: %1 \n"
                                                      "T :: TarnAction queued\n"
                                                      "T :: TarnAction Cancelled\n")
                                           .arg(dst()));
    EXPECT_TRUE(entries(dst()).isEmpty());
}

TEST_F(CancelFixture, CancelDuringACopyRemovesThePartialTargetAndEndsTheRun) {
    TarnItemPtr a = big("A.mxf");
    TarnItemPtr b = small("B.mxf");
    TarnActionOperation op(options({a, b}));
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
    EXPECT_TRUE(entries(dst()).isEmpty()) << entries(dst()).join(",").toStdString();
    EXPECT_EQ(QFileInfo(a->DB_itemPath).size(), kBig);
    EXPECT_EQ(op.itemsDone(), 1u);
    EXPECT_EQ(op.BytesDone(), 0u);  // the cancelled file is not counted
    EXPECT_EQ(op.filesFailed(), 0u);
    EXPECT_TRUE(
        untimed(op.actionLog())
            .endsWith("T :: TarnAction Cancelled\nT :: ERROR ::\nT :: TarnAction Finished\n"));
}

TEST_F(CancelFixture, CancelAfterTheRunChangesNothing) {
    TarnItemPtr a = small("A.mxf");
    TarnActionOperation op(options({a}));
    op.start();
    op.cancel();
    EXPECT_EQ(readFile(dst() + "/A.mxf"), content("A.mxf"));
    EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
    EXPECT_TRUE(
        untimed(op.actionLog()).endsWith("T :: TarnAction Finished\nT :: TarnAction Cancelled\n"));
}

TEST_F(CancelFixture, InterruptedOverwriteKeepsTheOldTarget) {
    TarnItemPtr a = big("A.mxf");
    writeFile(dst() + "/A.mxf", "the old take");
    ScriptedAnswers answers({TarnAlert::kSecondButton});
    TarnActionOperation op(options({a}));
    op.setProgressObserver([&](std::int64_t copied) {
        if (copied > 0) op.cancel();
    });
    op.start();
    EXPECT_EQ(readFile(dst() + "/A.mxf"), QByteArray("the old take"));
    EXPECT_EQ(entries(dst()), QStringList{"A.mxf"});
}

TEST_F(CancelFixture, CancelledMoveAcrossFileSystemsKeepsTheSource) {
    struct stat here {
    }, shm{};
    if (::stat(QFile::encodeName(tmp.path()).constData(), &here) != 0 ||
        ::stat("/dev/shm", &shm) != 0 || here.st_dev == shm.st_dev)
        GTEST_SKIP() << "the build folder and /dev/shm are one file system here";
    QTemporaryDir other(QStringLiteral("/dev/shm/tarn-cancel-XXXXXX"));
    TarnItemPtr a = big("A.mxf");
    TarnActionOptions o = options({a}, "Move");
    o.Destination = other.path();
    TarnActionOperation op(o);
    op.setProgressObserver([&](std::int64_t copied) {
        if (copied > 0) op.cancel();
    });
    op.start();
    EXPECT_EQ(QFileInfo(a->DB_itemPath).size(), kBig);
    EXPECT_TRUE(a->DB_FileExists);
    EXPECT_TRUE(entries(other.path()).isEmpty());
}

TEST_F(CancelFixture, FailedCopyLeavesNoPartialAndNothingChanged) {
    // The target name is taken by a folder: the data is copied, the final
    // rename fails, and the copy must vanish without a trace.
    TarnItemPtr a = small("A.mxf");
    writeFile(dst() + "/A.mxf/inside", "keep");
    ScriptedAnswers answers({TarnAlert::kSecondButton});
    TarnActionOperation op(options({a}));
    op.start();
    EXPECT_TRUE(untimed(op.actionLog()).contains(":: OVERWRITING \nT :: ERROR ::\n"));
    EXPECT_EQ(readFile(dst() + "/A.mxf/inside"), QByteArray("keep"));
    EXPECT_FALSE(hasPartials(dst()));
    EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
    EXPECT_EQ(op.BytesDone(), 4096u);  // a failure is not a cancellation: the run goes on
}

TEST_F(CancelFixture, FailedMoveAcrossFileSystemsKeepsTheSource) {
    struct stat here {
    }, shm{};
    if (::stat(QFile::encodeName(tmp.path()).constData(), &here) != 0 ||
        ::stat("/dev/shm", &shm) != 0 || here.st_dev == shm.st_dev)
        GTEST_SKIP() << "the build folder and /dev/shm are one file system here";
    QTemporaryDir other(QStringLiteral("/dev/shm/tarn-fail-XXXXXX"));
    TarnItemPtr a = small("A.mxf");
    writeFile(other.path() + "/A.mxf/inside", "keep");
    TarnActionOptions o = options({a}, "Move");
    o.Destination = other.path();
    ScriptedAnswers answers({TarnAlert::kSecondButton});
    TarnActionOperation op(o);
    op.start();
    EXPECT_EQ(readFile(a->DB_itemPath), content("A.mxf"));
    EXPECT_TRUE(a->DB_FileExists);
    EXPECT_FALSE(hasPartials(other.path()));
    EXPECT_EQ(readFile(other.path() + "/A.mxf/inside"), QByteArray("keep"));
}

TEST_F(CancelFixture, CopierReportsEveryChunkAndTheWholeSize) {
    TarnItemPtr a = big("A.mxf");
    QDir().mkpath(dst());
    struct Count {
        int calls = 0;
        std::int64_t last = -1;
        bool ordered = true;
    } count;
    auto callback = [](TarnFileCopier::Stage, std::int64_t copied, void* ctx) {
        auto* c = static_cast<Count*>(ctx);
        if (copied < c->last) c->ordered = false;
        c->last = copied;
        ++c->calls;
        return int(TarnFileCopier::Continue);
    };
    TarnFileCopier::Result r = TarnFileCopier::copy(a->DB_itemPath, dst() + "/A.mxf",
                                                    TarnFileCopier::None, callback, &count);
    ASSERT_TRUE(r.ok) << r.description.toStdString();
    EXPECT_EQ(count.last, kBig);
    EXPECT_TRUE(count.ordered);
    EXPECT_GE(count.calls, int(kBig / TarnFileCopier::kChunkBytes));
    QFile copy(dst() + "/A.mxf");
    ASSERT_TRUE(copy.open(QIODevice::ReadOnly));
    EXPECT_EQ(copy.read(4), QByteArray("head"));
    copy.seek(kBig - 4);
    EXPECT_EQ(copy.read(4), QByteArray("tail"));
}

}  // namespace

namespace {

// Partial copies left in a folder: only ours that nobody holds are removed.
TEST_F(CancelFixture, OnlyAbandonedPartialCopiesAreSwept) {
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
    for (const Case& c : cases) {
        const QString path = dst() + "/" + c.name;
        if (c.kind == Case::Folder) {
            writeFile(path + "/inside", "keep");
        } else if (c.kind == Case::Link) {
            writeFile(tmp.path() + "/target", "keep");
            ASSERT_EQ(::symlink(QFile::encodeName(tmp.path() + "/target").constData(),
                                QFile::encodeName(path).constData()),
                      0);
        } else {
            writeFile(path, "partial");
        }
        if (c.kind == Case::HeldFile) {
            held.push_back(std::make_unique<QFile>(path));
            ASSERT_TRUE(held.back()->open(QIODevice::ReadOnly));
            ASSERT_EQ(::flock(held.back()->handle(), LOCK_EX | LOCK_NB), 0);
        }
    }
    const QStringList removed = TarnFileCopier::removeAbandonedTemporaries(dst());
    for (const Case& c : cases) {
        EXPECT_EQ(removed.contains(c.name), c.removed) << c.name.toStdString();
        EXPECT_EQ(
            QFileInfo(dst() + "/" + c.name).exists() || QFileInfo(dst() + "/" + c.name).isSymLink(),
            !c.removed)
            << c.name.toStdString();
    }
    EXPECT_EQ(readFile(tmp.path() + "/target"), QByteArray("keep"));

    // A running copy holds its own partial file: a sweep meanwhile leaves it.
    TarnItemPtr a = big("A.mxf");
    TarnActionOptions o = options({a});
    TarnActionOperation op(o);
    QStringList sweptDuringCopy;
    op.setProgressObserver([&](std::int64_t copied) {
        if (copied > 0 && sweptDuringCopy.isEmpty())
            sweptDuringCopy << TarnFileCopier::removeAbandonedTemporaries(dst()) << "(swept)";
    });
    op.start();
    EXPECT_EQ(sweptDuringCopy, QStringList{"(swept)"});
    EXPECT_EQ(QFileInfo(dst() + "/A.mxf").size(), kBig);
    EXPECT_FALSE(op.actionLog().contains("ERROR"));
}

TEST_F(CancelFixture, CancellingAgainLogsNothingMore) {
    const struct Case {
        const char* when;
        std::function<void(TarnActionOperation&)> run;
    } cases[] = {
        {"before the run",
         [](TarnActionOperation& op) {
             op.cancel();
             op.cancel();
             op.start();
             op.cancel();
         }},
        {"during the run",
         [](TarnActionOperation& op) {
             op.setProgressObserver([&](std::int64_t) {
                 op.cancel();
                 op.cancel();
             });
             op.start();
             op.cancel();
         }},
        {"after the run",
         [](TarnActionOperation& op) {
             op.start();
             op.cancel();
             op.cancel();
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.when);
        TarnActionOperation op(options({small("A.mxf")}));
        int announced = 0;
        QObject::connect(&op, &TarnActionOperation::isCancelledChanged, [&] { ++announced; });
        c.run(op);
        EXPECT_EQ(op.actionLog().count("TarnAction Cancelled"), 1);
        EXPECT_EQ(announced, 1);
    }
}

}  // namespace
