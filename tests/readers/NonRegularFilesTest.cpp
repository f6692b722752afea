#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <csignal>
#include <functional>
#include <optional>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "AvbWriter.h"
#include "FixtureFiles.h"
#include "MdbWriter.h"
#include "MxfWriter.h"
#include "OmfSeeds.h"
#include "PmrWriter.h"
#include "readers/AVBFile.h"
#include "readers/PMRFile.h"
#include "readers/TarnMXF.h"
#include "readers/TarnOMFI.h"
#include "support/TarnRegularFile.h"

namespace {

// A FIFO with a writer that hands it `content` (less than a pipe's buffer) as
// soon as anyone opens it for reading: a reader that takes the FIFO for a
// file reads that content and succeeds. Nothing waits for good: at the end the
// feeder opens the FIFO itself, which lets a writer still waiting go on.
struct FifoFeeder {
    FifoFeeder(const QByteArray& fifo, const QByteArray& content) : path(fifo) {
        std::signal(SIGPIPE, SIG_IGN);  // a reader may close before the writer writes
        made = ::mkfifo(path.constData(), 0600) == 0;
        if (!made) return;
        writer = std::thread([this, content] {
            const int fd = ::open(path.constData(), O_WRONLY | O_CLOEXEC);  // waits for a reader
            if (fd < 0) return;
            [[maybe_unused]] const ssize_t n =
                ::write(fd, content.constData(), size_t(content.size()));
            ::close(fd);
        });
    }
    ~FifoFeeder() {
        if (!writer.joinable()) return;
        const int fd = ::open(path.constData(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
        writer.join();
        if (fd >= 0) ::close(fd);
    }
    QByteArray path;
    bool made = false;
    std::thread writer;
};

// Index files, databases, bins and media files are read only when they are
// regular files: a FIFO under such a name would block the reading thread, a
// device would never end.
TEST(NonRegularFiles, ReadersTakeOnlyRegularFiles) {
    const std::tuple<const char*, QByteArray, std::function<bool(const QString&)>> readers[] = {
        {"msmFMID.pmr", fixtures::writePmr({fixtures::makePmrEntry(0x42, "a.mxf", "P")}),
         [](const QString& path) { return PMRFile().dataWithContentsOfURL(path); }},
        {"msmMMOB.mdb", fixtures::writeMdb(fixtures::omfSeedClips()),
         [](const QString& path) { return TarnOMFI().openFile(path, nullptr); }},
        {"Selects.avb", fixtures::writeBin({0x1234}),
         [](const QString& path) { return AVBFile().dataWithContentsOfURL(path); }},
        {"clip.mxf", fixtures::writeMxf({}),
         [](const QString& path) { return TarnMXF().openFile(path, nullptr); }},
    };
    for (const auto& [name, content, takes] : readers) {
        // A regular file, a link to one, a FIFO, a link to /dev/zero.
        for (int kind = 0; kind < 4; ++kind) {
            SCOPED_TRACE(::testing::Message() << name << " kind " << kind);
            QTemporaryDir dir;
            const QString path = dir.filePath(QString::fromLatin1(name));
            const QByteArray real = QFile::encodeName(dir.filePath("real"));
            ASSERT_TRUE(fixtures::writeFile(kind == 0 ? path : dir.filePath("real"), content));
            std::optional<FifoFeeder> fifo;
            if (kind == 1 || kind == 3) {
                const char* target = kind == 1 ? real.constData() : "/dev/zero";
                ASSERT_EQ(::symlink(target, QFile::encodeName(path).constData()), 0);
            } else if (kind == 2) {
                ASSERT_TRUE(fifo.emplace(QFile::encodeName(path), content).made);
            }
            EXPECT_EQ(takes(path), kind < 2);
        }
    }
}

TEST(NonRegularFiles, ReadingStopsAtTheSizeTheFileHadWhenOpened) {
    // A regular file whose size says 0 but that yields text when read.
    EXPECT_EQ(TarnRegularFile::readAll("/proc/self/status"), QByteArray());

    QTemporaryDir dir;
    const QString path = dir.filePath("f");
    ASSERT_TRUE(fixtures::writeFile(path, QByteArray(1000, 'x')));
    EXPECT_EQ(TarnRegularFile::readAll(path), QByteArray(1000, 'x'));
    EXPECT_FALSE(TarnRegularFile::readAll(path, 999).has_value());
    EXPECT_FALSE(TarnRegularFile::readAll(dir.filePath("missing")).has_value());
}

}  // namespace
