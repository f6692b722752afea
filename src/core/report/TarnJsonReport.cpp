#include "report/TarnJsonReport.h"

#include "database/TarnCore.h"
#include "items/TarnDatabaseItem.h"
#include "report/TarnColumns.h"
#include "report/TarnJsonWriter.h"
#include "report/TarnReportSink.h"
#include "report/TarnRowChunks.h"
#include "support/TarnFileName.h"

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

const char kHexDigits[] = "0123456789abcdef";

// The identity hash as the table shows it: eight lowercase hex digits.
void hash(TarnJsonWriter& json, quint32 value) {
    char text[8];
    for (int i = 7; i >= 0; --i, value >>= 4) text[i] = kHexDigits[value & 0xF];
    json.plainString(QLatin1StringView(text, 8));
}

// Lowercase hex of the identifier's bytes into `text` (64 digits at most);
// the digit count, 0 when the size names no identifier.
int hexOfUid(const quint8* uid, quint32 uidSize, char* text) {
    if (!uid || (uidSize != 8 && uidSize != 2)) return 0;
    const int first = uidSize == 8 ? 0 : 16;
    const int count = uidSize == 8 ? 32 : 8;
    for (int i = 0; i < count; ++i) {
        text[2 * i] = kHexDigits[uid[first + i] >> 4];
        text[2 * i + 1] = kHexDigits[uid[first + i] & 0x0f];
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

// Days since 1970-01-01 as a proleptic Gregorian year, month and day (the
// civil-from-days method: eras of 400 years, years starting in March).
void civilFromDays(qint64 days, int& year, int& month, int& day) {
    days += 719468;
    const qint64 era = (days >= 0 ? days : days - 146096) / 146097;
    const qint64 dayOfEra = days - era * 146097;
    const qint64 yearOfEra =
        (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
    const qint64 dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
    const qint64 shiftedMonth = (5 * dayOfYear + 2) / 153;
    day = int(dayOfYear - (153 * shiftedMonth + 2) / 5 + 1);
    month = int(shiftedMonth < 10 ? shiftedMonth + 3 : shiftedMonth - 9);
    year = int(yearOfEra + era * 400 + (month <= 2 ? 1 : 0));
}

// ISO 8601 in UTC to the second ("2024-01-31T09:45:02Z"), as Qt writes it;
// Qt itself for the years it writes otherwise.
void date(TarnJsonWriter& json, const QDateTime& date) {
    if (!date.isValid()) {
        json.null();
        return;
    }
    const qint64 ms = date.toMSecsSinceEpoch();
    const qint64 seconds = ms >= 0 ? ms / 1000 : -((-ms + 999) / 1000);
    const qint64 days = seconds >= 0 ? seconds / 86400 : -((-seconds + 86399) / 86400);
    const qint64 second = seconds - days * 86400;
    int year, month, day;
    civilFromDays(days, year, month, day);
    if (year < 1 || year > 9999) {
        json.string(date.toUTC().toString(Qt::ISODate));
        return;
    }
    char text[21];
    auto two = [&](int at, qint64 v) {
        text[at] = char('0' + v / 10);
        text[at + 1] = char('0' + v % 10);
    };
    two(0, year / 100);
    two(2, year % 100);
    text[4] = '-';
    two(5, month);
    text[7] = '-';
    two(8, day);
    text[10] = 'T';
    two(11, second / 3600);
    text[13] = ':';
    two(14, second / 60 % 60);
    text[16] = ':';
    two(17, second % 60);
    text[19] = 'Z';
    json.plainString(QLatin1StringView(text, 20));
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
    // Names as shown: a byte that is not UTF-8 becomes a replacement character.
    json.key(QLatin1StringView("file_name"));
    json.stringOrNull(TarnFileName::displayText(item.DB_ClipName));
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
    hash(json, item.hash());
    json.key(QLatin1StringView("kind"));
    json.string(TarnDatabaseItem::kindForUsageCode(item.DB_usageCode));
    json.key(QLatin1StringView("material_package_uid"));
    uid(json, item.DB_materialPackageUID(), item.DB_SizeofUID);
    json.key(QLatin1StringView("path"));
    json.stringOrNull(TarnFileName::displayText(item.DB_itemPath));
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
    // Every shown row has an item, so the array has a member before each row
    // but the first.
    std::vector<char> nesting = json.nesting();
    const qsizetype rows = core.getFilteredIndexesCount();
    TarnRowChunks::write(
        rows,
        [&core, nesting](qsizetype first, qsizetype end, TarnReportSink& part) {
            TarnJsonWriter items(part);
            std::vector<char> inArray = nesting;
            inArray.back() = first > 0 ? 1 : 0;
            items.setNesting(std::move(inArray));
            for (qsizetype row = first; row < end; ++row) {
                if (const TarnItemPtr item = core.ObjectAtIndexFiltered(row))
                    writeItem(items, *item);
            }
        },
        sink);
    nesting.back() = rows > 0 ? 1 : 0;
    json.setNesting(std::move(nesting));
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
