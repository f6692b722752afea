#include "report/TarnJsonReport.h"

#include <QByteArray>
#include <QJsonDocument>

#include "items/TarnDatabaseItem.h"
#include "report/TarnColumns.h"
#include "support/TarnFileName.h"

namespace {

QJsonValue textOrNull(const QString& text) {
    return text.isEmpty() ? QJsonValue(QJsonValue::Null) : QJsonValue(text);
}

QJsonArray rateArray(const TarnRate& rate) {
    return QJsonArray{qint64(rate.numerator), qint64(rate.denominator)};
}

// The four-character code as text, or null when the reader set none.
QJsonValue fourcc(const TarnDatabaseItem& item) {
    const char* code = item.DB_CompressionFourCC();
    if (code[0] == 0 && code[1] == 0 && code[2] == 0 && code[3] == 0) return QJsonValue::Null;
    return QString::fromLatin1(code, 4);
}

}  // namespace

QJsonValue TarnJsonReport::uidHex(const quint8* uid, quint32 uidSize) {
    if (!uid) return QJsonValue::Null;
    const char* bytes = reinterpret_cast<const char*>(uid);
    if (uidSize == 8) return QString::fromLatin1(QByteArray(bytes, 32).toHex());
    if (uidSize == 2) return QString::fromLatin1(QByteArray(bytes + 16, 8).toHex());
    return QJsonValue::Null;
}

QJsonObject TarnJsonReport::itemObject(const TarnDatabaseItem& item) {
    QJsonObject o;
    // Names as shown: a byte that is not UTF-8 becomes a replacement character.
    o.insert(QStringLiteral("path"), textOrNull(TarnFileName::displayText(item.DB_itemPath)));
    o.insert(QStringLiteral("file_name"), textOrNull(TarnFileName::displayText(item.DB_ClipName)));
    o.insert(QStringLiteral("clip_name"), textOrNull(item.DB_NameInBin));
    o.insert(QStringLiteral("project"), item.get_DB_ProjectName());
    o.insert(QStringLiteral("file_package_uid"),
             uidHex(item.DB_filePackageUID(), item.DB_SizeofUID));
    o.insert(QStringLiteral("material_package_uid"),
             uidHex(item.DB_materialPackageUID(), item.DB_SizeofUID));
    o.insert(QStringLiteral("uid_size"), qint64(item.DB_SizeofUID));
    o.insert(QStringLiteral("hash"), TarnColumns::cellText(TarnColumn::Hash, item));
    o.insert(QStringLiteral("size"), item.DB_filesize ? QJsonValue(qint64(*item.DB_filesize))
                                                      : QJsonValue(QJsonValue::Null));
    o.insert(QStringLiteral("exists"), bool(item.DB_FileExists));
    o.insert(QStringLiteral("valid"), bool(item.DB_isValid));
    o.insert(QStringLiteral("ama"), item.DB_isAMA);
    o.insert(QStringLiteral("referenced"), item.DB_isReferenced);
    o.insert(QStringLiteral("good_umid"), item.DB_isGoodUUID);
    o.insert(QStringLiteral("portable_name"), item.DB_isPortableFilename);
    o.insert(QStringLiteral("usage_code"), item.DB_usageCode);
    o.insert(QStringLiteral("kind"), TarnDatabaseItem::kindForUsageCode(item.DB_usageCode));
    o.insert(QStringLiteral("compression"), textOrNull(item.DB_CompressionString));
    o.insert(QStringLiteral("fourcc"), fourcc(item));
    o.insert(QStringLiteral("resolution_id"), qint64(item.DB_DIDResolutionID));
    o.insert(QStringLiteral("frame_rate"), rateArray(item.DB_framerate()));
    o.insert(QStringLiteral("sample_rate"), rateArray(item.DB_samplerate()));
    o.insert(QStringLiteral("bits"), qint64(item.DB_bits));
    o.insert(QStringLiteral("date"), item.DB_Date.isValid()
                                         ? QJsonValue(item.DB_Date.toUTC().toString(Qt::ISODate))
                                         : QJsonValue(QJsonValue::Null));
    o.insert(QStringLiteral("frame_rate_text"),
             textOrNull(TarnColumns::cellText(TarnColumn::Framerate, item)));
    o.insert(QStringLiteral("sample_rate_text"),
             textOrNull(TarnColumns::cellText(TarnColumn::Samplerate, item)));
    return o;
}

QJsonObject TarnJsonReport::projectObject(const QString& name, quint32 files, quint64 size,
                                          bool shown) {
    QJsonObject o;
    o.insert(QStringLiteral("name"), name);
    o.insert(QStringLiteral("files"), qint64(files));
    o.insert(QStringLiteral("size"), qint64(size));
    o.insert(QStringLiteral("shown"), shown);
    return o;
}

QJsonObject TarnJsonReport::summaryObject(quint64 itemsInDatabase, quint64 projectsCount,
                                          quint64 filteredItems, quint64 filteredSize) {
    QJsonObject o;
    o.insert(QStringLiteral("items_in_database"), qint64(itemsInDatabase));
    o.insert(QStringLiteral("projects_count"), qint64(projectsCount));
    o.insert(QStringLiteral("filtered_items"), qint64(filteredItems));
    o.insert(QStringLiteral("filtered_size"), qint64(filteredSize));
    return o;
}

QString TarnJsonReport::document(const QJsonArray& items, const QJsonArray& projects,
                                 const QJsonObject& summary) {
    QJsonObject root;
    root.insert(QStringLiteral("items"), items);
    root.insert(QStringLiteral("projects"), projects);
    root.insert(QStringLiteral("summary"), summary);
    return QString::fromUtf8(QJsonDocument(root).toJson(QJsonDocument::Indented));
}
