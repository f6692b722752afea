// Reports are written as they are made, through a buffer of fixed size. These
// check that a report of many rows, whose texts cross the buffer's boundaries
// and which goes to a device that takes a few bytes at a time, has the bytes
// of the same report built whole; and the values of one item's JSON.
#include <gtest/gtest.h>

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <memory>

#include "database/TarnCore.h"
#include "database/TarnFilter.h"
#include "items/TarnDatabaseItem.h"
#include "report/TarnColumns.h"
#include "report/TarnExport.h"
#include "report/TarnItemRows.h"
#include "report/TarnJsonReport.h"
#include "report/TarnJsonWriter.h"
#include "report/TarnReportSink.h"

namespace {

QString units(std::initializer_list<char16_t> codes) {
    QString text;
    for (char16_t c : codes) text.append(QChar(c));
    return text;
}

// Texts the formats must escape or encode: quotes, separators, control
// characters, markup, characters of two, three and four UTF-8 bytes, and
// surrogates without their partner (which UTF-8 cannot hold).
const QList<QString> kTexts = {
    QString(),
    QStringLiteral(""),
    QStringLiteral("A001C002_V01.mxf"),
    QStringLiteral("say \"hi\"; now, then \\ back"),
    QStringLiteral("line one\nline two\r\ttab\b\f"),
    units({0x01, 0x1f, 0x7f, 0x00, u'x'}),
    QStringLiteral("Tom & Jerry <x> it's"),
    QStringLiteral("Café été Ñandú"),
    QStringLiteral("東京 素材 クリップ"),
    QStringLiteral("clip 🎬 take 2"),
    units({u'a', 0xD800, u'b'}),
    units({0xDC00, u'c'}),
    units({u'e', 0xD83C}),
    units({0xD800, 0x00E9, 0xDC00, 0xD83C, 0xDFAC, 0xDBFF}),
};

// An item's JSON object, parsed back; only the members named in `expected`.
QJsonObject membersOf(const TarnDatabaseItem& item, const QJsonObject& expected) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        TarnReportSink sink(&buffer);
        TarnJsonWriter json(sink);
        TarnJsonReport::writeItem(json, item);
    }
    const QJsonObject written = QJsonDocument::fromJson(buffer.data()).object();
    EXPECT_EQ(written.size(), 26) << buffer.data().toStdString();
    QJsonObject picked;
    for (auto it = expected.begin(); it != expected.end(); ++it)
        picked.insert(it.key(), written.value(it.key()));
    return picked;
}

QString textAt(int i) {
    return kTexts.at(i % kTexts.size());
}

// Takes at most seven bytes per write, as a pipe or a socket may; or, when
// full, refuses every write, as a full disk does.
class TestDevice : public QIODevice {
  public:
    explicit TestDevice(bool full = false) : full_(full) { open(QIODevice::WriteOnly); }
    QByteArray bytes;

  protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char* data, qint64 length) override {
        if (full_) return -1;
        const qint64 n = std::min<qint64>(length, 7);
        bytes.append(data, n);
        return n;
    }

  private:
    bool full_;
};

// The streamed table formats and what closes each document.
struct Format {
    const char* name;
    std::function<bool(const TarnReportRows&, QIODevice*)> write;
    QString end;
};
const QList<Format> kFormats = {
    {"csv",
     [](const TarnReportRows& rows, QIODevice* device) {
         return TarnExport::writeCsv(rows, QStringLiteral(";"), device);
     },
     QString()},
    {"html", &TarnExport::writeHtml, QStringLiteral("</tbody></table></div></body></html>")},
};

