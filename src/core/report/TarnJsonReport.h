#pragma once

#include <QIODevice>
#include <QString>

class TarnCore;
class TarnDatabaseItem;
class TarnJsonWriter;

// The machine-readable report of a database view: one object with "items"
// (the shown rows in order), "projects" and "summary". Field names are
// snake_case and stable; texts that the table leaves empty are null. The
// report is written as it is made, one item at a time, in the layout of Qt's
// indented JSON with the members of each object in key order.
class TarnJsonReport {
  public:
    // The whole report of `core`'s view; false when the device failed.
    static bool write(const TarnCore& core, QIODevice* device);

    // One item as an object: "ama", "bits", "clip_name", "compression",
    // "date", "exists", "file_name", "file_package_uid", "fourcc",
    // "frame_rate", "frame_rate_text", "good_umid", "hash", "kind",
    // "material_package_uid", "path", "portable_name", "project",
    // "referenced", "resolution_id", "sample_rate", "sample_rate_text",
    // "size", "uid_size", "usage_code", "valid".
    static void writeItem(TarnJsonWriter& json, const TarnDatabaseItem& item);
    // "files", "name", "shown", "size".
    static void writeProject(TarnJsonWriter& json, const QString& name, quint32 files, quint64 size,
                             bool shown);
    // "filtered_items", "filtered_size", "items_in_database", "projects_count".
    static void writeSummary(TarnJsonWriter& json, quint64 itemsInDatabase, quint64 projectsCount,
                             quint64 filteredItems, quint64 filteredSize);

    // An identifier as lowercase hex without separators: all 32 bytes for a
    // UMID (size 8), bytes 16..23 for a short identifier (size 2), null else.
    static QString uidHex(const quint8* uid, quint32 uidSize);
};
