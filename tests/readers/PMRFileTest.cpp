#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QtEndian>

#include <functional>
#include <tuple>

#include "FixtureFiles.h"
#include "PmrWriter.h"
#include "Umid.h"
#include "readers/PMRFile.h"

using fixtures::PmrEntry;

namespace {

class PMRFileTest : public ::testing::Test {
  protected:
    QString write(const QByteArray& bytes, const QString& name = QStringLiteral("msmFMID.pmr")) {
        const QString path = dir.filePath(name);
        EXPECT_TRUE(fixtures::writeFile(path, bytes));
        return path;
    }

    // Reads every entry until the reader refuses one.
    static QList<TarnItemPtr> readAll(PMRFile& pmr) {
        QList<TarnItemPtr> items;
        while (auto item = pmr.FillItem(std::make_shared<TarnDatabaseItem>())) items.append(item);
        return items;
    }

    static QList<PmrEntry> threeEntries() {
        return {fixtures::makePmrEntry(0x1111, QStringLiteral("A001C001_V01.mxf"),
                                       QStringLiteral("Feature")),
                fixtures::makePmrEntry(0x2222, QStringLiteral("A001C001_A01.mxf"),
                                       QStringLiteral("Feature")),
                fixtures::makePmrEntry(0x3333, QStringLiteral("title.mxf"), QString())};
    }

    static QByteArray uid(const TarnDatabaseItem& item, bool material = false) {
        return QByteArray(
            reinterpret_cast<const char*>(material ? item.materialPackageUID : item.filePackageUID),
            32);
    }

