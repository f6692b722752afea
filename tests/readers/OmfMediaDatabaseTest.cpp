#include <gtest/gtest.h>

#include "BentoWriter.h"
#include "OmfTestFile.h"
#include "TestSupport.h"

// Attribute lists (66190), descriptors (66355) and source references (66550)
// name objects by numbers in the label's byte order; list records are taken
// as stored.
TEST(OmfMediaDatabase, CompletesPictureAndAudioItemsInBothByteOrders) {
    fixtures::MdbClip imported = pictureClip(1);
    imported.imported = true;
    fixtures::MdbClip throughSource = audioClip(2);
    throughSource.projectSourceUIDSize = 32;
    throughSource.project = QStringLiteral("Through Source");
    for (bool bigEndian : {false, true}) {
        SCOPED_TRACE(bigEndian ? "MM" : "II");
        OmfTestFile f;
        ASSERT_TRUE(
            f.open(fixtures::writeMdb({imported, throughSource, pictureClip(3)}, bigEndian)));
        EXPECT_EQ(f.reader->isLittleEndian(), !bigEndian);
        EXPECT_EQ(f.reader->getMDBCompositionsCount(), 3u);

        const TarnItemPtr picture = f.complete(imported);
        EXPECT_EQ(picture->DB_NameInBin, "Shot 1");
        EXPECT_EQ(picture->DB_usageCode, 15);
        EXPECT_EQ(picture->DB_framerate(), (TarnRate{25, 1}));
        EXPECT_EQ(picture->DB_ProjectName, "Feature");
        EXPECT_EQ(QByteArray(picture->DB_CompressionFourCC(), 4), "AVdn");
        EXPECT_EQ(picture->DB_DIDResolutionID, 1237u);
        EXPECT_EQ(picture->DB_samplerate(), (TarnRate{25, 1}));
        EXPECT_EQ(picture->DB_bits, 8u);
        EXPECT_EQ(f.complete(pictureClip(3))->DB_usageCode, 2);

        const TarnItemPtr audio = f.complete(throughSource);
        EXPECT_EQ(audio->DB_NameInBin, "Sound 2");
        EXPECT_EQ(audio->DB_ProjectName, "Through Source");
        EXPECT_EQ(audio->compressionCode(), 0x4455415Fu);
        EXPECT_EQ(audio->DB_samplerate(), (TarnRate{48000, 1}));
        EXPECT_EQ(audio->DB_bits, 24u);
        EXPECT_EQ(audio->DB_DIDResolutionID, 0u);
    }
}

TEST(OmfMediaDatabase, UnknownIdentifiersLeaveTheItemAlone) {
    OmfTestFile f;
    ASSERT_TRUE(f.open(fixtures::writeMdb({pictureClip(1)})));
    const TarnItemPtr item = f.complete(0x77, 0x88);
    EXPECT_TRUE(item->DB_NameInBin.isNull());
    EXPECT_TRUE(item->DB_ProjectName.isNull());
    EXPECT_EQ(item->DB_usageCode, 0);
    EXPECT_EQ(item->compressionCode(), 0u);

    // Only the material identifier known: clip data without file data, and back.
    const TarnItemPtr clipOnly = f.complete(0x77, pictureClip(1).materialShortUID);
    EXPECT_EQ(clipOnly->DB_NameInBin, "Shot 1");
    EXPECT_TRUE(clipOnly->DB_ProjectName.isNull());
    const TarnItemPtr fileOnly = f.complete(pictureClip(1).fileShortUID, 0x88);
    EXPECT_TRUE(fileOnly->DB_NameInBin.isNull());
    EXPECT_EQ(fileOnly->DB_ProjectName, "Feature");
}

TEST(OmfMediaDatabase, ProjectThroughSourceIdentifiers) {
    fixtures::MdbClip compact = audioClip(2);
    compact.projectSourceUIDSize = 12;
    compact.project = QStringLiteral("From Short UID");
    fixtures::MdbClip odd = pictureClip(3);
    odd.projectSourceUIDSize = 16;

    testsupport::LogCapture log;
    OmfTestFile f;
    ASSERT_TRUE(f.open(fixtures::writeMdb({compact, odd})));
    EXPECT_EQ(f.complete(compact)->DB_ProjectName, "From Short UID");
    EXPECT_FALSE(log.contains(QStringLiteral("ERROR IN OMFI PARSER")));

    const TarnItemPtr damaged = f.complete(odd);
    EXPECT_TRUE(damaged->DB_ProjectName.isNull());
    EXPECT_EQ(damaged->DB_NameInBin, "Shot 3");  // the rest is still read
    // Three pieces: the length, the class and method (no line feed of its
    // own), the entry's text.
    EXPECT_EQ(log.count(QStringLiteral("ERROR IN OMFI PARSER. UID capacity is::16l\n"
                                       "[TarnOMFI getProjectNameForObjAt]TOC[")),
              1);
    EXPECT_TRUE(log.contains(QStringLiteral("property 66390")));
}

