#include "report/TarnExport.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace {

QString csvField(const QString& text, const QString& separator) {
    QString quoted = text;
    quoted.replace(QLatin1Char('"'), QLatin1String("\"\""));
    return QLatin1Char('"') + quoted + QLatin1Char('"') + separator;
}

QString csvLine(const QStringList& cells, const QString& separator) {
    QString line;
    for (const QString& cell : cells) line += csvField(cell, separator);
    return line + QLatin1Char('\n');
}

// One line: the page loads jQuery and DataTables and turns #resultTb into a
// sortable, searchable table without paging.
const char* kHtmlHead =
    "<!DOCTYPE html>  <html>  <head>  "
    "<meta http-equiv='Content-Type' content='text/html; charset=utf-8'>  "
    "<script type='text/javascript' src='https://code.jquery.com/jquery-2.0.0.min.js'></script>  "
    "<script type='text/javascript' "
    "src='https://cdn.datatables.net/1.10.7/js/jquery.dataTables.min.js'></script>  "
    "<script type='text/javascript'>$(document).ready(function() { $('#resultTb').DataTable( { "
    "'paging': false, 'info': false } ); } );</script>  "
    "<link rel='stylesheet' type='text/css' "
    "href='https://cdn.datatables.net/1.10.7/css/jquery.dataTables.min.css'>  "
    "<style type='text/css'>td { max-width: 400px; word-wrap:break-word; }</style>  "
    "</head>\n";

}  // namespace

QString TarnExport::genCsv(const TarnExportTable& table, const QString& separator) {
    QString out = csvLine(table.columns(), separator);
    for (const QStringList& row : table.rows()) out += csvLine(row, separator);
    return out;
}

QString TarnExport::stringByEncodingXMLEntities(const QString& text) {
    if (text.isEmpty()) return QString(QLatin1String(""));
    QString out = text;
    out.replace(QLatin1Char('&'), QLatin1String("&amp;"));
    out.replace(QLatin1Char('\''), QLatin1String("&apos;"));
    out.replace(QLatin1Char('"'), QLatin1String("&quot;"));
    out.replace(QLatin1Char('<'), QLatin1String("&lt;"));
    out.replace(QLatin1Char('>'), QLatin1String("&gt;"));
    return out;
}

QString TarnExport::genHtml(const TarnExportTable& table) {
    QString out = QString::fromLatin1(kHtmlHead);
    out += QLatin1String("<body><h1>") + table.title() + QLatin1String("</h1><div>");
    out += QLatin1String(
        "<table id='resultTb' class='display cell-border' cellspacing='0' width='100%'>"
        "<thead><tr>");
    for (const QString& column : table.columns()) {
        out += QLatin1String("<th>") + stringByEncodingXMLEntities(column) + QLatin1String("</th>");
    }
    out += QLatin1String("</tr></thead><tbody>");
    for (const QStringList& row : table.rows()) {
        out += QLatin1String("<tr>");
        for (const QString& cell : row) {
            out +=
                QLatin1String("<td>") + stringByEncodingXMLEntities(cell) + QLatin1String("</td>");
        }
        out += QLatin1String("</tr>");
    }
    out += QLatin1String("</tbody></table></div></body></html>");
    return out;
}

QString TarnExport::genJson(const TarnExportTable& table) {
    QJsonArray rows;
    for (const QStringList& row : table.rows()) rows.append(QJsonArray::fromStringList(row));
    QJsonObject root;
    root.insert(QStringLiteral("title"), table.title());
    root.insert(QStringLiteral("columns"), QJsonArray::fromStringList(table.columns()));
    root.insert(QStringLiteral("rows"), rows);
    return QString::fromUtf8(QJsonDocument(root).toJson(QJsonDocument::Indented));
}
