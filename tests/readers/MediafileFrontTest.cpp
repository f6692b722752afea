#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "FixtureFiles.h"
#include "MxfWriter.h"
#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"
#include "readers/TarnMXF.h"
#include "readers/TarnMediafile.h"

namespace {

class MediafileFront : public ::testing::Test {
  protected:
    QString file(const QString& name, const QByteArray& bytes) {
        const QString path = dir_.filePath(name);
        EXPECT_TRUE(fixtures::writeFile(path, bytes));
        return path;
    }
    QTemporaryDir dir_;
};

TEST_F(MediafileFront, UpperCaseMxfExtensionOpensWithTheMxfReader) {
    fixtures::MxfClip mxfClip;
    mxfClip.clipName = QStringLiteral("Take 1");
    const QString path = file(QStringLiteral("CLIP.MXF"), fixtures::writeMxf(mxfClip));

    TarnMediafile mediafile;
    testsupport::LogCapture log;
    EXPECT_TRUE(mediafile.openFile(path, nullptr));
    EXPECT_TRUE(mediafile.isOpen());
    EXPECT_EQ(mediafile.type(), 4u);
    EXPECT_EQ(mediafile.FileUrl(), path);
    ASSERT_NE(dynamic_cast<TarnMXF*>(mediafile.dataSource()), nullptr);
    EXPECT_EQ(mediafile.capabilityFlags(), unsigned(TarnMediaReader::kAddInfoToItem));
    EXPECT_EQ(log.count(QStringLiteral("MXF file : open")), 1);
    EXPECT_EQ(mediafile.getMDBCompositionsCount(), 0u);  // only the OMF reader counts
}

// The extension picks the reader: none for unknown ones, the OMF reader for
// audio, databases and OMF, the AAF reader that refuses with its log line.
TEST_F(MediafileFront, TheExtensionPicksTheReader) {
    const std::pair<const char*, quint32> cases[] = {
        {"clip.mxf2", 0},   {"clip", 0},  {"a.wav", 1},    {"b.AIF", 1},
        {"msmMMOB.mdb", 1}, {"c.omf", 1}, {"link.aaf", 3},
    };
    for (const auto& [name, readerType] : cases) {
        SCOPED_TRACE(name);
        TarnMediafile mediafile;
        testsupport::LogCapture log;
        mediafile.openFile(file(QString::fromLatin1(name), QByteArray(2048, 'x')), nullptr);
        EXPECT_EQ(mediafile.dataSource() ? mediafile.dataSource()->getType() : 0u, readerType);
        if (readerType == 0) {
            EXPECT_TRUE(log.text().isEmpty());
        }
        if (readerType == 3) {
            EXPECT_TRUE(log.contains(QStringLiteral("AAf file : open")));
            EXPECT_FALSE(mediafile.isOpen());
        }
    }
    EXPECT_FALSE(TarnMediafile().openFile(QString(), nullptr));
}

// A failed reopen drops the reader without touching the flags; with no reader
// nothing is forwarded. Setting no reader clears the flags.
TEST_F(MediafileFront, ReopeningDropsTheReaderAndForwardsNothing) {
    TarnMediafile mediafile;
    ASSERT_TRUE(mediafile.openFile(file(QStringLiteral("x.mxf"), fixtures::writeMxf({})), nullptr));
    EXPECT_FALSE(mediafile.openFile(file(QStringLiteral("x.txt"), QByteArray(10, 'x')), nullptr));
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
