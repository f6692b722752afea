#include <gtest/gtest.h>

#include <QBuffer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTimeZone>

#include <cstring>

#include "items/TarnDatabaseItem.h"
#include "report/TarnJsonReport.h"
#include "report/TarnJsonWriter.h"
#include "report/TarnReportSink.h"

namespace {

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

}  // namespace

// Values the scan tests do not reach: a missing path, clip name and size are
// null, as are an unset code, date, identifier and rates.
TEST(JsonReport, ItemValuesAndNulls) {
    TarnDatabaseItem item;
    item.DB_SizeofUID = 2;
    std::memcpy(item.filePackageUID + 16, "\xaa\xbb\xcc\xdd\x00\x00\x00\x01", 8);
    std::memcpy(item.CompressionFourCC, "_AUD", 4);
    item.setSampleRateNumerator(48000, 1);
    item.setFrameRateNumerator(25, 1);
    item.DB_usageCode = 1;
    item.DB_Date = QDateTime(QDate(2024, 1, 31), QTime(9, 45, 2), QTimeZone::utc());
    const QJsonObject facts{{"file_package_uid", "aabbccdd00000001"},
                            {"material_package_uid", "0000000000000000"},
                            {"project", "_00_TRN_NULL_PROJECT_NAME"},
                            {"path", QJsonValue::Null},
                            {"clip_name", QJsonValue::Null},
                            {"size", QJsonValue::Null},
                            {"fourcc", "_AUD"},
                            {"kind", "PRECOMP"},
                            {"sample_rate", QJsonArray{48000, 1}},
                            {"sample_rate_text", "48 kHz"},
                            {"frame_rate_text", "25fps"},
                            {"date", "2024-01-31T09:45:02Z"},
                            {"hash", "dcccbbaa"}};
    EXPECT_EQ(membersOf(item, facts), facts);
    const QJsonObject bare{{"fourcc", QJsonValue::Null},
                           {"date", QJsonValue::Null},
                           {"file_package_uid", QJsonValue::Null},
                           {"frame_rate_text", QJsonValue::Null},
                           {"sample_rate_text", QJsonValue::Null}};
    EXPECT_EQ(membersOf(TarnDatabaseItem(), bare), bare);
}
