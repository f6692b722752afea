#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <functional>
#include <tuple>

#include "FixtureFiles.h"
#include "ItemFacts.h"
#include "PmrWriter.h"
#include "readers/PMRFile.h"

using fixtures::PmrEntry;

namespace {

const QStringList kNoUids = {QString(64, '0'), QString(64, '0')};

QList<PmrEntry> threeEntries() {
    return {fixtures::makePmrEntry(0x1111, "A001C001_V01.mxf", "Feature"),
            fixtures::makePmrEntry(0x2222, "A001C001_A01.mxf", "Feature"),
            fixtures::makePmrEntry(0x3333, "title.mxf", QString())};
}

// Reads entries until the reader refuses one; from there it refuses for good
// and stays where it stopped.
qsizetype readAll(PMRFile& pmr) {
    qsizetype read = 0;
    while (pmr.FillItem(std::make_shared<TarnDatabaseItem>())) ++read;
    const quint32 stoppedAt = pmr.position();
    for (int again = 0; again < 3; ++again)
        EXPECT_FALSE(pmr.FillItem(std::make_shared<TarnDatabaseItem>()));
    EXPECT_EQ(pmr.position(), stoppedAt);
    return read;
}

// An item as an index entry left it: name, project, UID size and both
// identifiers in hex.
QStringList facts(const TarnDatabaseItem& item) {
    return QStringList{item.DB_ClipName, textOrNull(item.DB_ProjectName),
                       QString::number(item.DB_SizeofUID)} +
           mxfFacts(item).mid(2);
}

// Both byte orders and both identifier sizes: the caller's item is filled with
// every entry's name, project and identifiers, copied as stored (short ones
// in bytes 16..23).
TEST(PMRFile, ReadsEveryEntryInBothByteOrdersAndIdentifierSizes) {
    const auto entries = threeEntries();
    for (quint32 uidSize : {8u, 2u}) {
        const auto stored = [&](const QByteArray& uid) {
            const QByteArray whole =
                uidSize == 8 ? uid : QByteArray(16, 0) + uid.mid(16, 8) + QByteArray(8, 0);
            return QString::fromLatin1(whole.toHex());
        };
        for (bool bigEndian : {false, true}) {
            SCOPED_TRACE(::testing::Message() << uidSize << (bigEndian ? " MM" : " II"));
            PMRFile pmr;
            ASSERT_TRUE(pmr.dataWithBytes(fixtures::writePmr(entries, uidSize, bigEndian)));
            EXPECT_EQ(pmr.ItemsCount(), 3u);
            for (const PmrEntry& entry : entries) {
                auto given = std::make_shared<TarnDatabaseItem>();
                ASSERT_EQ(pmr.FillItem(given), given);
                EXPECT_EQ(
                    facts(*given),
                    (QStringList{entry.name, textOrNull(entry.project), QString::number(uidSize),
                                 stored(entry.fileUID), stored(entry.materialUID)}));
                EXPECT_TRUE(given->DB_isReferenced);
            }
            EXPECT_EQ(readAll(pmr), 0);
            EXPECT_EQ(pmr.position(), quint32(fixtures::writePmr(entries, uidSize).size()));
        }
    }

    // Other sizes: no identifier bytes (2 + 8 + 2 + 1 + 4 bytes an entry),
    // and the item takes nothing.
    const PmrEntry entry = fixtures::makePmrEntry(1, "clip.mxf", "P");
    PMRFile pmr;
    ASSERT_TRUE(pmr.dataWithBytes(fixtures::writePmr({entry, entry}, 4)));
    auto item = pmr.FillItem(std::make_shared<TarnDatabaseItem>());
    ASSERT_TRUE(item);
    EXPECT_EQ(pmr.position(), 12u + 17u);
    EXPECT_EQ(facts(*item), QStringList({"", "(null)", "0"}) + kNoUids);
}

// The reading stops for good at the first entry it refuses: one damaged (in
// every layout), one cut by the end of the file, one with fewer than 29 bytes
// left at its start (even though it would fit), one whose refused name holds
// bytes that would pass for an entry (the reader stands inside it, but never
// reads them).
TEST(PMRFile, ReadingStopsForGoodAtTheFirstRefusedEntry) {
    QList<std::tuple<QString, QByteArray, int>> cases;  // what, file, entries read
    const std::pair<const char*, std::function<void(PmrEntry&)>> damages[] = {
        {"name length 0", [](PmrEntry& e) { e.nameLength = 0; }},
        {"name length 256", [](PmrEntry& e) { e.nameLength = 256; }},
        {"project length 65", [](PmrEntry& e) { e.projectLength = 65; }},
        {"name running past the end", [](PmrEntry& e) { e.nameLength = 60000; }},
    };
    for (quint32 uidSize : {8u, 2u})
        for (bool bigEndian : {false, true})
            for (const auto& [what, damage] : damages) {
                auto entries = threeEntries();
                damage(entries[1]);
                cases.append({QString("%1 (%2, %3)").arg(what).arg(uidSize).arg(bigEndian),
                              fixtures::writePmr(entries, uidSize, bigEndian), 1});
            }

    auto entries = threeEntries();
    const QByteArray whole = fixtures::writePmr(entries);
    const qsizetype firstEnd = 12 + fixtures::pmrEntryBytes(entries[0]).size();
    const qsizetype secondEnd = firstEnd + fixtures::pmrEntryBytes(entries[1]).size();
    for (qsizetype cut = firstEnd + 1; cut < secondEnd; cut += 7)
        cases.append({QString("cut at %1").arg(cut), whole.left(cut), 1});
    cases.append({"cut before the last byte", whole.left(secondEnd - 1), 1});
    cases.append({"cut right after the entry", whole.left(secondEnd), 2});

    // UID size 2: 8 + 2 + name + 2 + project + 8 + 4 bytes.
    auto sized = [](int nameLength) {
        return fixtures::makePmrEntry(7, QString(nameLength, 'n'), QString());
    };
    ASSERT_EQ(fixtures::pmrEntryBytes(sized(5), 2).size(), 29);
    cases.append({"29 bytes then 28", fixtures::writePmr({sized(5), sized(4)}, 2), 1});
    cases.append({"29 bytes alone", fixtures::writePmr({sized(5)}, 2), 1});

    // Eight bytes after the refused name length, the name holds a valid entry:
    // name length 3, "abc", no project, identifier, trailer.
    const char hidden[] =
        "xxxxxx\x03\x00"
        "abc\x00\x00"
        "12345678TRLR";
    entries[1].name = QString::fromLatin1(hidden, sizeof hidden - 1);
    entries[1].nameLength = 0;
    cases.append({"an entry inside a refused one", fixtures::writePmr(entries, 2), 1});

    for (const auto& [what, bytes, count] : cases) {
        SCOPED_TRACE(what.toStdString());
        PMRFile pmr;
        ASSERT_TRUE(pmr.dataWithBytes(bytes));
        EXPECT_EQ(readAll(pmr), count);
    }
}

// Bytes whose header is not taken give no entries; a header claiming none is
// taken; 30 bytes are a header with no room for an entry.
TEST(PMRFile, UnreadableFilesGiveNoEntries) {
    const QByteArray good = fixtures::writePmr(threeEntries());
    fixtures::PmrOptions wrongMagic, noCount;
    wrongMagic.magic = 1962;
    noCount.count = 0;
    const std::tuple<const char*, QByteArray, bool> cases[] = {
        // what, bytes, header taken
        {"29 bytes", good.left(29), false},
        {"wrong magic", fixtures::writePmr(threeEntries(), wrongMagic), false},
        {"magic in neither byte order", QByteArray::fromHex("07a90000") + good.mid(4), false},
        {"no entries claimed", fixtures::writePmr(threeEntries(), noCount), true},
    };
    for (const auto& [what, bytes, taken] : cases) {
        SCOPED_TRACE(what);
        PMRFile pmr;
        EXPECT_EQ(pmr.dataWithBytes(bytes), taken);
        EXPECT_EQ(pmr.ItemsCount(), 0u);
        EXPECT_FALSE(pmr.FillItem(std::make_shared<TarnDatabaseItem>()));
    }
    QTemporaryDir dir;
    for (const QString& path : {dir.path(), dir.filePath("missing.pmr")})
        EXPECT_FALSE(PMRFile().dataWithContentsOfURL(path)) << path.toStdString();

    PMRFile thirty;
    EXPECT_TRUE(thirty.dataWithBytes(good.left(30)));
    EXPECT_EQ(thirty.ItemsCount(), 3u);
    EXPECT_FALSE(thirty.FillItem(nullptr));
    EXPECT_EQ(readAll(thirty), 0);
}

}  // namespace
