#include <gtest/gtest.h>

#include <QFile>
#include <QTemporaryDir>

#include <functional>

#include <unistd.h>

#include "AvbWriter.h"
#include "FifoFeeder.h"
#include "FixtureFiles.h"
#include "MdbWriter.h"
#include "MxfWriter.h"
#include "PmrWriter.h"
#include "readers/AVBFile.h"
#include "readers/PMRFile.h"
#include "readers/TarnMXF.h"
#include "readers/TarnOMFI.h"
#include "support/TarnRegularFile.h"

namespace {

// A reader, the name it is given and well-formed content for it.
struct ReaderCase {
    const char* name;
    std::function<QByteArray()> content;
    std::function<bool(const QString&)> takes;  // true when the reader took the file
};

const ReaderCase kReaders[] = {
    {"msmFMID.pmr",
     [] {
         return fixtures::writePmr(
             {fixtures::makePmrEntry(0x42, QStringLiteral("a.mxf"), QStringLiteral("P"))});
     },
     [](const QString& path) {
         PMRFile pmr;
         return pmr.dataWithContentsOfURL(path) && pmr.ItemsCount() > 0;
     }},
    {"msmMMOB.mdb",
     [] {
         fixtures::MdbClip clip;
         clip.fileShortUID = 1;
         clip.materialShortUID = 2;
         clip.clipName = QStringLiteral("Clip");
         return fixtures::writeMdb({clip});
     },
     [](const QString& path) { return TarnOMFI().openFile(path, nullptr); }},
    {"Selects.avb", [] { return fixtures::writeBin({0x1234}); },
     [](const QString& path) { return AVBFile().dataWithContentsOfURL(path); }},
    {"clip.mxf", [] { return fixtures::writeMxf({}); },
     [](const QString& path) { return TarnMXF().openFile(path, nullptr); }},
};

enum class Kind { kRegular, kLinkToRegular, kFifo, kLinkToDevZero };

struct KindCase {
    Kind kind;
    const char* label;
    bool taken;
};

const KindCase kKinds[] = {
    {Kind::kRegular, "regular file", true},
    {Kind::kLinkToRegular, "link to a regular file", true},
    {Kind::kFifo, "FIFO", false},
    {Kind::kLinkToDevZero, "link to /dev/zero", false},
};

bool link(const QString& target, const QString& path) {
    return ::symlink(QFile::encodeName(target).constData(), QFile::encodeName(path).constData()) ==
           0;
}

// Index files, databases, bins and media files are read only when they are
// regular files: a FIFO under such a name would block the reading thread, a
// device would never end. The FIFO is fed well-formed content, so a reader that
// opened it would take it.
TEST(NonRegularFiles, ReadersTakeOnlyRegularFiles) {
    for (const ReaderCase& reader : kReaders) {
        for (const KindCase& k : kKinds) {
            SCOPED_TRACE(std::string(reader.name) + " as " + k.label);
            QTemporaryDir dir;
            const QString path = dir.filePath(QString::fromLatin1(reader.name));
            const QByteArray content = reader.content();
            std::unique_ptr<FifoFeeder> feeder;
            switch (k.kind) {
                case Kind::kRegular:
                    ASSERT_TRUE(fixtures::writeFile(path, content));
                    break;
                case Kind::kLinkToRegular:
                    ASSERT_TRUE(fixtures::writeFile(dir.filePath(QStringLiteral("real")), content));
                    ASSERT_TRUE(link(dir.filePath(QStringLiteral("real")), path));
                    break;
                case Kind::kFifo:
                    feeder = std::make_unique<FifoFeeder>(path, content);
                    ASSERT_TRUE(feeder->made());
                    break;
                case Kind::kLinkToDevZero:
                    ASSERT_TRUE(link(QStringLiteral("/dev/zero"), path));
                    break;
            }
            EXPECT_EQ(reader.takes(path), k.taken);
        }
    }
}

TEST(NonRegularFiles, ReadingStopsAtTheSizeTheFileHadWhenOpened) {
    // A regular file whose size says 0 but that yields text when read.
    const std::optional<QByteArray> status =
        TarnRegularFile::readAll(QStringLiteral("/proc/self/status"));
    ASSERT_TRUE(status.has_value());
    EXPECT_TRUE(status->isEmpty());

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("f"));
    ASSERT_TRUE(fixtures::writeFile(path, QByteArray(1000, 'x')));
    EXPECT_EQ(TarnRegularFile::readAll(path), QByteArray(1000, 'x'));
    EXPECT_FALSE(TarnRegularFile::readAll(path, 999).has_value());
    EXPECT_FALSE(TarnRegularFile::readAll(dir.filePath(QStringLiteral("missing"))).has_value());
}

}  // namespace
