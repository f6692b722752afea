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
    fixtures::MxfSpec mxfClip;
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

TEST_F(MediafileFront, UnknownOrMissingExtensionGivesNoReader) {
    const QByteArray mxf = fixtures::writeMxf({});
    for (const QString& name : {QStringLiteral("clip.mxf2"), QStringLiteral("clip")}) {
        TarnMediafile mediafile;
        testsupport::LogCapture log;
        EXPECT_FALSE(mediafile.openFile(file(name, mxf), nullptr)) << name.toStdString();
        EXPECT_EQ(mediafile.dataSource(), nullptr);
        EXPECT_EQ(mediafile.type(), 0u);
        EXPECT_TRUE(log.text().isEmpty());
    }
    TarnMediafile none;
    EXPECT_FALSE(none.openFile(QString(), nullptr));
    EXPECT_EQ(none.rootRow(),
              QStringList({QStringLiteral("0"), QStringLiteral("0"), QStringLiteral("false"),
                           QStringLiteral("No File Loaded")}));
}

TEST_F(MediafileFront, AudioAndDatabaseExtensionsGoToTheOmfReader) {
    for (const QString& name : {QStringLiteral("a.wav"), QStringLiteral("b.AIF"),
                                QStringLiteral("msmMMOB.mdb"), QStringLiteral("c.omf")}) {
        TarnMediafile mediafile;
        mediafile.openFile(file(name, QByteArray(2048, 'x')), nullptr);
        ASSERT_NE(mediafile.dataSource(), nullptr) << name.toStdString();
        EXPECT_EQ(mediafile.dataSource()->getType(), 1u) << name.toStdString();
    }
}

TEST_F(MediafileFront, AafIsRefusedWithItsLogLine) {
    TarnMediafile mediafile;
    testsupport::LogCapture log;
    EXPECT_FALSE(
        mediafile.openFile(file(QStringLiteral("link.aaf"), QByteArray(2048, 'x')), nullptr));
    EXPECT_TRUE(log.contains(QStringLiteral("AAf file : open")));
    ASSERT_NE(mediafile.dataSource(), nullptr);
    EXPECT_EQ(mediafile.dataSource()->getType(), 3u);
    EXPECT_EQ(mediafile.type(), 0u);
    EXPECT_FALSE(mediafile.isOpen());
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
