#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <algorithm>

#include "AvbWriter.h"
#include "FixtureFiles.h"
#include "TestSupport.h"
#include "Umid.h"
#include "readers/AVBFile.h"

using fixtures::AvbReference;

namespace {

class AVBFileTest : public ::testing::Test {
  protected:
    QString write(const QByteArray& bytes) {
        const QString path = dir.filePath(QStringLiteral("bin%1.avb").arg(++files));
        EXPECT_TRUE(fixtures::writeFile(path, bytes));
        return path;
    }

    static QList<quint64> shortUIDs(const QList<TarnItemPtr>& items) {
        QList<quint64> out;
        for (const auto& item : items) out.append(item->shortFileUID());
        return out;
    }

    // A header-only bin padded with zeros to `size` bytes.
    static QByteArray paddedHeader(qsizetype size) {
        QByteArray bytes = fixtures::avbHeader();
        bytes.append(QByteArray(size - bytes.size(), '\0'));
        return bytes.left(size);
    }

    QTemporaryDir dir;
    int files = 0;
};

TEST_F(AVBFileTest, TheHeaderAndSizeDecideWhatIsABin) {
    QByteArray wrongFirst = paddedHeader(400), wrongTag = paddedHeader(400);
    wrongFirst[0] = 0x07;
    wrongTag[11] = 'X';
    const std::pair<QString, bool> cases[] = {
        {write(paddedHeader(118)), false},    {write(paddedHeader(119)), true},
        {write(wrongFirst), false},           {write(wrongTag), false},
        {dir.filePath("missing.avb"), false},
    };
    for (const auto& [path, taken] : cases) {
        SCOPED_TRACE(path.toStdString());
        testsupport::LogCapture log;
        AVBFile bin;
        EXPECT_EQ(bin.dataWithContentsOfURL(path), taken);
        EXPECT_EQ(log.contains(QStringLiteral("Opened avid BIN %1").arg(path)), taken);
        EXPECT_TRUE(bin.getUIDS().isEmpty());
    }
}

// `bytes` padded with zeros to `size`, a reference record written `fromEnd`
// bytes before the end.
QByteArray withRecord(QByteArray bytes, qsizetype size, qsizetype fromEnd) {
    bytes.append(QByteArray(size - bytes.size(), '\0'));
    const QByteArray record = fixtures::avbReferenceRecord({0x99});
    return bytes.replace(size - fromEnd, record.size(), record);
}

// Every media reference gives one item, once per identifier, carrying only the
// short identifier (bytes 16..23). References are found by their pattern,
// whatever the chunks around them say, but not in a short bin or in the last
// 32 bytes.
TEST_F(AVBFileTest, FindsEachReferencedFileOfTheMediaKindOnce) {
    const quint64 a = 0x0000000100000002ull, b = 0x0000000200000001ull;  // the same hash
    fixtures::AvbOptions junk;
    junk.leadingChunks = {{"JUNK", QByteArray(3, 'x')}};
    QByteArray wrongChunk = fixtures::writeBin({5}, junk);
    wrongChunk[wrongChunk.indexOf("JUNK") + 4] = char(0xff);  // a chunk length that is wrong
    const QByteArray one = fixtures::writeBin({1}, fixtures::AvbOptions{.tail = false});
    const struct {
        const char* label;
        QByteArray bytes;
        QList<quint64> uids;
    } cases[] = {
        {"three",
         fixtures::writeBin({0x0123456789abcdefull, 42, 0xfeedface00c0ffeeull}),
         {0x0123456789abcdefull, 42, 0xfeedface00c0ffeeull}},
        {"repeated", fixtures::writeBin({7, 9, 7, 7, 9, 11}), {7, 9, 11}},
        {"same hash", fixtures::writeBin({a, b, a}), {a, b}},
        {"other kinds",
         fixtures::writeBinReferences(QList<AvbReference>{{1, 0x0203}, {2, 0x0202}, {3, 0x0102}}),
         {2}},
        {"after a wrong chunk length", wrongChunk, {5}},
        {"at 119 in 151 bytes", withRecord(fixtures::avbHeader(), 151, 32), {}},
        {"at 119 in 152 bytes", withRecord(fixtures::avbHeader(), 152, 33), {0x99}},
        {"33 bytes before the end", withRecord(one, one.size() + 100, 33), {1, 0x99}},
        {"32 bytes before the end", withRecord(one, one.size() + 100, 32), {1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        AVBFile bin;
        ASSERT_TRUE(bin.dataWithContentsOfURL(write(c.bytes)));
        const auto items = bin.getUIDS();
        EXPECT_EQ(shortUIDs(items), c.uids);
        for (const auto& item : items) {
            const QByteArray whole(reinterpret_cast<const char*>(item->filePackageUID), 32);
            EXPECT_EQ(whole.left(16) + whole.mid(24), QByteArray(24, '\0'));
            EXPECT_TRUE(item->DB_itemPath.isNull());
            EXPECT_FALSE(item->DB_isAMA);
        }
    }
}

TEST_F(AVBFileTest, TheChunkDumpGoesToTheLogAndGivesNothing) {
    fixtures::AvbOptions options;
    options.binName = QStringLiteral("Dailies Day 3");
    const QByteArray bytes = fixtures::writeBin({1, 2, 3}, options);
    AVBFile bin;
    ASSERT_TRUE(bin.dataWithContentsOfURL(write(bytes)));
    testsupport::LogCapture log;
    EXPECT_TRUE(bin.getAMAUIDS().isEmpty());
    const QString text = log.text();
    // The creator text is read from its length field on, as the bin stores it.
    EXPECT_TRUE(text.contains(QStringLiteral(":: <00000008 :: DJBO, len 0x6f> created with \"")));
    EXPECT_TRUE(text.contains(QStringLiteral("Media Compos\"\n")));
    // The name chunks come first at 119; the "ELIF" body is 2 + 2 + 17 bytes.
    EXPECT_TRUE(
        text.contains(QStringLiteral("<00000077 :: ELIF, len 00000015> b+8 = 01 b+9 = 00\n"
                                     "-1-> Dailies Day 3.avb\n"
                                     "<00000094 :: FNIW, len 00000011> b+8 = 01 b+9 = 00\n"
                                     "-1-> Dailies Day 3\n")));
    EXPECT_TRUE(text.contains(
        QStringLiteral(":: <%1 :: Bin EOF\n").arg(bytes.size(), 8, 16, QLatin1Char('0'))));
    EXPECT_EQ(text.count(QStringLiteral("-1->")), 2) << "only named chunks are described";
}

TEST_F(AVBFileTest, TheChunkDumpStopsAtALengthPastTheEnd) {
    QByteArray bytes = fixtures::writeBin({1});
    bytes.append(fixtures::avbChunk(fixtures::avbNameChunk("ELIF", QStringLiteral("cut"))));
    bytes[bytes.size() - 4] = char(0x7f);   // the ELIF text length now runs far past the end
    bytes[bytes.size() - 11] = char(0x7f);  // and so does its body length
    AVBFile bin;
    ASSERT_TRUE(bin.dataWithContentsOfURL(write(bytes)));
    testsupport::LogCapture log;
    EXPECT_TRUE(bin.getAMAUIDS().isEmpty());
    EXPECT_TRUE(log.contains(QStringLiteral("-1-> cut\n")));
    EXPECT_TRUE(log.contains(QStringLiteral(" :: Bin EOF\n")));
}

TEST_F(AVBFileTest, TheOlderScanMarksLinkedMediaAndLogsEveryHit) {
    // "AMA Фото" in Mac Cyrillic: Ф 94, о EE, т F2.
    const QByteArray folder = QByteArray("AMA ") + QByteArray::fromHex("94eef2ee");
    const QList<AvbReference> references = {
        {0x1122334455667788ull, 0x0202, QString(), folder},
        {0x0a, 0x0202, QStringLiteral("Avid MediaFiles")},
        {0x0b, 0x0203, QStringLiteral("AMA ignored")},
    };
    AVBFile bin;
    ASSERT_TRUE(bin.dataWithContentsOfURL(write(fixtures::writeBinReferences(references))));
    testsupport::LogCapture log;
    const auto items = bin.getAMAUIDSold();
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[0]->shortFileUID(), 0x1122334455667788ull);
    EXPECT_TRUE(items[0]->DB_isAMA);
    EXPECT_FALSE(items[1]->DB_isAMA);
    const QString text = log.text();
    EXPECT_TRUE(text.contains(QStringLiteral(":: foundAMA Folder:: AMA Фото\n")))
        << qPrintable(text);
    EXPECT_EQ(text.count(QStringLiteral("foundAMA Folder::")), 1);
    EXPECT_TRUE(text.contains(QStringLiteral(":: 55667788 11223344 Found at pos ")));
    EXPECT_TRUE(text.contains(QStringLiteral(":: 0000000a 00000000 Found at pos ")));
    EXPECT_EQ(text.count(QStringLiteral("Found at pos")), 2);
}

}  // namespace
