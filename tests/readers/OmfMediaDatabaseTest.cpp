#include <gtest/gtest.h>

#include <QFileInfo>
#include <QStringDecoder>

#include <algorithm>
#include <optional>
#include <vector>

#include "BentoWriter.h"
#include "OmfTestFile.h"
#include "TestSupport.h"
#include "readers/TarnMacText.h"
#include "readers/UIDtoBentoObjTree.h"

namespace {

// Attribute lists (66190), descriptors (66355) and source references (66550)
// name objects by numbers in the label's byte order; list records are taken
// as stored. The clips: a picture with its project on the file object, an
// audio clip and an imported picture whose projects lie with a source reached
// through a 32- and a 12-byte identifier, and an audio clip whose 16-byte
// identifier is damaged: its project is lost with an error, the rest is read.
TEST(OmfMediaDatabase, CompletesPictureAndAudioItemsInBothByteOrders) {
    QList<fixtures::MdbClip> clips = fixtures::omfSeedClips();
    clips[1].project = "Through 32";
    clips[2].project = "Through 12";
    for (bool bigEndian : {false, true}) {
        SCOPED_TRACE(bigEndian ? "MM" : "II");
        testsupport::LogCapture log;
        OmfTestFile f;
        ASSERT_TRUE(f.open(fixtures::writeMdb(clips, bigEndian)));
        EXPECT_EQ(f.reader->isLittleEndian(), !bigEndian);
        EXPECT_EQ(f.reader->getMDBCompositionsCount(), 4u);
        EXPECT_EQ(f.complete(clips[0]),
                  "Clip 0 | Seed Project | 0 | AVdn | 1237 | 25/1 | 25/1 | 8");
        EXPECT_EQ(f.complete(clips[1]), "Clip 1 | Through 32 | 1 | _AUD | 0 | 25/1 | 48000/1 | 24");
        EXPECT_EQ(f.complete(clips[2]), "Clip 2 | Through 12 | 15 | AVdn | 1237 | 25/1 | 25/1 | 8");
        EXPECT_FALSE(log.contains("ERROR IN OMFI PARSER"));
        EXPECT_EQ(f.complete(clips[3]), "Clip 3 | (null) | 3 | _AUD | 0 | 25/1 | 48000/1 | 24");
        // Three pieces: the length, the class and method (no line feed of its
        // own), the entry's text.
        EXPECT_EQ(log.count("ERROR IN OMFI PARSER. UID capacity is::16l\n"
                            "[TarnOMFI getProjectNameForObjAt]TOC["),
                  1);
        EXPECT_TRUE(log.contains("property 66390"));
    }
}

// The clip's data comes through the material identifier, the project through
// the file identifier; unknown ones leave the item alone.
TEST(OmfMediaDatabase, EachIdentifierBringsItsOwnData) {
    fixtures::MdbClip clip = fixtures::omfSeedClips()[0];
    clip.usageCode = 2;
    OmfTestFile f;
    ASSERT_TRUE(f.open(fixtures::writeMdb({clip})));
    EXPECT_EQ(f.complete(0x77, 0x88), "(null) | (null) | 0 | .... | 0 | 0/0 | 0/0 | 0");
    EXPECT_EQ(f.complete(0x77, clip.materialShortUID),
              "Clip 0 | (null) | 2 | .... | 0 | 25/1 | 0/0 | 0");
    EXPECT_EQ(f.complete(clip.fileShortUID, 0x88),
              "(null) | Seed Project | 0 | AVdn | 1237 | 0/0 | 25/1 | 8");
}

// A descriptor without 67405 but with 66095 and 66330 is audio too; one with
// neither and without a picture code gives no compression; a picture rate
// needs the sample rate property (67821 and 67865 alone give none).
TEST(OmfMediaDatabase, RatesFromTheDescriptorsProperties) {
    fixtures::BentoWriter w;
    QByteArray files = w.u16(3);
    for (quint32 k = 0; k < 3; ++k) files += w.tableRecord(0xF0 + k, 0x30000 + 2 * k);
    w.addValue(1, 0x101E9, w.u16(0));
    w.addValue(1, 0x10216, files);
    w.addImmediate(0x30000, 66355, w.objectRef(0x30001));
    w.addImmediate(0x30001, 66095, w.u32(1));
    w.addValue(0x30001, 66330, w.u32(44100) + w.u32(1));
    w.addImmediate(0x30001, 67401, w.u32(16));
    w.addImmediate(0x30002, 66355, w.objectRef(0x30003));
    w.addImmediate(0x30003, 66330, w.u32(1));
    w.addImmediate(0x30004, 66355, w.objectRef(0x30005));
    w.addImmediate(0x30005, 67801, "JFIF");
    w.addImmediate(0x30005, 67821, w.u32(30));
    w.addImmediate(0x30005, 67865, w.u32(10));
    OmfTestFile f;
    ASSERT_TRUE(f.open(w.finish()));
    EXPECT_EQ(f.complete(0xF0, 0), "(null) | (null) | 0 | _AUD | 0 | 0/0 | 44100/1 | 16");
    EXPECT_EQ(f.complete(0xF1, 0), "(null) | (null) | 0 | .... | 0 | 0/0 | 0/0 | 0");
    EXPECT_EQ(f.complete(0xF2, 0), "(null) | (null) | 0 | JFIF | 0 | 0/0 | 0/0 | 0");
}

TEST(OmfMediaDatabase, BigEndianCountsAreSwappedAndTocWordsAreNot) {
    // Room for two records but a count of one: reading the count unswapped
    // (256) would take both.
    for (bool bigEndian : {false, true}) {
        fixtures::BentoWriter w(bigEndian);
        w.addValue(1, 0x101E9,
                   w.u16(1) + w.tableRecord(0xA0, 0x30000) + w.tableRecord(0xA1, 0x30001));
        w.addValue(0x30000, 66145, "one");
        w.addValue(0x30001, 66145, "two");
        OmfTestFile f;
        ASSERT_TRUE(f.open(w.finish()));
        EXPECT_EQ(f.reader->getMDBCompositionsCount(), 1u);
        EXPECT_TRUE(f.complete(0, 0xA0).startsWith("one |"));
        EXPECT_TRUE(f.complete(0, 0xA1).startsWith("(null) |"));
    }
}

TEST(OmfMediaDatabase, MacRomanNamesInBigEndianContainers) {
    fixtures::MdbClip clip = fixtures::omfSeedClips()[0];
    clip.clipName = QString::fromUtf8("Caf\u00e9 \u2013 \u00c5ngstr\u00f6m");
    OmfTestFile mm;
    ASSERT_TRUE(mm.open(fixtures::writeMdb({clip}, true)));
    EXPECT_TRUE(mm.complete(clip).startsWith(clip.clipName + " |"));

    // The same bytes in a little-endian container are taken byte for byte.
    fixtures::BentoWriter w;
    w.addValue(1, 0x101E9, w.u16(1) + w.tableRecord(0xB0, 0x30000));
    w.addValue(0x30000, 66175, QByteArray("\0\0Caf\x8e\0", 7));
    OmfTestFile ii;
    ASSERT_TRUE(ii.open(w.finish()));
    EXPECT_TRUE(ii.complete(0, 0xB0).startsWith(QString::fromLatin1("Caf\x8e |")));
}

TEST(OmfMediaDatabase, LastProjectAttributeWinsInLongRepeatingLists) {
    // File object 0x30000 lists: project A, ten times the same comment,
    // project B, the import mark.
    fixtures::BentoWriter w;
    w.addValue(1, 0x101E9, w.u16(1) + w.tableRecord(0xE0, 0x30000));
    w.addValue(1, 0x10216, w.u16(1) + w.tableRecord(0xF0, 0x30000));
    QList<quint32> attributes{0x30002};
    for (int i = 0; i < 10; ++i) attributes << 0x30003;
    attributes << 0x30004 << 0x30005;
    w.addImmediate(0x30000, 66190, w.objectRef(0x30001));
    w.addValue(0x30001, 66155, w.objectList(attributes));
    w.addValue(0x30002, 66135, "_PJNAME");
    w.addValue(0x30002, 66200, "Project A");
    w.addValue(0x30003, 66135, "_COMMENT");
    w.addValue(0x30003, 66200, "note");
    w.addValue(0x30004, 66135, "_PJNAME");
    w.addValue(0x30004, 66200, "Project B");
    w.addValue(0x30005, 66135, "_IMPORTSETTING");
    OmfTestFile f;
    ASSERT_TRUE(f.open(w.finish()));
    EXPECT_EQ(f.complete(0xF0, 0xE0), "(null) | Project B | 15 | .... | 0 | 0/0 | 0/0 | 0");
}

TEST(OmfValues, ValuesRunningPastTheEndAreAbsent) {
    // A clip whose name and edit rate point past the end of the file.
    fixtures::BentoWriter w;
    w.addValue(1, 0x101E9, w.u16(1) + w.tableRecord(0xC0, 0x30000));
    w.addEntry(0x30000, 66145, 0, 0xFFFFFFF0u, 0x20, 1);  // offset + length wraps 32 bits
    w.addEntry(0x30000, 66195, 0, 20, 0x7FFFFFFF, 1);
    w.addImmediate(0x30000, 66365, w.u32(6));
    w.addEntry(0x30000, 66190, 0, 0, 16, 0);  // immediate longer than its entry
    OmfTestFile f;
    ASSERT_TRUE(f.open(w.finish()));
    const TarnOMFI& r = *f.reader;
    for (quint32 index : {1u, 2u, 4u, TarnOMFI::kNoIndex, r.tocEntryCount()})
        EXPECT_EQ(r.pDataFor(index), nullptr) << index;
    EXPECT_NE(r.pDataFor(3), nullptr);
    EXPECT_EQ(f.complete(0, 0xC0), "(null) | (null) | 6 | .... | 0 | 0/0 | 0/0 | 0");
}

TEST(OmfValues, TruncatedTablesAndListsStopAtTheLastWholeRecord) {
    fixtures::BentoWriter w;
    // Three clips announced, two and a half present.
    QByteArray table = w.u16(3);
    for (quint32 k = 0; k < 3; ++k) table += w.tableRecord(0xD0 + k, 0x30000 + k);
    table.chop(8);
    w.addValue(1, 0x101E9, table);
    // An attribute list announcing 5 records with room for one.
    w.addValue(0x30000, 66145, "clip");
    w.addImmediate(0x30000, 66190, w.objectRef(0x30001));
    w.addValue(0x30001, 66155, w.u16(5) + w.ref32(0x30002) + QByteArray(5, 0));
    w.addValue(0x30002, 66135, "_IMPORTSETTING");
    OmfTestFile f;
    ASSERT_TRUE(f.open(w.finish()));
    EXPECT_EQ(f.reader->getMDBCompositionsCount(), 2u);
    EXPECT_EQ(f.complete(0, 0xD0), "clip | (null) | 15 | .... | 0 | 0/0 | 0/0 | 0");
}

// Tables come in any order and may list an identifier twice: the last
// listing wins, and a look-up between or beyond the keys finds nothing.
TEST(OmfValues, IdentifierTableLookUps) {
    const std::vector<std::pair<quint64, quint32>> listed = {
        {0x50, 1}, {0x10, 2}, {0xFFFFFFFF00000000ull, 3}, {0x50, 4}, {0x30, 5},
        {0x10, 6}, {0x50, 7}};
    const std::vector<std::pair<quint64, std::optional<quint32>>> asked = {
        {0x50, 7}, {0x10, 6},  {0x30, 5},  {0xFFFFFFFF00000000ull, 3},
        {0x0, {}}, {0x20, {}}, {0x51, {}}, {0xFFFFFFFFFFFFFFFFull, {}}};
    for (const bool inOrder : {false, true}) {
        UIDtoBentoObjTree table;
        EXPECT_EQ(table.find(0x50), std::nullopt);
        auto entries = listed;
        if (inOrder)
            std::stable_sort(entries.begin(), entries.end(),
                             [](auto& a, auto& b) { return a.first < b.first; });
        for (const auto& [key, object] : entries) table.insert(key, object);
        EXPECT_EQ(table.count(), qsizetype(listed.size()));
        for (const auto& [key, object] : asked) EXPECT_EQ(table.find(key), object) << key;
    }
}

// The Mac Roman and Cyrillic tables give what the platform's codecs give,
// where it has them, and these letters in any case.
TEST(OmfValues, MacTextTablesMatchThePlatformCodecs) {
    QByteArray all;
    for (int b = 1; b < 256; ++b) all.append(char(b));
    const QString roman = TarnMacText::toStringWithTable(TarnMacText::Encoding::Roman, all);
    const QString cyrillic = TarnMacText::toStringWithTable(TarnMacText::Encoding::Cyrillic, all);
    EXPECT_EQ(QString(roman[0x8D]) + roman[0xCF] + roman[0xA4] + cyrillic[0x7F] + cyrillic[0xDE],
              QString::fromUtf8("\u00e9\u2013\u2022\u0410\u044f"));  // bytes 8E D0 A5, 80 DF
    for (const auto& [table, codec] :
         {std::pair{roman, "macintosh"}, {cyrillic, "x-mac-cyrillic"}}) {
        QStringDecoder decoder(codec);
        if (decoder.isValid()) {
            EXPECT_EQ(table, decoder(all)) << codec;
        }
    }
    EXPECT_EQ(TarnMacText::toString(TarnMacText::Encoding::Roman, QByteArrayView()), QString(""));
}

// A source entries list that repeats one identifier, leading to an attribute
// list as long: the work of completing items stays linear in the lists'
// length, and items mapped to the same objects are answered from memory (or
// worked out again when that is cheap: a few entries).
TEST(OmfWork, LongSourceListsCostWorkLinearInTheirLength) {
    fixtures::MdbClip clip = fixtures::omfSeedClips()[0];
    clip.project = "Long Way";
    for (int entries : {1024, 16384, 65535}) {
        SCOPED_TRACE(entries);
        OmfTestFile f;
        ASSERT_TRUE(f.open(fixtures::writeMdbWithLongSourceList(clip, entries)));
        EXPECT_TRUE(f.complete(clip).startsWith("Clip 0 | Long Way |"));
        const quint64 firstWork = f.reader->workDone();
        EXPECT_LE(firstWork, 3u * quint64(entries) + 100);
        for (int i = 0; i < 100; ++i) EXPECT_TRUE(f.complete(clip).contains("| Long Way |"));
        EXPECT_LE(f.reader->workDone(), firstWork + 100 * 64);
    }
}

// Many attribute lists whose entries all point at one long stretch of
// records: remembering answers per object does not help, the allowances do.
TEST(OmfWork, SharedListValuesCannotOutgrowTheAllowances) {
    constexpr int kFiles = 512;
    fixtures::BentoWriter w;
    QByteArray fileTable = w.u16(kFiles);
    for (quint32 k = 0; k < kFiles; ++k) fileTable += w.tableRecord(0xF000 + k, 0x30000 + 2 * k);
    w.addValue(1, 0x101E9, w.u16(0));
    w.addValue(1, 0x10216, fileTable);
    // The project attribute first, then one missing object over and over.
    QList<quint32> records(65535, 0x7FFFFFFF);
    records[0] = 0x20000;
    const QByteArray list = w.objectList(records);
    const quint32 listAt = w.appendData(list);
    w.addValue(0x20000, 66135, QByteArray("_PJNAME\0", 8));
    w.addValue(0x20000, 66200, QByteArray("Shared\0", 7));
    for (quint32 k = 0; k < kFiles; ++k) {
        w.addImmediate(0x30000 + 2 * k, 66190, w.objectRef(0x30001 + 2 * k));
        w.addEntry(0x30001 + 2 * k, 66155, 26, listAt, quint32(list.size()), 1);
    }
    OmfTestFile f;
    ASSERT_TRUE(f.open(w.finish()));
    EXPECT_GE(f.reader->databaseWorkAllowance(), quint64(QFileInfo(f.path).size()));

    int withProject = 0;
    for (quint32 k = 0; k < kFiles; ++k) {
        const quint64 before = f.reader->workDone();
        if (f.complete(0xF000 + k, 0).contains("| Shared |")) ++withProject;
        EXPECT_LE(f.reader->workDone() - before, f.reader->itemWorkAllowance());
    }
    EXPECT_LE(f.reader->workDone(), f.reader->databaseWorkAllowance());
    // The first items are answered in full, the rest once the allowance is spent.
    EXPECT_GT(withProject, 0);
    EXPECT_LT(withProject, kFiles);
}

}  // namespace
