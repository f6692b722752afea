#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <atomic>
#include <thread>
#include <vector>

#include "FixtureFiles.h"
#include "MxfWriter.h"
#include "readers/TarnAvidMXFInfo.h"
#include "readers/TarnMXF.h"

namespace {

qsizetype openDescriptors() {
    return QDir(QStringLiteral("/proc/self/fd")).entryList(QDir::Files | QDir::System).size();
}

// Good and refused files alike: every open closes its stream and descriptor.
TEST(MxfReaderResources, EveryOpenClosesItsFile) {
    QTemporaryDir dir;
    fixtures::MxfClip op1a;
    op1a.opAtom = false;
    const QByteArray good = fixtures::writeMxf({});
    const QStringList paths = {
        dir.filePath(QStringLiteral("good.mxf")), dir.filePath(QStringLiteral("op1a.mxf")),
        dir.filePath(QStringLiteral("cut.mxf")), dir.filePath(QStringLiteral("junk.mxf")),
        dir.filePath(QStringLiteral("folder.mxf"))};
    ASSERT_TRUE(fixtures::writeFile(paths[0], good));
    ASSERT_TRUE(fixtures::writeFile(paths[1], fixtures::writeMxf(op1a)));
    ASSERT_TRUE(fixtures::writeFile(paths[2], good.left(1100)));
    ASSERT_TRUE(fixtures::writeFile(paths[3], QByteArray(3000, '\x06')));
    ASSERT_TRUE(QDir(dir.path()).mkdir(QStringLiteral("folder.mxf")));

    TarnMXF warmUp;  // first use sets up the library's log routing
    warmUp.openFile(paths[0], nullptr);
    const qsizetype before = openDescriptors();
    for (int round = 0; round < 20; ++round)
        for (const QString& path : paths) EXPECT_TRUE(TarnMXF().openFile(path, nullptr));
    EXPECT_EQ(openDescriptors(), before);
}

// Scanner operations read files on several threads at once, with the
// library's log routed or not.
TEST(MxfReaderResources, ConcurrentReadsGiveEachThreadItsOwnResult) {
    QTemporaryDir dir;
    constexpr int kThreads = 4;
    QStringList paths;
    for (int t = 0; t < kThreads; ++t) {
        fixtures::MxfClip mxfClip;
        mxfClip.clipName = QStringLiteral("thread %1").arg(t);
        mxfClip.fileUMID = fixtures::umidFor(quint32(100 + t));
        paths << dir.filePath(QStringLiteral("t%1.mxf").arg(t));
        ASSERT_TRUE(fixtures::writeMxfFile(paths.back(), mxfClip));
    }
    QByteArray broken = fixtures::writeMxf({});
    broken.truncate(1500);  // makes the demuxer log
    const QString brokenPath = dir.filePath(QStringLiteral("broken.mxf"));
    ASSERT_TRUE(fixtures::writeFile(brokenPath, broken));

    const bool before = TarnAvidMXFInfo::libraryLogging();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 30; ++i) {
                if (t == 0) TarnAvidMXFInfo::setLibraryLogging(i % 2 == 0);
                TarnMXF reader;
                reader.openFile(paths[t], nullptr);
                if (reader.MXFinfo().value(QStringLiteral("clipname")).toString() !=
                        QStringLiteral("thread %1").arg(t) ||
                    reader.MXFinfo().value(QStringLiteral("fileUID")).toByteArray() !=
                        fixtures::umidFor(quint32(100 + t)))
                    ++wrong;
                TarnMXF refused;
                refused.openFile(brokenPath, nullptr);
                if (!refused.MXFinfo().isEmpty()) ++wrong;
            }
        });
    }
    for (std::thread& th : threads) th.join();
    TarnAvidMXFInfo::setLibraryLogging(before);
    EXPECT_EQ(wrong.load(), 0);
}

}  // namespace
