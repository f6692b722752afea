#include "report/TarnJsonReport.h"

#include "database/TarnCore.h"
#include "items/TarnDatabaseItem.h"
#include "report/TarnColumns.h"
#include "report/TarnJsonWriter.h"
#include "report/TarnReportSink.h"

namespace {

void rate(TarnJsonWriter& json, const TarnRate& value) {
    json.beginArray();
    json.number(qint64(value.numerator));
    json.number(qint64(value.denominator));
    json.endArray();
}

// The four-character code as text, or null when the reader set none.
void fourcc(TarnJsonWriter& json, const TarnDatabaseItem& item) {
    const char* code = item.DB_CompressionFourCC();
    if (code[0] == 0 && code[1] == 0 && code[2] == 0 && code[3] == 0) {
        json.null();
    } else {
        json.string(QString::fromLatin1(code, 4));
    }
}

// Lowercase hex of the identifier's bytes into `text` (64 digits at most);
// the digit count, 0 when the size names no identifier.
int hexOfUid(const quint8* uid, quint32 uidSize, char* text) {
    static const char digits[] = "0123456789abcdef";
    if (!uid || (uidSize != 8 && uidSize != 2)) return 0;
    const int first = uidSize == 8 ? 0 : 16;
    const int count = uidSize == 8 ? 32 : 8;
    for (int i = 0; i < count; ++i) {
        text[2 * i] = digits[uid[first + i] >> 4];
        text[2 * i + 1] = digits[uid[first + i] & 0x0f];
    }
    return 2 * count;
}

void uid(TarnJsonWriter& json, const quint8* uid, quint32 uidSize) {
    char text[64];
    const int n = hexOfUid(uid, uidSize, text);
    if (n == 0) {
        json.null();
    } else {
        json.plainString(QLatin1StringView(text, n));
    }
}

void date(TarnJsonWriter& json, const QDateTime& date) {
    if (date.isValid()) {
        json.string(date.toUTC().toString(Qt::ISODate));
    } else {
        json.null();
    }
}

}  // namespace

QString TarnJsonReport::uidHex(const quint8* uid, quint32 uidSize) {
    char text[64];
    const int n = hexOfUid(uid, uidSize, text);
    return n == 0 ? QString() : QString::fromLatin1(text, n);
}

void TarnJsonReport::writeItem(TarnJsonWriter& json, const TarnDatabaseItem& item) {
    json.beginObject();
    json.key(QLatin1StringView("ama"));
    json.boolean(item.DB_isAMA);
    json.key(QLatin1StringView("bits"));
    json.number(qint64(item.DB_bits));
    json.key(QLatin1StringView("clip_name"));
    json.stringOrNull(item.DB_NameInBin);
    json.key(QLatin1StringView("compression"));
    json.stringOrNull(item.DB_CompressionString);
    json.key(QLatin1StringView("date"));
    date(json, item.DB_Date);
    json.key(QLatin1StringView("exists"));
    json.boolean(item.DB_FileExists);
    json.key(QLatin1StringView("file_name"));
    json.stringOrNull(item.DB_ClipName);
    json.key(QLatin1StringView("file_package_uid"));
    uid(json, item.DB_filePackageUID(), item.DB_SizeofUID);
    json.key(QLatin1StringView("fourcc"));
    fourcc(json, item);
    json.key(QLatin1StringView("frame_rate"));
    rate(json, item.DB_framerate());
    json.key(QLatin1StringView("frame_rate_text"));
    json.stringOrNull(TarnColumns::cellText(TarnColumn::Framerate, item));
    json.key(QLatin1StringView("good_umid"));
    json.boolean(item.DB_isGoodUUID);
    json.key(QLatin1StringView("hash"));
    json.string(TarnColumns::cellText(TarnColumn::Hash, item));
    json.key(QLatin1StringView("kind"));
    json.string(TarnDatabaseItem::kindForUsageCode(item.DB_usageCode));
    json.key(QLatin1StringView("material_package_uid"));
    uid(json, item.DB_materialPackageUID(), item.DB_SizeofUID);
    json.key(QLatin1StringView("path"));
    json.stringOrNull(item.DB_itemPath);
    json.key(QLatin1StringView("portable_name"));
    json.boolean(item.DB_isPortableFilename);
    json.key(QLatin1StringView("project"));
    json.string(item.get_DB_ProjectName());
    json.key(QLatin1StringView("referenced"));
    json.boolean(item.DB_isReferenced);
    json.key(QLatin1StringView("resolution_id"));
    json.number(qint64(item.DB_DIDResolutionID));
    json.key(QLatin1StringView("sample_rate"));
    rate(json, item.DB_samplerate());
    json.key(QLatin1StringView("sample_rate_text"));
    json.stringOrNull(TarnColumns::cellText(TarnColumn::Samplerate, item));
    json.key(QLatin1StringView("size"));
    if (item.DB_filesize) {
        json.number(qint64(*item.DB_filesize));
    } else {
        json.null();
    }
    json.key(QLatin1StringView("uid_size"));
    json.number(qint64(item.DB_SizeofUID));
    json.key(QLatin1StringView("usage_code"));
    json.number(item.DB_usageCode);
    json.key(QLatin1StringView("valid"));
    json.boolean(item.DB_isValid);
    json.endObject();
}

void TarnJsonReport::writeProject(TarnJsonWriter& json, const QString& name, quint32 files,
                                  quint64 size, bool shown) {
    json.beginObject();
    json.key(QLatin1StringView("files"));
    json.number(qint64(files));
    json.key(QLatin1StringView("name"));
    json.string(name);
    json.key(QLatin1StringView("shown"));
    json.boolean(shown);
    json.key(QLatin1StringView("size"));
    json.number(qint64(size));
    json.endObject();
}

void TarnJsonReport::writeSummary(TarnJsonWriter& json, quint64 itemsInDatabase,
                                  quint64 projectsCount, quint64 filteredItems,
                                  quint64 filteredSize) {
    json.beginObject();
    json.key(QLatin1StringView("filtered_items"));
    json.number(qint64(filteredItems));
    json.key(QLatin1StringView("filtered_size"));
    json.number(qint64(filteredSize));
    json.key(QLatin1StringView("items_in_database"));
    json.number(qint64(itemsInDatabase));
    json.key(QLatin1StringView("projects_count"));
    json.number(qint64(projectsCount));
    json.endObject();
}

bool TarnJsonReport::write(const TarnCore& core, QIODevice* device) {
    TarnReportSink sink(device);
    TarnJsonWriter json(sink);
    json.beginObject();
    json.key(QLatin1StringView("items"));
    json.beginArray();
    for (qsizetype row = 0; row < core.getFilteredIndexesCount(); ++row) {
        if (const TarnItemPtr item = core.ObjectAtIndexFiltered(row)) writeItem(json, *item);
    }
    json.endArray();
    json.key(QLatin1StringView("projects"));
    json.beginArray();
    for (const TarnProjectPtr& p : core.ProjectsSummaryA()) {
        writeProject(json, p->name, p->FilesCount, p->SizeValue, p->mustBeShownInList.load());
    }
    json.endArray();
    json.key(QLatin1StringView("summary"));
    writeSummary(json, quint64(core.getAllItemsCount()), quint64(core.getProjectsCount()),
                 quint64(core.getFilteredIndexesCount()), core.FilteredItemsSize());
    json.endObject();
    return sink.flush();
}
