#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "FixtureFiles.h"
#include "MxfWriter.h"
#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"
#include "readers/TarnMediafile.h"

namespace {

// The extension, in any case, picks the reader: none for unknown ones, the
// OMF reader (1) for audio, databases and OMF, the AAF reader (3) that
// refuses with its log line, the MXF reader (4). Every open drops the reader
// of the file before: an item gets nothing from a file no reader takes.
TEST(MediafileFront, TheExtensionPicksTheReader) {
    QTemporaryDir dir;
    fixtures::MxfClip clip;
    clip.clipName = "Take 1";
    const QByteArray mxf = fixtures::writeMxf(clip);
    const QString before = dir.filePath("before.mxf");
    ASSERT_TRUE(fixtures::writeFile(before, mxf));
    const std::pair<const char*, quint32> cases[] = {
        {"clip.mxf2", 0},   {"clip", 0},  {"a.wav", 1},    {"b.AIF", 1},
        {"msmMMOB.mdb", 1}, {"c.omf", 1}, {"link.aaf", 3}, {"CLIP.MXF", 4},
    };
    for (const auto& [name, readerType] : cases) {
        SCOPED_TRACE(name);
        const QString path = dir.filePath(name);
        ASSERT_TRUE(fixtures::writeFile(path, mxf));
        TarnMediafile front;
        ASSERT_TRUE(front.openFile(before, nullptr));
        testsupport::LogCapture log;
        EXPECT_EQ(front.openFile(path, nullptr), readerType == 4);
        EXPECT_EQ(front.isOpen(), readerType == 4);
        EXPECT_EQ(front.dataSource() ? front.dataSource()->getType() : 0u, readerType);
        EXPECT_TRUE(readerType != 0 || log.text().isEmpty());
        EXPECT_EQ(log.contains("AAf file : open"), readerType == 3);
        TarnDatabaseItem item;
        front.addInfoToItem(&item);
        EXPECT_EQ(item.DB_NameInBin.isNull(), readerType != 4);
    }
    EXPECT_FALSE(TarnMediafile().openFile(QString(), nullptr));
}

}  // namespace
