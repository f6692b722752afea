#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <QtEndian>

#include "AvbWriter.h"
#include "FixtureFiles.h"
#include "TestSupport.h"
#include "readers/AVBFile.h"

namespace {

// `bytes` cut or padded with zeros to `size`, with a reference record
// written `fromEnd` bytes before the end (none for 0).
QByteArray padded(QByteArray bytes, qsizetype size, qsizetype fromEnd = 0) {
    bytes = bytes.leftJustified(size, '\0', true);
    const QByteArray record = fixtures::avbReferenceRecord({0x99});
    return fromEnd ? bytes.replace(size - fromEnd, record.size(), record) : bytes;
}

// A bin starts with its 12-byte header and holds at least 119 bytes; opening
// one from disk is logged.
TEST(AVBFile, TheHeaderAndSizeDecideWhatIsABin) {
    QByteArray wrongFirst = padded(fixtures::avbHeader(), 400), wrongTag = wrongFirst;
    wrongFirst[0] = 0x07;
    wrongTag[11] = 'X';
    for (const QByteArray& bytes : {padded(fixtures::avbHeader(), 118), wrongFirst, wrongTag})
        EXPECT_FALSE(AVBFile().dataWithBytes(bytes)) << bytes.size();

    QTemporaryDir dir;
    const QString path = dir.filePath("Reel 1.avb");
    ASSERT_TRUE(fixtures::writeFile(path, padded(fixtures::avbHeader(), 119)));
    testsupport::LogCapture log;
    AVBFile bin;
    EXPECT_TRUE(bin.dataWithContentsOfURL(path));
    EXPECT_TRUE(log.contains("Opened avid BIN " + path));
    EXPECT_TRUE(bin.getUIDS().isEmpty());
    EXPECT_FALSE(AVBFile().dataWithContentsOfURL(dir.filePath("missing.avb")));
    EXPECT_EQ(log.text().count('\n'), 1);
}

// Every media reference gives one item, once per identifier, carrying only the
// short identifier (bytes 16..23). References are found by their pattern,
// whatever the chunks around them say, but not in a short bin or in the last
// 32 bytes.
TEST(AVBFile, FindsEachReferencedFileOfTheMediaKindOnce) {
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
         fixtures::writeBinReferences(
             QList<fixtures::AvbReference>{{1, 0x0203}, {2, 0x0202}, {3, 0x0102}}),
         {2}},
        {"after a wrong chunk length", wrongChunk, {5}},
        {"at 119 in 151 bytes", padded(fixtures::avbHeader(), 151, 32), {}},
        {"at 119 in 152 bytes", padded(fixtures::avbHeader(), 152, 33), {0x99}},
        {"33 bytes before the end", padded(one, one.size() + 100, 33), {1, 0x99}},
        {"32 bytes before the end", padded(one, one.size() + 100, 32), {1}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.label);
        AVBFile bin;
        ASSERT_TRUE(bin.dataWithBytes(c.bytes));
        QList<quint64> uids;
        for (const auto& item : bin.getUIDS()) {
            uids.append(item->shortFileUID());
            const QByteArray whole(reinterpret_cast<const char*>(item->filePackageUID), 32);
            EXPECT_EQ(whole.left(16) + whole.mid(24), QByteArray(24, '\0'));
            EXPECT_TRUE(item->DB_itemPath.isNull() && !item->DB_isAMA);
        }
        EXPECT_EQ(uids, c.uids);
    }
}

// The chunk dump goes to the log and gives nothing; a length running past the
// end of the bin ends it.
TEST(AVBFile, TheChunkDumpGoesToTheLogAndStopsAtALengthPastTheEnd) {
    fixtures::AvbOptions options;
    options.binName = "Dailies Day 3";
    const QByteArray whole = fixtures::writeBin({1, 2, 3}, options);
    QByteArray bytes = whole + fixtures::avbChunk(fixtures::avbNameChunk("ELIF", "cut"));
    bytes[bytes.size() - 4] = char(0x7f);   // the ELIF text length now runs far past the end
    bytes[bytes.size() - 11] = char(0x7f);  // and so does its body length
    AVBFile bin;
    ASSERT_TRUE(bin.dataWithBytes(bytes));
    testsupport::LogCapture log;
    EXPECT_TRUE(bin.getAMAUIDS().isEmpty());
    const QString text = log.text();
    // The creator text is read from its length field on, as the bin stores it.
    EXPECT_TRUE(text.contains(":: <00000008 :: DJBO, len 0x6f> created with \""));
    EXPECT_TRUE(text.contains("Media Compos\"\n"));
    // The name chunks come first at 119; the "ELIF" body is 2 + 2 + 17 bytes.
    EXPECT_TRUE(
        text.contains("<00000077 :: ELIF, len 00000015> b+8 = 01 b+9 = 00\n"
                      "-1-> Dailies Day 3.avb\n"
                      "<00000094 :: FNIW, len 00000011> b+8 = 01 b+9 = 00\n"
                      "-1-> Dailies Day 3\n"));
    EXPECT_TRUE(text.contains("-1-> cut\n"));
    // The walk ends where the damaged chunk claims to end.
    const quint32 claimed = qFromLittleEndian<quint32>(bytes.constData() + whole.size() + 4);
    EXPECT_TRUE(text.contains(
        QString(":: <%1 :: Bin EOF\n").arg(whole.size() + 8 + claimed, 8, 16, QChar('0'))));
    EXPECT_EQ(text.count("-1->"), 3) << "only named chunks are described";
}

// The older scan also marks linked media: an "AMA " folder name after a
// reference (Mac Cyrillic) is logged and makes the item linked.
TEST(AVBFile, TheOlderScanMarksLinkedMedia) {
    // "AMA Фото" in Mac Cyrillic: Ф 94, о EE, т F2.
    const QByteArray folder = QByteArray("AMA ") + QByteArray::fromHex("94eef2ee");
    const QList<fixtures::AvbReference> references = {
        {0x1122334455667788ull, 0x0202, QString(), folder},
        {0x0a, 0x0202, QStringLiteral("Avid MediaFiles")},
    };
    AVBFile bin;
    ASSERT_TRUE(bin.dataWithBytes(fixtures::writeBinReferences(references)));
    testsupport::LogCapture log;
    const auto items = bin.getAMAUIDSold();
    ASSERT_EQ(items.size(), 2);
    EXPECT_EQ(items[0]->shortFileUID(), 0x1122334455667788ull);
    EXPECT_TRUE(items[0]->DB_isAMA && !items[1]->DB_isAMA);
    const QString text = log.text();
    EXPECT_EQ(text.count(QStringLiteral(":: foundAMA Folder:: AMA Фото\n")), 1) << qPrintable(text);
    EXPECT_TRUE(text.contains(QStringLiteral(":: 55667788 11223344 Found at pos ")));
    EXPECT_EQ(text.count(QStringLiteral("Found at pos")), 2);
}

}  // namespace
