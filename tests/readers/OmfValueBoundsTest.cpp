#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <vector>

#include <QStringDecoder>

#include "BentoWriter.h"
#include "OmfTestFile.h"
#include "readers/TarnMacText.h"
#include "readers/UIDtoBentoObjTree.h"

namespace {

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

// A property is looked for within its own object only.
TEST(OmfValues, ObjectsAndTheirProperties) {
    OmfTestFile f;
    ASSERT_TRUE(f.open(fixtures::writeMdb(fixtures::omfSeedClips().mid(0, 2))));
    const TarnOMFI& r = *f.reader;
    // The first clip object follows object 1 and the property names.
    const quint32 clip = r.tocIndexForObject(0x30000);
    ASSERT_NE(clip, TarnOMFI::kNoIndex);
    EXPECT_EQ(r.objectIDAt(clip), 0x30000u);
    EXPECT_EQ(r.objectIDAt(clip - 1), 67801u);
    EXPECT_EQ(r.propertyIDAt(r.lookForProperty(66365, clip)), 66365u);
    EXPECT_EQ(r.lookForProperty(67801, clip), 0u);  // another object's property
    EXPECT_EQ(r.GetStringForObjectAt(clip), "Clip 0");
    EXPECT_TRUE(r.GetStringForObjectAt(r.tocIndexForObject(0x30001)).isNull());
    EXPECT_EQ(r.tocIndexForObject(0x2FFFF), TarnOMFI::kNoIndex);
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

}  // namespace
