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

// What `write` puts into a JSON document, parsed back.
template <typename Write>
QJsonDocument written(Write write) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        TarnReportSink sink(&buffer);
        TarnJsonWriter json(sink);
        write(json);
    }
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(buffer.data(), &error);
    EXPECT_EQ(error.error, QJsonParseError::NoError) << buffer.data().toStdString();
    return document;
}

QJsonObject itemObject(const TarnDatabaseItem& item) {
    return written([&](TarnJsonWriter& json) { TarnJsonReport::writeItem(json, item); }).object();
}

}  // namespace

TEST(JsonReport, IdentifiersByUidSize) {
    quint8 uid[32];
    for (int i = 0; i < 32; ++i) uid[i] = quint8(i * 7);
    const QString full = TarnJsonReport::uidHex(uid, 8);
    EXPECT_EQ(full.size(), 64);
    EXPECT_TRUE(full.startsWith(QLatin1String("00070e15")));
    EXPECT_EQ(TarnJsonReport::uidHex(uid, 2), QStringLiteral("70777e858c939aa1"));
    EXPECT_TRUE(TarnJsonReport::uidHex(uid, 0).isNull());
    EXPECT_TRUE(TarnJsonReport::uidHex(uid, 4).isNull());
    EXPECT_TRUE(TarnJsonReport::uidHex(nullptr, 8).isNull());
}

TEST(JsonReport, ItemValuesAndNulls) {
    TarnDatabaseItem item;
    item.DB_ClipName = QStringLiteral("Pier_A01.mxf");
    item.DB_SizeofUID = 2;
    const quint8 shortId[8] = {0xaa, 0xbb, 0xcc, 0xdd, 0, 0, 0, 1};
    std::memcpy(item.filePackageUID + 16, shortId, 8);
    std::memcpy(item.CompressionFourCC, "_AUD", 4);
    item.DB_CompressionString = QStringLiteral("Audio");
    item.setSampleRateNumerator(48000, 1);
    item.setFrameRateNumerator(25, 1);
    item.DB_usageCode = 1;
    item.DB_Date = QDateTime(QDate(2024, 1, 31), QTime(9, 45, 2), QTimeZone::utc());

    const QJsonObject o = itemObject(item);
    EXPECT_EQ(o.size(), 26);
    EXPECT_EQ(o.value("file_package_uid").toString(), QStringLiteral("aabbccdd00000001"));
    EXPECT_EQ(o.value("material_package_uid").toString(), QStringLiteral("0000000000000000"));
    EXPECT_EQ(o.value("project").toString(), QStringLiteral("_00_TRN_NULL_PROJECT_NAME"));
    EXPECT_TRUE(o.value("path").isNull());
    EXPECT_TRUE(o.value("clip_name").isNull());
    EXPECT_TRUE(o.value("size").isNull());
    EXPECT_EQ(o.value("fourcc").toString(), QStringLiteral("_AUD"));
    EXPECT_EQ(o.value("kind").toString(), QStringLiteral("PRECOMP"));
    EXPECT_EQ(o.value("sample_rate").toArray(), (QJsonArray{48000, 1}));
    EXPECT_EQ(o.value("sample_rate_text").toString(), QStringLiteral("48 kHz"));
    EXPECT_EQ(o.value("frame_rate_text").toString(), QStringLiteral("25fps"));
    EXPECT_EQ(o.value("date").toString(), QStringLiteral("2024-01-31T09:45:02Z"));
    EXPECT_EQ(o.value("hash").toString(), QStringLiteral("dcccbbaa"));

    TarnDatabaseItem bare;
    const QJsonObject b = itemObject(bare);
    EXPECT_TRUE(b.value("fourcc").isNull());
    EXPECT_TRUE(b.value("date").isNull());
    EXPECT_TRUE(b.value("file_package_uid").isNull());
    EXPECT_TRUE(b.value("frame_rate_text").isNull());
    EXPECT_TRUE(b.value("sample_rate_text").isNull());
}

TEST(JsonReport, ProjectsAndSummary) {
    const QJsonArray both =
        written([](TarnJsonWriter& json) {
            json.beginArray();
            TarnJsonReport::writeProject(json, QStringLiteral("Harbour"), 3, 4096, false);
            TarnJsonReport::writeSummary(json, 10, 2, 3, 4096);
            json.endArray();
        }).array();
    ASSERT_EQ(both.size(), 2);
    const QJsonObject p = both.at(0).toObject();
    EXPECT_EQ(p.value("name").toString(), QStringLiteral("Harbour"));
    EXPECT_EQ(p.value("files").toInt(), 3);
    EXPECT_EQ(p.value("size").toInt(), 4096);
    EXPECT_FALSE(p.value("shown").toBool());
    const QJsonObject s = both.at(1).toObject();
    EXPECT_EQ(s.value("items_in_database").toInt(), 10);
    EXPECT_EQ(s.value("projects_count").toInt(), 2);
    EXPECT_EQ(s.value("filtered_items").toInt(), 3);
    EXPECT_EQ(s.value("filtered_size").toInt(), 4096);
}
