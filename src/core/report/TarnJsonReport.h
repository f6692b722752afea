#pragma once

#include <QJsonArray>
#include <QJsonObject>
#include <QJsonValue>
#include <QString>

class TarnDatabaseItem;

// The machine-readable report of a database view: one object with "items"
// (the shown rows in order), "projects" and "summary". Field names are
// snake_case and stable; texts that the table leaves empty are null.
class TarnJsonReport {
  public:
    // "path", "file_name", "clip_name", "project", "file_package_uid",
    // "material_package_uid", "uid_size", "hash", "size", "exists", "valid",
    // "ama", "referenced", "good_umid", "portable_name", "usage_code", "kind",
    // "compression", "fourcc", "resolution_id", "frame_rate", "sample_rate",
    // "bits", "date", "frame_rate_text", "sample_rate_text".
    static QJsonObject itemObject(const TarnDatabaseItem& item);
    // "name", "files", "size", "shown".
    static QJsonObject projectObject(const QString& name, quint32 files, quint64 size, bool shown);
    // "items_in_database", "projects_count", "filtered_items", "filtered_size".
    static QJsonObject summaryObject(quint64 itemsInDatabase, quint64 projectsCount,
                                     quint64 filteredItems, quint64 filteredSize);
    // The whole report, indented, with a final line feed.
    static QString document(const QJsonArray& items, const QJsonArray& projects,
                            const QJsonObject& summary);

    // An identifier as lowercase hex without separators: all 32 bytes for a
    // UMID (size 8), bytes 16..23 for a short identifier (size 2), null else.
    static QJsonValue uidHex(const quint8* uid, quint32 uidSize);
};
