#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "FixtureFiles.h"
#include "MxfWriter.h"
#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"
#include "readers/TarnMXF.h"
#include "readers/TarnMediafile.h"
#include "support/TarnPreferences.h"

namespace {

QByteArray bytesOf(const quint8* p) {
    return QByteArray(reinterpret_cast<const char*>(p), 32);
}

// Media items read their own MXF file when the index does not describe it.
class MxfItem : public ::testing::Test {
  protected:
    void SetUp() override {
        TarnDatabaseItem::setOwnFileReader(&TarnMediafile::readItemsOwnFile);
        spec_.clipName = QStringLiteral("Scene 4 Take 2");
        spec_.projectName = QStringLiteral("Feature");
        spec_.materialUMID = fixtures::umidFor(41);
        spec_.fileUMID = fixtures::umidFor(42);
    }
    void TearDown() override { TarnPreferences::shared()->clearRunOverrides(); }
    void scanMxf(int on) {
        TarnPreferences::shared()->setRunOverride(QLatin1String(TarnPreferences::kScanMXF), on);
    }
    QString write(const QString& name, const QByteArray& bytes) {
        EXPECT_TRUE(fixtures::writeFile(dir_.filePath(name), bytes));
        return name;
    }

    fixtures::MxfSpec spec_;
    QTemporaryDir dir_;
};

TEST_F(MxfItem, UnlistedMxfFileIsReadWhenScanMxfIsOn) {
    scanMxf(1);
    const QString name = write(QStringLiteral("Scene4.T2.A1.mxf"), fixtures::writeMxf(spec_));
    TarnDatabaseItem item;
    item.setupWithUnrefFile(dir_.path(), name);
    EXPECT_EQ(item.DB_NameInBin, spec_.clipName);
    EXPECT_EQ(item.DB_ProjectName, spec_.projectName);
    EXPECT_EQ(bytesOf(item.filePackageUID), TarnMXF::swapUUIDfromMXFtoTarn(spec_.fileUMID));
    EXPECT_EQ(bytesOf(item.materialPackageUID), TarnMXF::swapUUIDfromMXFtoTarn(spec_.materialUMID));
    EXPECT_TRUE(item.DB_isGoodUUID);
    EXPECT_FALSE(item.DB_isReferenced);
}

TEST_F(MxfItem, ScanMxfOffLeavesTheFileUnread) {
    scanMxf(0);
    const QString name = write(QStringLiteral("clip.mxf"), fixtures::writeMxf(spec_));
    TarnDatabaseItem item;
    testsupport::LogCapture log;
    item.setupWithUnrefFile(dir_.path(), name);
    EXPECT_FALSE(log.contains(QStringLiteral("MXF file : open")));
    EXPECT_TRUE(item.DB_NameInBin.isNull());
    EXPECT_EQ(item.DB_ProjectName, TarnDatabaseItem::GetProjectNameUnmanaged());
    EXPECT_EQ(item.hash(), 0u);
}

// 1024 bytes is too small to hold the packages; 1025 is read (and, cut there,
// fails in the metadata).
TEST_F(MxfItem, OnlyFilesOfAtLeast1025BytesAreRead) {
    scanMxf(1);
    const QByteArray whole = fixtures::writeMxf(spec_);
    {
        const QString name = write(QStringLiteral("small.mxf"), whole.left(1024));
        TarnDatabaseItem item;
        testsupport::LogCapture log;
        item.setupWithUnrefFile(dir_.path(), name);
        EXPECT_FALSE(log.contains(QStringLiteral("MXF file : open")));
    }
    {
        const QString name = write(QStringLiteral("edge.mxf"), whole.left(1025));
        TarnDatabaseItem item;
        testsupport::LogCapture log;
        item.setupWithUnrefFile(dir_.path(), name);
        EXPECT_TRUE(log.contains(QStringLiteral("MXF file : open")));
        EXPECT_TRUE(log.contains(QStringLiteral("Failed to read info")));
        EXPECT_EQ(item.DB_ProjectName, TarnDatabaseItem::GetProjectNameUnmanaged());
    }
}

TEST_F(MxfItem, Op1aFileGivesAnUnmanagedItemWithZeroIdentifiers) {
    scanMxf(1);
    spec_.opAtom = false;
    const QString name = write(QStringLiteral("op1a.MXF"), fixtures::writeMxf(spec_));
    TarnDatabaseItem item;
    testsupport::LogCapture log;
    item.setupWithUnrefFile(dir_.path(), name);
    EXPECT_TRUE(log.contains(QStringLiteral("File is not OP-Atom")));
    EXPECT_TRUE(item.DB_NameInBin.isNull());
    EXPECT_EQ(item.DB_ProjectName, TarnDatabaseItem::GetProjectNameUnmanaged());
    EXPECT_EQ(bytesOf(item.filePackageUID), QByteArray(32, '\0'));
    EXPECT_EQ(item.DB_SizeofUID, 8u);
    EXPECT_FALSE(item.DB_isGoodUUID);  // a 32-byte identifier without the UMID label
}

// An index record whose file exists is completed from the file itself.
TEST_F(MxfItem, CorrespondingFileCompletesAnIndexRecord) {
    const QString name = write(QStringLiteral("listed.mxf"), fixtures::writeMxf(spec_));
    for (int on : {0, 1}) {
        scanMxf(on);
        TarnDatabaseItem item;
        item.DB_itemPath = dir_.filePath(name);
        item.DB_isReferenced = true;
        item.validatePath();
        item.addinfoToItemFromCorrespondingFile();
        EXPECT_FALSE(item.DB_isReferenced);
        EXPECT_EQ(item.DB_NameInBin.isNull(), on == 0) << on;
        if (on) {
            EXPECT_EQ(item.DB_NameInBin, spec_.clipName);
            EXPECT_EQ(bytesOf(item.filePackageUID), TarnMXF::swapUUIDfromMXFtoTarn(spec_.fileUMID));
        }
    }
    // A missing file is left alone.
    TarnDatabaseItem missing;
    missing.DB_itemPath = dir_.filePath(QStringLiteral("gone.mxf"));
    missing.DB_isReferenced = true;
    missing.validatePath();
    missing.addinfoToItemFromCorrespondingFile();
    EXPECT_TRUE(missing.DB_isReferenced);
}

}  // namespace