// An item whose every field takes one of the awkward values in turn.
TarnItemPtr awkwardItem(int i) {
    auto item = std::make_shared<TarnDatabaseItem>();
    item->DB_ClipName = textAt(i) + QString::number(i);
    item->DB_NameInBin = textAt(i + 1);
    if (i % 4) item->DB_ProjectName = textAt(i / 4);
    item->DB_itemPath = QStringLiteral("/Volumes/Média/Avid MediaFiles/MXF/1/") + textAt(i + 2);
    item->DB_CompressionString = textAt(i + 3);
    item->DB_SizeofUID = (i % 3 == 0) ? 8 : (i % 3 == 1 ? 2 : 0);
    for (int b = 0; b < 32; ++b) {
        item->filePackageUID[b] = quint8(i * 31 + b);
        item->materialPackageUID[b] = quint8(i * 17 + b * 3);
    }
    // No code, a picture code, the audio code, a short code and odd bytes.
    std::memcpy(item->CompressionFourCC, &"\0\0\0\0AVdn_AUDAV\0\0\xe9\"\\\x01"[4 * (i % 5)], 4);
    if (i % 5) item->DB_filesize = quint64(i) * 1000003u * (i % 7 == 0 ? 1000000000u : 1u);
    item->DB_FileExists = i % 6 != 0;
    item->DB_isAMA = i % 11 == 0;
    item->DB_usageCode = (i % 9) - 3;
    item->DB_DIDResolutionID = quint32(i % 4 == 0 ? 1235 : i);
    item->DB_bits = quint32(i % 3) * 8;
    item->setFrameRateNumerator(quint32(i % 4 == 0 ? 2997 : 25), i % 5 == 0 ? 0 : 100);
    item->setSampleRateNumerator(48000, quint32(i % 2));
    // Dates at the ends of what ISO 8601 and Qt write, and one not in UTC.
    const QDateTime dates[] = {
        QDateTime(),
        QDateTime(QDate(2024, 1, 31), QTime(9, 45, 2), QTimeZone::utc()),
        QDateTime::fromMSecsSinceEpoch(-1, QTimeZone::utc()),
        QDateTime::fromMSecsSinceEpoch(951782400999, QTimeZone::utc()),  // 2000-02-29
        QDateTime(QDate(1900, 3, 1), QTime(0, 0, 0), QTimeZone::utc()),
        QDateTime(QDate(1, 1, 1), QTime(0, 0, 1), QTimeZone::utc()),
        QDateTime(QDate(-1, 12, 31), QTime(23, 59, 59), QTimeZone::utc()),
        QDateTime(QDate(9999, 12, 31), QTime(23, 59, 59, 999), QTimeZone::utc()),
        QDateTime(QDate(10000, 1, 1), QTime(0, 0), QTimeZone::utc()),
        QDateTime(QDate(2024, 3, 31), QTime(1, 30), QTimeZone(7200)),
        QDateTime(QDate(2024, 12, 31), QTime(23, 59, 59, 500), QTimeZone::utc()),
    };
    item->DB_Date = dates[i % std::size(dates)];
    return item;
}

}  // namespace

TEST(StreamedReport, SinkEncodesTextAsQtDoes) {
    QList<QString> texts = kTexts;
    QString all;
    for (const QString& text : kTexts) all += text;
    texts.append(all.repeated(40));  // well past the buffer
    for (const QString& text : texts) {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        {
            TarnReportSink sink(&buffer, 64);
            sink.appendText(text);
        }
        EXPECT_EQ(buffer.data(), text.toUtf8()) << text.toStdString();
    }
}

