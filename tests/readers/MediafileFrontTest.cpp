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
// refuses with its log line, the MXF reader (4).
TEST(MediafileFront, TheExtensionPicksTheReader) {
    QTemporaryDir dir;
    const std::pair<const char*, quint32> cases[] = {
        {"clip.mxf2", 0},   {"clip", 0},  {"a.wav", 1},    {"b.AIF", 1},
        {"msmMMOB.mdb", 1}, {"c.omf", 1}, {"link.aaf", 3}, {"CLIP.MXF", 4},
    };
    for (const auto& [name, readerType] : cases) {
        SCOPED_TRACE(name);
        const QString path = dir.filePath(QString::fromLatin1(name));
        ASSERT_TRUE(fixtures::writeFile(path, fixtures::writeMxf({})));
        TarnMediafile mediafile;
        testsupport::LogCapture log;
        EXPECT_EQ(mediafile.openFile(path, nullptr), readerType == 4);
        EXPECT_EQ(mediafile.dataSource() ? mediafile.dataSource()->getType() : 0u, readerType);
        EXPECT_TRUE(readerType != 0 || log.text().isEmpty());
        EXPECT_EQ(log.contains(QStringLiteral("AAf file : open")), readerType == 3);
    }
    EXPECT_FALSE(TarnMediafile().openFile(QString(), nullptr));
}

// A failed reopen drops the reader without touching the flags; with no reader
// nothing is forwarded. Setting no reader clears the flags.
TEST(MediafileFront, ReopeningDropsTheReaderAndForwardsNothing) {
    QTemporaryDir dir;
    const QString mxf = dir.filePath(QStringLiteral("x.mxf"));
    const QString text = dir.filePath(QStringLiteral("x.txt"));
    ASSERT_TRUE(fixtures::writeFile(mxf, fixtures::writeMxf({})));
    ASSERT_TRUE(fixtures::writeFile(text, QByteArray(10, 'x')));
    TarnMediafile mediafile;
    ASSERT_TRUE(mediafile.openFile(mxf, nullptr));
    EXPECT_TRUE(mediafile.isOpen());
    EXPECT_EQ(mediafile.FileUrl(), mxf);
    EXPECT_EQ(mediafile.getMDBCompositionsCount(), 0u);  // only the OMF reader counts
    EXPECT_FALSE(mediafile.openFile(text, nullptr));
    EXPECT_EQ(mediafile.dataSource(), nullptr);
    EXPECT_FALSE(mediafile.isOpen());
    EXPECT_EQ(mediafile.capabilityFlags(), unsigned(TarnMediaReader::kAddInfoToItem));

    TarnDatabaseItem item;
    mediafile.addInfoToItem(&item);
    EXPECT_EQ(item.DB_SizeofUID, 0u);
    EXPECT_TRUE(item.DB_NameInBin.isNull());

    mediafile.SetDataSource(nullptr);
    EXPECT_EQ(mediafile.capabilityFlags(), 0u);
}

}  // namespace
