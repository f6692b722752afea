#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

#include <QStringDecoder>
#include <QtEndian>

#include "BentoWriter.h"
#include "OmfTestFile.h"
#include "TestSupport.h"
#include "readers/TarnMacText.h"
#include "readers/UIDtoBentoObj.h"
#include "readers/UIDtoBentoObjTree.h"

namespace {

// A clip whose name and edit rate point past the end of the file.
QByteArray clipWithValuesPastTheEnd() {
    fixtures::BentoWriter w;
    w.addValue(1, 0x101E9, w.u16(1) + w.tableRecord(0xC0, 0x30000));
    w.addEntry(0x30000, 66145, 0, 0xFFFFFFF0u, 0x20, 1);  // offset + length wraps 32 bits
    w.addEntry(0x30000, 66195, 0, 20, 0x7FFFFFFF, 1);
    w.addImmediate(0x30000, 66365, w.u32(6));
    w.addEntry(0x30000, 66190, 0, 0, 16, 0);  // immediate longer than its entry
    return w.finish();
}

}  // namespace

TEST(OmfValues, ValuesRunningPastTheEndAreAbsent) {
    OmfTestFile f;
    ASSERT_TRUE(f.open(clipWithValuesPastTheEnd()));
    TarnOMFI& r = *f.reader;
    EXPECT_EQ(r.pDataFor(1), nullptr);
    EXPECT_EQ(r.pDataFor(2), nullptr);
    EXPECT_NE(r.pDataFor(3), nullptr);
    EXPECT_EQ(r.pDataFor(4), nullptr);
    EXPECT_EQ(r.pDataFor(TarnOMFI::kNoIndex), nullptr);
    EXPECT_EQ(r.pDataFor(r.tocEntryCount()), nullptr);

    const TarnItemPtr item = f.complete(0, 0xC0);
    EXPECT_TRUE(item->DB_NameInBin.isNull());
    EXPECT_EQ(item->DB_framerate(), (TarnRate{0, 0}));
    EXPECT_EQ(item->DB_usageCode, 6);
}

TEST(OmfValues, TruncatedTablesAndListsStopAtTheLastWholeRecord) {
    fixtures::BentoWriter w;
    // Three clips announced, two and a half present.
    QByteArray table = w.u16(3);
    for (quint32 k = 0; k < 3; ++k) {
        table += w.tableRecord(0xD0 + k, 0x30000 + k);
    }
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
    EXPECT_EQ(f.complete(0, 0xD0)->DB_usageCode, 15);
}

TEST(OmfValues, ObjectsPropertiesAndNames) {
    const QList<fixtures::MdbClip> clips{pictureClip(1), audioClip(2)};
    OmfTestFile f;
    ASSERT_TRUE(f.open(fixtures::writeMdb(clips)));
    TarnOMFI& r = *f.reader;
    EXPECT_EQ(int(r.howManyBentoObjectsV01()), fixtures::mdbObjectCount(clips));

    // The first clip object follows object 1 and the property names.
    const quint32 clip = r.tocIndexForObject(0x30000);
    ASSERT_NE(clip, TarnOMFI::kNoIndex);
    EXPECT_EQ(r.objectIDAt(clip), 0x30000u);
    EXPECT_EQ(r.objectIDAt(clip - 1), 67801u);
    const quint32 usage = r.lookForProperty(66365, clip);
    EXPECT_EQ(r.propertyIDAt(usage), 66365u);
    EXPECT_EQ(r.lookForProperty(67801, clip), 0u);  // another object's property
    EXPECT_EQ(r.GetStringForObjectAt(clip), "Shot 1");
    EXPECT_TRUE(r.GetStringForObjectAt(r.tocIndexForObject(0x30001)).isNull());
    EXPECT_EQ(r.tocIndexForObject(0x2FFFF), TarnOMFI::kNoIndex);

    EXPECT_EQ(r.nameForObjectID(1), "CM_StdObjID_TOC");
    EXPECT_EQ(r.nameForObjectID(42), "CM_StdObjID_8BitImmValue");
    EXPECT_EQ(r.nameForObjectID(66365), "UsageCode");
}

TEST(OmfValues, IdentifierTreeRulesLogMissingNodes) {
    const UIDtoBentoObj a(0x0000000100000000ull, 7);
    const UIDtoBentoObj b(0x00000000FFFFFFFFull, 8);
    EXPECT_TRUE(UIDtoBentoObj::lessRule(&b, &a));  // compared as 64-bit numbers
    EXPECT_FALSE(UIDtoBentoObj::lessRule(&a, &b));
    EXPECT_TRUE(UIDtoBentoObj::equalRule(&a, &a));
    EXPECT_FALSE(UIDtoBentoObj::equalRule(&a, &b));

    testsupport::LogCapture log;
    EXPECT_FALSE(UIDtoBentoObj::equalRule(&a, nullptr));
    EXPECT_FALSE(UIDtoBentoObj::lessRule(nullptr, &a));
    EXPECT_EQ(log.count(QStringLiteral("Error in UID tree - nil object")), 2);
}

// Each table gives what the platform's codec gives, where there is one.
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

TEST(OmfValues, MacTextTablesMatchThePlatformCodecs) {
    const struct {
        TarnMacText::Encoding encoding;
        const char* codec;
        uchar byte;
        char16_t expected;
    } cases[] = {
        {TarnMacText::Encoding::Roman, "macintosh", 0x8E, 0x00E9},          // é
        {TarnMacText::Encoding::Roman, "macintosh", 0xD0, 0x2013},          // en dash
        {TarnMacText::Encoding::Roman, "macintosh", 0xA5, 0x2022},          // bullet
        {TarnMacText::Encoding::Cyrillic, "x-mac-cyrillic", 0x80, 0x0410},  // А
        {TarnMacText::Encoding::Cyrillic, "x-mac-cyrillic", 0xDF, 0x044F},  // я
    };
    QByteArray all;
    for (int b = 1; b < 256; ++b) all.append(char(b));
    for (const auto& c : cases) {
        const QString table = TarnMacText::toStringWithTable(c.encoding, all);
        EXPECT_EQ(table.at(c.byte - 1), QChar(c.expected)) << c.codec << ' ' << int(c.byte);
        QStringDecoder codec(c.codec);
        if (codec.isValid()) {
            EXPECT_EQ(table, codec(all)) << c.codec;
        }
    }
    EXPECT_EQ(TarnMacText::toString(TarnMacText::Encoding::Roman, QByteArrayView()), QString(""));
}
