#pragma once

#include <QIODevice>
#include <QString>

#include "report/TarnReportRows.h"

// The export formats of a shown table: CSV in the Mac (";") and Windows (",")
// flavours, an HTML page with a sortable table, and JSON. Each is written to
// a device row by row as UTF-8, so the desktop app (to a file it saves
// atomically) and the command line export the same bytes whatever the size.
class TarnExport {
  public:
    // Header line, then one line per row; every field is quoted (inner double
    // quotes doubled) and followed by the separator, the last one too. Lines
    // end with "\n" in both flavours. False when the device failed.
    static bool writeCsv(const TarnReportRows& rows, const QString& separator, QIODevice* device);
    // A self-contained page whose table turns into a DataTables table when
    // opened. The title goes into the h1 as it is; headers and cells are escaped.
    static bool writeHtml(const TarnReportRows& rows, QIODevice* device);
    // {"title": ..., "columns": [...], "rows": [[...], ...]}, indented, with a final line feed.
    static bool writeJson(const TarnReportRows& rows, QIODevice* device);

    // The same documents as one text, for small tables.
    static QString genCsv(const TarnReportRows& rows, const QString& separator);
    static QString genHtml(const TarnReportRows& rows);
};
