#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <cstdio>
#include <tuple>

#include "FixtureFiles.h"
#include "MxfWriter.h"
#include "TestSupport.h"
#include "items/TarnDatabaseItem.h"
#include "readers/TarnAvidMXFInfo.h"
#include "readers/TarnMXF.h"
#include "readers/TarnMediafile.h"
#include "support/TarnPreferences.h"

namespace {

QByteArray bytesOf(const quint8* p, int n) {
    return QByteArray(reinterpret_cast<const char*>(p), n);
}

// The system's order of an MXF UMID, written out byte by byte.
QByteArray systemOrder(const QByteArray& u) {
    QByteArray out = u.left(16);
    for (int i : {19, 18, 17, 16, 21, 20, 23, 22}) out += u[i];
    return out + u.mid(24);
}

class MxfReader : public ::testing::Test {
  protected:
    QString write(const QString& name, const QByteArray& bytes) {
        const QString path = dir_.filePath(name);
        EXPECT_TRUE(fixtures::writeFile(path, bytes));
        return path;
    }
    QString write(const QString& name, const fixtures::MxfClip& mxfClip) {
        return write(name, fixtures::writeMxf(mxfClip));
    }
    QTemporaryDir dir_;
};

fixtures::MxfClip namedClip() {
    fixtures::MxfClip mxfClip;
    mxfClip.clipName = QStringLiteral("Interview A01");
    mxfClip.projectName = QStringLiteral("Documentary 2026");
    mxfClip.materialUMID = fixtures::umidFor(11);
    mxfClip.fileUMID = fixtures::umidFor(12);
    return mxfClip;
}

TEST_F(MxfReader, OpAtomFileGivesNamesProjectAndBothUmidsInTheSystemOrder) {
    const fixtures::MxfClip mxfClip = namedClip();
    TarnMXF reader;
    testsupport::LogCapture log;
    ASSERT_TRUE(reader.openFile(write(QStringLiteral("A01.mxf"), mxfClip), nullptr));
    EXPECT_EQ(log.text().count(QLatin1Char('\n')), 1) << log.text().toStdString();
    EXPECT_TRUE(log.contains(QStringLiteral("(TarnMXF::openFile) (TarnMXF.cpp:")));

    // Kept as stored...
    const QVariantHash& info = reader.MXFinfo();
    EXPECT_EQ(info.size(), 4);
    EXPECT_EQ(info.value(QStringLiteral("matUID")).toByteArray(), mxfClip.materialUMID);
    EXPECT_EQ(info.value(QStringLiteral("fileUID")).toByteArray(), mxfClip.fileUMID);

    // ...and converted on the way into the item.
    TarnDatabaseItem item;
    reader.addInfoToItem(&item);
    EXPECT_EQ(item.DB_NameInBin, mxfClip.clipName);
    EXPECT_EQ(item.DB_ProjectName, mxfClip.projectName);
    EXPECT_EQ(item.DB_SizeofUID, 8u);
    EXPECT_EQ(bytesOf(item.filePackageUID, 32), systemOrder(mxfClip.fileUMID));
    EXPECT_EQ(bytesOf(item.materialPackageUID, 32), systemOrder(mxfClip.materialUMID));
    EXPECT_TRUE(item.checkUUID());
    EXPECT_NE(item.hash(), 0u);
}

// libavformat drops empty texts, so an empty project reads as no project; an
// unnamed package gives no texts and clears what the item had.
TEST_F(MxfReader, NamesAreDecodedFromUnicodeAndEmptyTextsReadAsNone) {
    const QString accented = QString::fromUtf8("Sz\u00e8ne \u00c4 \u65e5\u672c");
    const std::pair<QString, QString> cases[] = {
        {accented, QStringLiteral("")},
        {QString(), QString()},
    };
    for (const auto& [clipName, project] : cases) {
        SCOPED_TRACE(clipName.toStdString());
        fixtures::MxfClip mxfClip = namedClip();
        mxfClip.clipName = clipName;
        mxfClip.projectName = project;
        TarnMXF reader;
        ASSERT_TRUE(reader.openFile(write(QStringLiteral("u.mxf"), mxfClip), nullptr));
        EXPECT_FALSE(reader.MXFinfo().contains(QStringLiteral("project")));
        TarnDatabaseItem item;
        item.DB_NameInBin = QStringLiteral("stale");
        reader.addInfoToItem(&item);
        EXPECT_EQ(item.DB_NameInBin, clipName);
        EXPECT_EQ(item.DB_NameInBin.isNull(), clipName.isNull());
        EXPECT_TRUE(item.DB_ProjectName.isNull());
        EXPECT_EQ(bytesOf(item.filePackageUID, 32), systemOrder(mxfClip.fileUMID));
    }
}

// Files the reader refuses still "open": the status is logged and the item
// gets no names and all-zero 32-byte identifiers. One reader, reused: every
// open starts afresh.
TEST_F(MxfReader, RefusedFilesLogTheirStatusAndYieldEmptyValues) {
    fixtures::MxfClip op1a = namedClip();
    op1a.opAtom = false;
    QByteArray garbage(4096, '\0');
    for (int i = 0; i < garbage.size(); ++i) garbage[i] = char((i * 7919) >> 3);
    // Wipe the material package set's key: the header metadata has no material package.
    QByteArray noMaterial = fixtures::writeMxf(namedClip());
    noMaterial[noMaterial.indexOf(QByteArray::fromHex("060e2b34025301010d01010101013600")) + 14] =
        char(0x7e);
    ASSERT_TRUE(QDir(dir_.path()).mkdir(QStringLiteral("folder.mxf")));
    const std::pair<QString, const char*> cases[] = {
        {write(QStringLiteral("op1a.mxf"), op1a), "File is not OP-Atom"},
        {write(QStringLiteral("garbage.mxf"), garbage), "Failed to read header partition"},
        {write(QStringLiteral("empty.mxf"), QByteArray()), "Failed to read header partition"},
        {write(QStringLiteral("nomat.mxf"), noMaterial), "Failed to read info"},
        // A folder opens but cannot be read: no MXF file on that stream.
        {dir_.filePath(QStringLiteral("folder.mxf")), "Failed to open file"},
    };
    TarnMXF reader;
    for (const auto& [path, message] : cases) {
        SCOPED_TRACE(message);
        ASSERT_TRUE(reader.openFile(write(QStringLiteral("ok.mxf"), namedClip()), nullptr));
        ASSERT_FALSE(reader.MXFinfo().isEmpty());
        testsupport::LogCapture log;
        EXPECT_TRUE(reader.openFile(path, nullptr));
        EXPECT_TRUE(log.contains(QStringLiteral("MXF file : open")));
        EXPECT_TRUE(log.contains(QString::fromLatin1(message))) << log.text().toStdString();
        EXPECT_TRUE(reader.MXFinfo().isEmpty());

        TarnDatabaseItem item;
        item.DB_NameInBin = QStringLiteral("stale");
        reader.addInfoToItem(&item);
        EXPECT_TRUE(item.DB_NameInBin.isNull());
        EXPECT_TRUE(item.DB_ProjectName.isNull());
        EXPECT_EQ(item.DB_SizeofUID, 8u);
        EXPECT_EQ(bytesOf(item.filePackageUID, 32), QByteArray(32, '\0'));
        EXPECT_EQ(bytesOf(item.materialPackageUID, 32), QByteArray(32, '\0'));
    }
}

TEST_F(MxfReader, UnreadablePathGivesFalseWithoutAStatusLine) {
    TarnMXF reader;
    testsupport::LogCapture log;
    EXPECT_FALSE(reader.openFile(dir_.filePath(QStringLiteral("missing.mxf")), nullptr));
    EXPECT_EQ(log.text().count(QLatin1Char('\n')), 1);
    EXPECT_TRUE(log.contains(QStringLiteral("MXF file : open")));
}

// Every prefix of a good file: nothing crashes, a status is logged, and what
// was read is either everything or nothing.
TEST_F(MxfReader, TruncatedFilesAreRefusedCleanly) {
    const fixtures::MxfClip mxfClip = namedClip();
    const QByteArray whole = fixtures::writeMxf(mxfClip);
    const QString path = dir_.filePath(QStringLiteral("cut.mxf"));
    int refused = 0;
    int headerFailures = 0;
    for (qsizetype n = 0; n < whole.size(); n += 37) {
        ASSERT_TRUE(fixtures::writeFile(path, whole.left(n)));
        TarnMXF reader;
        testsupport::LogCapture log;
        ASSERT_TRUE(reader.openFile(path, nullptr));
        const QVariantHash& info = reader.MXFinfo();
        if (info.isEmpty()) {
            ++refused;
            if (log.contains(QStringLiteral("Failed to read header partition")))
                ++headerFailures;
            else
                EXPECT_TRUE(log.contains(QStringLiteral("Failed to read info"))) << n;
        } else {
            EXPECT_EQ(info.value(QStringLiteral("fileUID")).toByteArray(), mxfClip.fileUMID) << n;
            EXPECT_EQ(info.value(QStringLiteral("matUID")).toByteArray(), mxfClip.materialUMID)
                << n;
        }
    }
    // Shorter than the partition pack's label: header failures; cut in the
    // metadata: info failures.
    EXPECT_EQ(headerFailures, 3);  // 0, 37 and 74 bytes
    EXPECT_GT(refused, headerFailures);
}

TEST(MxfUmidSwap, ReordersTheGuidFieldsOfTheMaterialNumber) {
    QByteArray in;
    for (int i = 0; i < 32; ++i) in += char(i);
    EXPECT_EQ(TarnMXF::swapUUIDfromMXFtoTarn(in), systemOrder(in));
    EXPECT_EQ(TarnMXF::swapUUIDfromMXFtoTarn(systemOrder(in)), in);  // its own inverse
    for (int n : {0, 8, 31, 33})
        EXPECT_EQ(TarnMXF::swapUUIDfromMXFtoTarn(QByteArray(n, '\x5a')), QByteArray(32, '\0')) << n;
}

TEST(MxfInfoAdapter, ReadsAnyOpenStreamAndLeavesItOpen) {
    const QByteArray bytes = fixtures::writeMxf(namedClip());
    FILE* stream = fmemopen(const_cast<char*>(bytes.constData()), size_t(bytes.size()), "rb");
    ASSERT_NE(stream, nullptr);
    TarnAvidMXFInfo::Info info;
    EXPECT_EQ(TarnAvidMXFInfo::read(stream, &info, 0), TarnAvidMXFInfo::kOK);
    EXPECT_EQ(info.clipName.value_or(""), "Interview A01");
    EXPECT_EQ(bytesOf(info.materialPackageUID.data(), 32), namedClip().materialUMID);
    // Read again from the same stream: the reader starts at the beginning.
    EXPECT_EQ(TarnAvidMXFInfo::read(stream, &info, 0), TarnAvidMXFInfo::kOK);
    EXPECT_EQ(fclose(stream), 0);

    EXPECT_EQ(TarnAvidMXFInfo::read(nullptr, &info, 0), TarnAvidMXFInfo::kOpenFailed);
}

TEST(MxfInfoAdapter, PatternIsJudgedBeforeTheMetadata) {
    // An OP-1a header followed by nonsense is "not OP-Atom", not a read failure.
    fixtures::MxfClip mxfClip = namedClip();
    mxfClip.opAtom = false;
    QByteArray bytes = fixtures::writeMxf(mxfClip).left(124) + QByteArray(2000, '\xff');
    FILE* stream = fmemopen(bytes.data(), size_t(bytes.size()), "rb");
    ASSERT_NE(stream, nullptr);
    TarnAvidMXFInfo::Info info;
    EXPECT_EQ(TarnAvidMXFInfo::read(stream, &info, 1), TarnAvidMXFInfo::kNotOPAtom);
    fclose(stream);
}

// libavformat's own messages reach the console only while asked for.
TEST_F(MxfReader, LibraryLogIsQuietUnlessSwitchedOn) {
    QByteArray bytes = fixtures::writeMxf(namedClip());
    const qsizetype at = bytes.indexOf(QByteArray::fromHex("060e2b34025301010d01010101013600"));
    bytes[at + 14] = char(0x7e);  // no material package: the demuxer complains
    const QString path = write(QStringLiteral("loud.mxf"), bytes);
    const bool before = TarnAvidMXFInfo::libraryLogging();
    for (bool on : {false, true}) {
        TarnAvidMXFInfo::setLibraryLogging(on);
        testsupport::LogCapture log;
        TarnMXF().openFile(path, nullptr);
        EXPECT_EQ(log.contains(QStringLiteral("[mxf @")), on) << log.text().toStdString();
    }
    TarnAvidMXFInfo::setLibraryLogging(before);
}

// Media items read their own MXF file when the index does not describe it.
class MxfItem : public MxfReader {
  protected:
    void SetUp() override { TarnDatabaseItem::setOwnFileReader(&TarnMediafile::readItemsOwnFile); }
    void TearDown() override { TarnPreferences::shared()->clearRunOverrides(); }
    static void scanMxf(int on) {
        TarnPreferences::shared()->setRunOverride(QLatin1String(TarnPreferences::kScanMXF), on);
    }
};

// 1024 bytes is too small to hold the packages; 1025 is read (and, cut there,
// fails in the metadata); an OP-1a file gives a 32-byte identifier of zeros,
// without the UMID label.
TEST_F(MxfItem, UnreadableFilesGiveUnmanagedItemsWithZeroIdentifiers) {
    scanMxf(1);
    fixtures::MxfClip op1a = namedClip();
    op1a.opAtom = false;
    const QByteArray whole = fixtures::writeMxf(namedClip());
    const std::tuple<const char*, QByteArray, const char*> cases[] = {
        {"small.mxf", whole.left(1024), nullptr},
        {"edge.mxf", whole.left(1025), "Failed to read info"},
        {"op1a.MXF", fixtures::writeMxf(op1a), "File is not OP-Atom"},
    };
    for (const auto& [name, bytes, message] : cases) {
        SCOPED_TRACE(name);
        write(QString::fromLatin1(name), bytes);
        TarnDatabaseItem item;
        testsupport::LogCapture log;
        item.setupWithUnrefFile(dir_.path(), QString::fromLatin1(name));
        EXPECT_EQ(log.contains(QStringLiteral("MXF file : open")), message != nullptr);
        if (message) {
            EXPECT_TRUE(log.contains(QString::fromLatin1(message)));
            EXPECT_EQ(item.DB_SizeofUID, 8u);
            EXPECT_EQ(bytesOf(item.filePackageUID, 32), QByteArray(32, '\0'));
            EXPECT_FALSE(item.DB_isGoodUUID);
        }
        EXPECT_TRUE(item.DB_NameInBin.isNull());
        EXPECT_EQ(item.DB_ProjectName, TarnDatabaseItem::GetProjectNameUnmanaged());
    }
}

// An index record whose file exists is completed from the file itself, and
// then counts as unreferenced; a missing file is left alone.
TEST_F(MxfItem, CorrespondingFileCompletesAnIndexRecord) {
    const fixtures::MxfClip clip = namedClip();
    write(QStringLiteral("listed.mxf"), clip);
    for (int on : {0, 1}) {
        scanMxf(on);
        for (const char* name : {"listed.mxf", "gone.mxf"}) {
            SCOPED_TRACE(::testing::Message() << name << " " << on);
            const bool exists = name[0] == 'l';
            TarnDatabaseItem item;
            item.DB_itemPath = dir_.filePath(QString::fromLatin1(name));
            item.DB_isReferenced = true;
            item.validatePath();
            item.addinfoToItemFromCorrespondingFile();
            EXPECT_EQ(item.DB_isReferenced, !exists);
            EXPECT_EQ(item.DB_NameInBin.isNull(), !(exists && on));
            if (exists && on) {
                EXPECT_EQ(item.DB_NameInBin, clip.clipName);
                EXPECT_EQ(bytesOf(item.filePackageUID, 32), systemOrder(clip.fileUMID));
            }
        }
    }
}

}  // namespace