TEST(OmfMediaDatabase, AudioRateFromTheAlternativeProperties) {
    // A descriptor without 67405 but with 66095 and 66330 is audio too; one
    // with neither and without a picture code gives no compression record.
    fixtures::BentoWriter w;
    QByteArray files = w.u16(2);
    for (quint32 k = 0; k < 2; ++k) {
        files += w.tableRecord(0xF0 + k, 0x30000 + 2 * k);
    }
    w.addValue(1, 0x101E9, w.u16(0));
    w.addValue(1, 0x10216, files);
    w.addImmediate(0x30000, 66355, w.objectRef(0x30001));
    w.addImmediate(0x30001, 66095, w.u32(1));
    w.addValue(0x30001, 66330, w.u32(44100) + w.u32(1));
    w.addImmediate(0x30001, 67401, w.u32(16));
    w.addImmediate(0x30002, 66355, w.objectRef(0x30003));
    w.addImmediate(0x30003, 66330, w.u32(1));
    OmfTestFile f;
    ASSERT_TRUE(f.open(w.finish()));

    const TarnItemPtr audio = f.complete(0xF0, 0);
    EXPECT_TRUE(audio->isAudio());
    EXPECT_EQ(audio->DB_samplerate(), (TarnRate{44100, 1}));
    EXPECT_EQ(audio->DB_bits, 16u);
    TarnOMFI::CompressionData record;
    EXPECT_FALSE(f.reader->getCompression_data(&record, f.reader->tocIndexForObject(0x30002)));
    EXPECT_EQ(f.complete(0xF1, 0)->compressionCode(), 0u);
}

TEST(OmfMediaDatabase, PictureRateNeedsTheSampleRateProperty) {
    fixtures::BentoWriter w;
    w.addValue(1, 0x101E9, w.u16(0));
    w.addValue(1, 0x10216, w.u16(1) + w.tableRecord(0xF0, 0x30000));
    w.addImmediate(0x30000, 66355, w.objectRef(0x30001));
    w.addImmediate(0x30001, 67801, "JFIF");
    w.addImmediate(0x30001, 67821, w.u32(30));
    w.addImmediate(0x30001, 67865, w.u32(10));
    OmfTestFile f;
    ASSERT_TRUE(f.open(w.finish()));
    const TarnItemPtr item = f.complete(0xF0, 0);
    EXPECT_EQ(QByteArray(item->DB_CompressionFourCC(), 4), "JFIF");
    EXPECT_EQ(item->DB_samplerate(), (TarnRate{0, 0}));
    EXPECT_EQ(item->DB_bits, 0u);
}

TEST(OmfMediaDatabase, BigEndianCountsAreSwappedAndTocWordsAreNot) {
    // Room for two records but a count of one: reading the count unswapped
    // (256) would take both.
    for (bool bigEndian : {false, true}) {
        fixtures::BentoWriter w(bigEndian);
        QByteArray table = w.u16(1);
        for (quint32 k = 0; k < 2; ++k) {
            table += w.tableRecord(0xA0 + k, 0x30000 + k);
        }
        w.addValue(1, 0x101E9, table);
        w.addValue(0x30000, 66145, "one");
        w.addValue(0x30001, 66145, "two");
        OmfTestFile f;
        ASSERT_TRUE(f.open(w.finish()));
        EXPECT_EQ(f.reader->getMDBCompositionsCount(), 1u);
        EXPECT_EQ(f.reader->objectIDAt(1), 0x30000u);
        EXPECT_EQ(f.complete(0, 0xA0)->DB_NameInBin, "one");
        EXPECT_TRUE(f.complete(0, 0xA1)->DB_NameInBin.isNull());
    }
}

TEST(OmfMediaDatabase, MacRomanNamesInBigEndianContainers) {
    fixtures::MdbClip clip = pictureClip(1);
    clip.clipName = QStringLiteral("Caf\u00e9 \u2013 \u00c5ngstr\u00f6m");
    OmfTestFile mm;
    ASSERT_TRUE(mm.open(fixtures::writeMdb({clip}, true)));
    EXPECT_EQ(mm.complete(clip)->DB_NameInBin, clip.clipName);

    // The same bytes in a little-endian container are taken byte for byte.
    fixtures::BentoWriter w;
    w.addValue(1, 0x101E9, w.u16(1) + w.tableRecord(0xB0, 0x30000));
    w.addValue(0x30000, 66175, QByteArray("\0\0Caf\x8e\0", 7));
    OmfTestFile ii;
    ASSERT_TRUE(ii.open(w.finish()));
    EXPECT_EQ(ii.complete(0, 0xB0)->DB_NameInBin, QString::fromLatin1("Caf\x8e"));
}

TEST(OmfMediaDatabase, LastProjectAttributeWinsInLongRepeatingLists) {
    // File object 0x30000 lists: project A, ten times the same comment, project B.
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
    const TarnItemPtr item = f.complete(0xF0, 0xE0);
    EXPECT_EQ(item->DB_ProjectName, "Project B");
    EXPECT_EQ(item->DB_usageCode, 15);
}