    QTemporaryDir dir;
};

// Both byte orders and both identifier sizes: the caller's item is filled with
// every entry's name, project and identifiers (copied as stored; short ones in
// bytes 16..23), and the kept copy carries the lengths in native order.
TEST_F(PMRFileTest, ReadsEveryEntryInBothByteOrdersAndIdentifierSizes) {
    const auto entries = threeEntries();
    for (quint32 uidSize : {8u, 2u}) {
        for (bool bigEndian : {false, true}) {
            SCOPED_TRACE(::testing::Message() << uidSize << (bigEndian ? " MM" : " II"));
            const QByteArray bytes = fixtures::writePmr(entries, uidSize, bigEndian);
            PMRFile pmr;
            ASSERT_TRUE(pmr.dataWithContentsOfURL(write(bytes)));
            EXPECT_EQ(pmr.ItemsCount(), 3u);
            EXPECT_EQ(pmr.UUIDlength(), uidSize);
            EXPECT_EQ(pmr.usebyteswap(), bigEndian);
            quint32 expectedPosition = 12;
            for (const PmrEntry& entry : entries) {
                auto given = std::make_shared<TarnDatabaseItem>();
                auto item = pmr.FillItem(given);
                ASSERT_EQ(item.get(), given.get());
                expectedPosition += quint32(fixtures::pmrEntryBytes(entry, uidSize).size());
                EXPECT_EQ(pmr.position(), expectedPosition);
                EXPECT_EQ(item->DB_ClipName, entry.name);
                EXPECT_EQ(item->DB_ProjectName.isNull(), entry.project.isEmpty());
                EXPECT_EQ(item->DB_ProjectName, entry.project);
                EXPECT_EQ(item->DB_SizeofUID, uidSize);
                if (uidSize == 8) {
                    EXPECT_EQ(uid(*item), entry.fileUID);
                    EXPECT_EQ(uid(*item, true), entry.materialUID);
                } else {
                    EXPECT_EQ(item->shortFileUID(), fixtures::shortUidOf(entry.fileUID));
                    EXPECT_EQ(uid(*item).left(16) + uid(*item).mid(24), QByteArray(24, '\0'));
                    EXPECT_EQ(uid(*item, true).mid(16, 8), entry.materialUID.mid(16, 8));
                }
                EXPECT_TRUE(item->DB_isReferenced);
            }
            EXPECT_FALSE(pmr.FillItem(std::make_shared<TarnDatabaseItem>()));
        }
    }
}

TEST_F(PMRFileTest, OtherUidSizesGiveEntriesWithoutIdentifiers) {
    PmrEntry entry = fixtures::makePmrEntry(1, QStringLiteral("clip.mxf"), QStringLiteral("P"));
    PMRFile pmr;
    ASSERT_TRUE(pmr.dataWithContentsOfURL(write(fixtures::writePmr({entry, entry}, 4))));
    // No identifier bytes: 2 + 8 + 2 + 1 + 4 bytes per entry; the item ignores them.
    auto item = pmr.FillItem(std::make_shared<TarnDatabaseItem>());
    ASSERT_TRUE(item);
    EXPECT_EQ(pmr.position(), 12u + 17u);
    EXPECT_TRUE(item->DB_ClipName.isNull());
    EXPECT_EQ(item->DB_SizeofUID, 0u);
}

// Each kind of damage in the second of three entries: the first entry is read,
// the second and everything after it are not, and the header still claims 3.
TEST_F(PMRFileTest, ADamagedEntryEndsTheReadingForGood) {
    struct Damage {
        const char* what;
        std::function<void(PmrEntry&)> apply;
    };
    const QList<Damage> damages = {
        {"name length 0", [](PmrEntry& e) { e.nameLength = 0; }},
        {"name length 256", [](PmrEntry& e) { e.nameLength = 256; }},
        {"project length 65", [](PmrEntry& e) { e.projectLength = 65; }},
        {"name running past the end", [](PmrEntry& e) { e.nameLength = 60000; }},
    };
    for (quint32 uidSize : {8u, 2u}) {
        for (bool bigEndian : {false, true}) {
            for (const Damage& damage : damages) {
                SCOPED_TRACE(damage.what);
                auto entries = threeEntries();
                damage.apply(entries[1]);
                PMRFile pmr;
                ASSERT_TRUE(pmr.dataWithContentsOfURL(
                    write(fixtures::writePmr(entries, uidSize, bigEndian))));
                EXPECT_EQ(pmr.ItemsCount(), 3u);
                auto first = pmr.FillItem(std::make_shared<TarnDatabaseItem>());
                ASSERT_TRUE(first);
                EXPECT_EQ(first->DB_ClipName, entries[0].name);
                EXPECT_FALSE(pmr.FillItem(std::make_shared<TarnDatabaseItem>()));
                const quint32 stoppedAt = pmr.position();
                EXPECT_GT(stoppedAt,
                          quint32(12 + fixtures::pmrEntryBytes(entries[0], uidSize).size()))
                    << "the reader moved into the damaged entry";
                for (int again = 0; again < 3; ++again)
                    EXPECT_FALSE(pmr.FillItem(std::make_shared<TarnDatabaseItem>()));
                EXPECT_EQ(pmr.position(), stoppedAt);
            }
        }
    }
}

// The reading stops for good at the first entry it refuses: one cut by the end
// of the file, one with fewer than 29 bytes left at its start (even though it
// would fit), one whose refused name holds bytes that would pass for an entry
// (the reader stands inside it, but never reads them).
TEST_F(PMRFileTest, ReadingStopsForGoodAtTheFirstRefusedEntry) {
    auto entries = threeEntries();
    const QByteArray whole = fixtures::writePmr(entries);
    const qsizetype firstEnd = 12 + fixtures::pmrEntryBytes(entries[0]).size();
    const qsizetype secondEnd = firstEnd + fixtures::pmrEntryBytes(entries[1]).size();
    QList<std::tuple<QString, QByteArray, int>> cases;  // what, file, entries read
    for (qsizetype cut = firstEnd + 1; cut < secondEnd; cut += 7)
        cases.append({QStringLiteral("cut at %1").arg(cut), whole.left(cut), 1});
    cases.append({"cut before the last byte", whole.left(secondEnd - 1), 1});
    cases.append({"cut right after the entry", whole.left(secondEnd), 2});

    // UID size 2: 8 + 2 + name + 2 + project + 8 + 4 bytes.
    auto sized = [](int nameLength) {
        PmrEntry e;
        e.fileUID = fixtures::makeShortUid(7);
        e.materialUID = fixtures::makeShortUid(8);
        e.name = QString(nameLength, QLatin1Char('n'));
        return e;
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
        ASSERT_TRUE(pmr.dataWithContentsOfURL(write(bytes)));
        EXPECT_EQ(readAll(pmr).size(), count);
        EXPECT_FALSE(pmr.FillItem(std::make_shared<TarnDatabaseItem>()));
    }
}

TEST_F(PMRFileTest, UnreadableFilesGiveNoEntries) {
    const QByteArray good = fixtures::writePmr(threeEntries());
    fixtures::PmrOptions wrongMagic;
    wrongMagic.magic = 1962;
    fixtures::PmrOptions noCount;
    noCount.count = 0;
    QByteArray swappedHalves = good;
    swappedHalves.replace(0, 4, QByteArray::fromHex("07a90000"));

    const QList<QPair<const char*, QString>> cases = {
        {"29 bytes", write(good.left(29), "short.pmr")},
        {"wrong magic", write(fixtures::writePmr(threeEntries(), wrongMagic), "magic.pmr")},
        {"magic in neither byte order", write(swappedHalves, "halves.pmr")},
        {"missing", dir.filePath(QStringLiteral("nothing.pmr"))},
        {"a folder", dir.path()},
        {"no entries claimed", write(fixtures::writePmr(threeEntries(), noCount), "none.pmr")},
    };
    for (const auto& [what, path] : cases) {
        SCOPED_TRACE(what);
        PMRFile pmr;
        EXPECT_EQ(pmr.dataWithContentsOfURL(path), std::strcmp(what, "no entries claimed") == 0);
        EXPECT_EQ(pmr.ItemsCount(), 0u);
        EXPECT_FALSE(pmr.FillItem(std::make_shared<TarnDatabaseItem>()));
    }

    PMRFile thirty;
    EXPECT_TRUE(thirty.dataWithContentsOfURL(write(good.left(30))));
    EXPECT_EQ(thirty.ItemsCount(), 3u);
    EXPECT_FALSE(thirty.FillItem(std::make_shared<TarnDatabaseItem>()));
    EXPECT_FALSE(thirty.FillItem(nullptr));
}

}  // namespace
