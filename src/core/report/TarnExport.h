#pragma once

#include <QString>

#include "report/TarnExportTable.h"

// The export formats of a shown table: CSV in the Mac (";") and Windows (",")
// flavours, an HTML page with a sortable table, and JSON.
class TarnExport {
  public:
    // Header line, then one line per row; every field is quoted (inner double
    // quotes doubled) and followed by the separator, the last one too. Lines
    // end with "\n" in both flavours.
    static QString genCsv(const TarnExportTable& table, const QString& separator);
    // A self-contained page whose table turns into a DataTables table when
    // opened. The title goes into the h1 as it is; headers and cells are escaped.
    static QString genHtml(const TarnExportTable& table);
    // {"title": ..., "columns": [...], "rows": [[...], ...]}, indented, with a final line feed.
    static QString genJson(const TarnExportTable& table);

    // "&" first (so entities are not escaped twice), then ' " < >.
    static QString stringByEncodingXMLEntities(const QString& text);
};
