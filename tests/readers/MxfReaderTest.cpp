#include <gtest/gtest.h>

#include <QDir>
#include <QTemporaryDir>

#include <atomic>
#include <thread>
#include <tuple>
#include <vector>

#include "FixtureFiles.h"
#include "ItemFacts.h"
#include "TestSupport.h"
#include "readers/TarnAvidMXFInfo.h"
#include "readers/TarnMediafile.h"
#include "support/TarnPreferences.h"

namespace {

const QStringList kNoFacts = {"(null)", "(null)", QString(64, '0'), QString(64, '0')};

fixtures::MxfClip namedClip(bool opAtom = true) {
    fixtures::MxfClip clip;
    clip.clipName = "Interview A01";
    clip.projectName = "Documentary 2026";
    clip.materialUMID = fixtures::umidFor(11);
    clip.fileUMID = fixtures::umidFor(12);
    clip.opAtom = opAtom;
    return clip;
}

// A file whose header metadata has no material package (its set key wiped).
QByteArray withoutMaterialPackage() {
    QByteArray bytes = fixtures::writeMxf(namedClip());
    bytes[bytes.indexOf(QByteArray::fromHex("060e2b34025301010d01010101013600")) + 14] = char(0x7e);
    return bytes;
}

class MxfReader : public ::testing::Test {
  protected:
    QString write(const QString& name, const QByteArray& bytes) {
        const QString path = dir_.filePath(name);
        EXPECT_TRUE(fixtures::writeFile(path, bytes));
        return path;
    }
    QTemporaryDir dir_;
};

// The file's info keeps the UMIDs as stored; the item gets them in the
// system's order. libavformat drops empty texts, so an empty project reads as
// none; an unnamed package clears the name the item had.
TEST_F(MxfReader, OpAtomFileGivesNamesProjectAndBothUmids) {
    const std::tuple<QString, QString, int> cases[] = {
        // name, project, info entries
        {"Interview A01", "Documentary 2026", 4},
        {QString::fromUtf8("Sz\u00e8ne \u00c4 \u65e5\u672c"), "", 3},
        {QString(), QString(), 2},
    };
    for (const auto& [clipName, project, entries] : cases) {
        SCOPED_TRACE(clipName.toStdString());
        fixtures::MxfClip clip = namedClip();
        clip.clipName = clipName;
        clip.projectName = project;
        TarnMXF reader;
        testsupport::LogCapture log;
        ASSERT_TRUE(reader.openFile(write("A01.mxf", fixtures::writeMxf(clip)), nullptr));
        EXPECT_EQ(log.text().count('\n'), 1) << log.text().toStdString();
        EXPECT_TRUE(log.contains("(TarnMXF::openFile) (TarnMXF.cpp:"));
        const QVariantHash& info = reader.MXFinfo();
        EXPECT_EQ(info.size(), entries);
        EXPECT_EQ(info.value("matUID").toByteArray(), clip.materialUMID);
        EXPECT_EQ(info.value("fileUID").toByteArray(), clip.fileUMID);

        TarnDatabaseItem item;
        item.DB_NameInBin = "stale";
        reader.addInfoToItem(&item);
        if (project.isEmpty()) clip.projectName = QString();
        EXPECT_EQ(mxfFacts(item), mxfFacts(clip, clip.fileUMID));
        EXPECT_EQ(item.DB_SizeofUID, 8u);
        EXPECT_TRUE(item.checkUUID());
    }
}

// Files the reader refuses still "open": the status is logged and the item
// gets no names and all-zero 32-byte identifiers. One reader, reused: every
// open starts afresh. A path that cannot be opened gives false. Good and
// refused files alike: every open closes its stream and descriptor.
TEST_F(MxfReader, RefusedFilesLogTheirStatusAndYieldEmptyValues) {
    QByteArray garbage(4096, '\0');
    for (int i = 0; i < garbage.size(); ++i) garbage[i] = char((i * 7919) >> 3);
    const QByteArray op1a = fixtures::writeMxf(namedClip(false));
    const std::pair<QString, const char*> cases[] = {
        {write("op1a.mxf", op1a), "File is not OP-Atom"},
        // The pattern is judged before the metadata, which is nonsense here.
        {write("op1a-cut.mxf", op1a.left(124) + QByteArray(2000, '\xff')), "File is not OP-Atom"},
        {write("garbage.mxf", garbage), "Failed to read header partition"},
        {write("empty.mxf", QByteArray()), "Failed to read header partition"},
        {write("nomat.mxf", withoutMaterialPackage()), "Failed to read info"},
        // A folder opens but cannot be read: no MXF file on that stream.
        {dir_.path(), "Failed to open file"},
    };
    const QString ok = write("ok.mxf", fixtures::writeMxf(namedClip()));
    const auto descriptors = [] {
        return QDir("/proc/self/fd").entryList(QDir::Files | QDir::System).size();
    };
    TarnMXF reader;
    ASSERT_TRUE(reader.openFile(ok, nullptr));  // first use sets up the library's log routing
    const qsizetype openBefore = descriptors();
    for (const auto& [path, message] : cases) {
        SCOPED_TRACE(path.toStdString());
        ASSERT_TRUE(reader.openFile(ok, nullptr));
        ASSERT_FALSE(reader.MXFinfo().isEmpty());
        testsupport::LogCapture log;
        EXPECT_TRUE(reader.openFile(path, nullptr));
        EXPECT_TRUE(log.contains("MXF file : open"));
        EXPECT_TRUE(log.contains(message)) << log.text().toStdString();
        EXPECT_TRUE(reader.MXFinfo().isEmpty());

        TarnDatabaseItem item;
        item.DB_NameInBin = "stale";
        reader.addInfoToItem(&item);
        EXPECT_EQ(mxfFacts(item), kNoFacts);
        EXPECT_EQ(item.DB_SizeofUID, 8u);
    }

    testsupport::LogCapture log;
    EXPECT_FALSE(reader.openFile(dir_.filePath("missing.mxf"), nullptr));
    EXPECT_EQ(log.text().count('\n'), 1);
    EXPECT_TRUE(log.contains("MXF file : open"));
    EXPECT_EQ(descriptors(), openBefore);
}

// Every prefix of a good file: nothing crashes, a status is logged, and what
// was read is either everything or nothing.
TEST_F(MxfReader, TruncatedFilesAreRefusedCleanly) {
    const fixtures::MxfClip clip = namedClip();
    const QByteArray whole = fixtures::writeMxf(clip);
    int refused = 0, headerFailures = 0;
    for (qsizetype n = 0; n < whole.size(); n += 37) {
        TarnMXF reader;
        testsupport::LogCapture log;
        ASSERT_TRUE(reader.openFile(write("cut.mxf", whole.left(n)), nullptr));
        const QVariantHash& info = reader.MXFinfo();
        if (info.isEmpty()) {
            ++refused;
            if (log.contains("Failed to read header partition"))
                ++headerFailures;
            else
                EXPECT_TRUE(log.contains("Failed to read info")) << n;
        } else {
            EXPECT_EQ(info.value("fileUID").toByteArray(), clip.fileUMID) << n;
            EXPECT_EQ(info.value("matUID").toByteArray(), clip.materialUMID) << n;
        }
    }
    // Shorter than the partition pack's label: header failures (0, 37 and 74
    // bytes); cut in the metadata: info failures.
    EXPECT_EQ(headerFailures, 3);
    EXPECT_GT(refused, headerFailures);
}

// Bytes 16..23 of a UMID, stored big-endian, become the little-endian fields
// of a GUID (4 + 2 + 2 bytes); other lengths give 32 zeros.
TEST(MxfUmidSwap, ReordersTheGuidFieldsOfTheMaterialNumber) {
    QByteArray in;
    for (int i = 0; i < 32; ++i) in += char(i);
    const QByteArray out = in.left(16) + QByteArray::fromHex("1312111015141716") + in.mid(24);
    EXPECT_EQ(TarnMXF::swapUUIDfromMXFtoTarn(in), out);
    for (int n : {0, 8, 31, 33})
        EXPECT_EQ(TarnMXF::swapUUIDfromMXFtoTarn(QByteArray(n, '\x5a')), QByteArray(32, '\0')) << n;
}

// libavformat's own messages reach the console only while asked for.
TEST_F(MxfReader, LibraryLogIsQuietUnlessSwitchedOn) {
    const QString path = write("loud.mxf", withoutMaterialPackage());
    const bool before = TarnAvidMXFInfo::libraryLogging();
    for (bool on : {false, true}) {
        TarnAvidMXFInfo::setLibraryLogging(on);
        testsupport::LogCapture log;
        TarnMXF().openFile(path, nullptr);
        EXPECT_EQ(log.contains("[mxf @"), on) << log.text().toStdString();
    }
    TarnAvidMXFInfo::setLibraryLogging(before);
}

// Scanner operations read files on several threads at once, with the
// library's log routed or not.
TEST_F(MxfReader, ConcurrentReadsGiveEachThreadItsOwnResult) {
    const QString broken = write("broken.mxf", fixtures::writeMxf({}).left(1500));
    const bool before = TarnAvidMXFInfo::libraryLogging();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        fixtures::MxfClip clip;
        clip.clipName = QString("thread %1").arg(t);
        clip.fileUMID = fixtures::umidFor(quint32(100 + t));
        const QString path = write(QString("t%1.mxf").arg(t), fixtures::writeMxf(clip));
        threads.emplace_back([&, t, path, clip] {
            for (int i = 0; i < 30; ++i) {
                if (t == 0) TarnAvidMXFInfo::setLibraryLogging(i % 2 == 0);
                TarnMXF reader, refused;
                reader.openFile(path, nullptr);
                refused.openFile(broken, nullptr);
                const QVariantHash& info = reader.MXFinfo();
                if (info.value("clipname") != clip.clipName ||
                    info.value("fileUID") != clip.fileUMID || !refused.MXFinfo().isEmpty())
                    ++wrong;
            }
        });
    }
    for (std::thread& th : threads) th.join();
    TarnAvidMXFInfo::setLibraryLogging(before);
    EXPECT_EQ(wrong.load(), 0);
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

// 1024 bytes is too small to hold the packages and is not read; 1025 is read
// (and, cut there, fails in the metadata); an OP-1a file gives a 32-byte
// identifier of zeros, without the UMID label.
TEST_F(MxfItem, UnreadableFilesGiveUnmanagedItemsWithZeroIdentifiers) {
    scanMxf(1);
    const QByteArray whole = fixtures::writeMxf(namedClip());
    const std::tuple<QString, QByteArray, const char*> cases[] = {
        {"small.mxf", whole.left(1024), nullptr},
        {"edge.mxf", whole.left(1025), "Failed to read info"},
        {"op1a.MXF", fixtures::writeMxf(namedClip(false)), "File is not OP-Atom"},
    };
    QStringList unmanaged = kNoFacts;
    unmanaged[1] = TarnDatabaseItem::GetProjectNameUnmanaged();
    for (const auto& [name, bytes, message] : cases) {
        SCOPED_TRACE(name.toStdString());
        write(name, bytes);
        TarnDatabaseItem item;
        testsupport::LogCapture log;
        item.setupWithUnrefFile(dir_.path(), name);
        EXPECT_EQ(log.contains("MXF file : open"), message != nullptr);
        EXPECT_TRUE(!message || log.contains(message));
        EXPECT_EQ(mxfFacts(item), unmanaged);
        EXPECT_EQ(item.DB_SizeofUID, message ? 8u : 0u);
        EXPECT_EQ(item.DB_isGoodUUID, !message);
    }
}

// An index record whose file exists is completed from the file itself, and
// then counts as unreferenced; a missing file is left alone.
TEST_F(MxfItem, CorrespondingFileCompletesAnIndexRecord) {
    const fixtures::MxfClip clip = namedClip();
    write("listed.mxf", fixtures::writeMxf(clip));
    for (int on : {0, 1}) {
        scanMxf(on);
        for (const char* name : {"listed.mxf", "gone.mxf"}) {
            SCOPED_TRACE(::testing::Message() << name << " " << on);
            const bool exists = name[0] == 'l';
            TarnDatabaseItem item;
            item.DB_itemPath = dir_.filePath(name);
            item.DB_isReferenced = true;
            item.validatePath();
            item.addinfoToItemFromCorrespondingFile();
            EXPECT_EQ(item.DB_isReferenced, !exists);
            EXPECT_EQ(mxfFacts(item), exists && on ? mxfFacts(clip, clip.fileUMID) : kNoFacts);
        }
    }
}

}  // namespace