// An empty view and a large one of awkward items: Qt's own indented JSON of
// the same document, with the table's hash text and Qt's dates; a failing
// device fails the report.
TEST(StreamedReport, JsonReportHasTheBytesOfQtIndentedJson) {
    for (int count : {0, 1500}) {
        SCOPED_TRACE(count);
        TarnCore core;
        QList<TarnItemPtr> items;
        for (int i = 0; i < count; ++i) items.append(awkwardItem(i));
        core.AddItemsFromArray(items);
        core.LoadDefaults();
        ASSERT_EQ(core.getFilteredIndexesCount(), count);

        TestDevice device;
        ASSERT_TRUE(TarnJsonReport::write(core, &device));
        QJsonParseError error;
        const QJsonDocument parsed = QJsonDocument::fromJson(device.bytes, &error);
        ASSERT_EQ(error.error, QJsonParseError::NoError) << qPrintable(error.errorString());
        // Qt writes members in key order, four blanks per level, its own escapes.
        EXPECT_TRUE(parsed.toJson(QJsonDocument::Indented) == device.bytes);

        const QJsonArray rows = parsed.object().value(QStringLiteral("items")).toArray();
        ASSERT_EQ(rows.size(), count);
        for (qsizetype row = 0; row < rows.size(); ++row) {
            const TarnItemPtr item = core.ObjectAtIndexFiltered(row);
            const QJsonObject o = rows.at(row).toObject();
            ASSERT_EQ(o.value(QStringLiteral("path")).toString(), item->DB_itemPath);
            EXPECT_EQ(o.value(QStringLiteral("hash")).toString(),
                      TarnColumns::cellText(TarnColumn::Hash, *item));
            EXPECT_EQ(o.value(QStringLiteral("date")).toString(),
                      item->DB_Date.toUTC().toString(Qt::ISODate));
        }
        TestDevice full(true);
        EXPECT_FALSE(TarnJsonReport::write(core, &full));
    }
    TarnFilter::sharedFilter()->ResetFilter();
}

// Rows of the database are formatted on several threads and written through
// the buffer: the report is the header (or page head) of no rows, each row as
// a report of that row alone writes it, then the end. A failing device fails
// the report (and ends it).
TEST(StreamedReport, ItemRowsAreEachRowAsWrittenAlone) {
    QList<TarnItemPtr> items;
    for (int i = 0; i < 2100; ++i) items.append(awkwardItem(i));
    const TarnItemRows rows(items, QStringLiteral("Tarn"));
    for (const Format& format : kFormats) {
        SCOPED_TRACE(format.name);
        auto whole = [&](const QList<TarnItemPtr>& some) {
            QBuffer buffer;
            buffer.open(QIODevice::WriteOnly);
            format.write(TarnItemRows(some, QStringLiteral("Tarn")), &buffer);
            return buffer.data();
        };
        const QByteArray head = whole({}).chopped(format.end.size());
        QByteArray expected = head;
        for (const TarnItemPtr& item : items)
            expected += whole({item}).chopped(format.end.size()).mid(head.size());
        expected += format.end.toUtf8();

        TestDevice device, full(true);
        ASSERT_TRUE(format.write(rows, &device));
        EXPECT_GT(device.bytes.size(), 100000);
        EXPECT_TRUE(device.bytes == expected);
        EXPECT_FALSE(format.write(rows, &full));
    }

    TestDevice device, full(true);
    ASSERT_TRUE(TarnExport::writeJson(rows, &device));
    EXPECT_FALSE(TarnExport::writeJson(rows, &full));
    const QJsonDocument parsed = QJsonDocument::fromJson(device.bytes);
    EXPECT_TRUE(parsed.toJson(QJsonDocument::Indented) == device.bytes);
    EXPECT_EQ(parsed.object().value(QStringLiteral("rows")).toArray().size(), items.size());
}

// Values the scan tests do not reach: a missing path, clip name, size, code
// or identifier is null; the rate texts are the vocabulary's.
TEST(JsonReport, ItemValuesAndNulls) {
    TarnDatabaseItem item;
    item.setSampleRateNumerator(48000, 1);
    item.setFrameRateNumerator(25, 1);
    const QJsonObject facts{{"project", "_00_TRN_NULL_PROJECT_NAME"},
                            {"path", QJsonValue::Null},
                            {"clip_name", QJsonValue::Null},
                            {"size", QJsonValue::Null},
                            {"fourcc", QJsonValue::Null},
                            {"file_package_uid", QJsonValue::Null},
                            {"date", QJsonValue::Null},
                            {"sample_rate_text", "48 kHz"},
                            {"frame_rate_text", "25fps"}};
    EXPECT_EQ(membersOf(item, facts), facts);
    const QJsonObject noRates{{"frame_rate_text", QJsonValue::Null},
                              {"sample_rate_text", QJsonValue::Null}};
    EXPECT_EQ(membersOf(TarnDatabaseItem(), noRates), noRates);
}
