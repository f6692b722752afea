#include "report/TarnExport.h"

#include <QBuffer>

#include <functional>

#include "report/TarnJsonWriter.h"
#include "report/TarnReportSink.h"
#include "report/TarnRowChunks.h"

namespace {

// Inside a field, a double quote is doubled.
const TarnReportSink::Escapes kCsvEscapes = TarnReportSink::Escapes::of({{'"', "\"\""}});

// The five XML entities; "&" among them, so an entity already in the text is
// escaped once more and shows as written.
const TarnReportSink::Escapes kXmlEscapes = TarnReportSink::Escapes::of(
    {{'&', "&amp;"}, {'\'', "&apos;"}, {'"', "&quot;"}, {'<', "&lt;"}, {'>', "&gt;"}});

// One line of fields: each quoted, inner quotes doubled, the separator after
// every field. A row with fewer cells than columns gets empty fields.
void csvLine(TarnReportSink& sink, const QStringList& cells, qsizetype columns,
             const QString& separator) {
    for (qsizetype c = 0; c < columns; ++c) {
        sink.append('"');
        if (c < cells.size()) sink.appendEscaped(cells.at(c), kCsvEscapes);
        sink.append('"');
        sink.appendText(separator);
    }
    sink.append('\n');
}

// `tag` around each cell: <th> for the header, <td> for the rows.
void htmlCells(TarnReportSink& sink, const QStringList& cells, qsizetype columns,
               QLatin1StringView open, QLatin1StringView close) {
    for (qsizetype c = 0; c < columns; ++c) {
        sink.append(open);
        if (c < cells.size()) sink.appendEscaped(cells.at(c), kXmlEscapes);
        sink.append(close);
    }
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

// Runs `write` over rows [first, end) in turn, the cell list reused from row
// to row.
void eachRow(const TarnReportRows& rows, qsizetype first, qsizetype end,
             const std::function<void(const QStringList&)>& write) {
    QStringList cells;
    for (qsizetype r = first; r < end; ++r) {
        cells.clear();
        rows.cells(r, cells);
        write(cells);
    }
}

void eachRow(const TarnReportRows& rows, const std::function<void(const QStringList&)>& write) {
    eachRow(rows, 0, rows.rowCount(), write);
}

// The rows written by `line` into the sink, formatted on several threads
// when the rows allow it.
void allRows(const TarnReportRows& rows, TarnReportSink& sink,
             const std::function<void(TarnReportSink&, const QStringList&)>& line) {
    const auto format = [&](qsizetype first, qsizetype end, TarnReportSink& part) {
        eachRow(rows, first, end, [&](const QStringList& cells) { line(part, cells); });
    };
    if (rows.cellsFromAnyThread()) {
        TarnRowChunks::write(rows.rowCount(), format, sink);
    } else {
        format(0, rows.rowCount(), sink);
    }
}

QString toText(const std::function<bool(QIODevice*)>& write) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    write(&buffer);
    return QString::fromUtf8(buffer.data());
}

}  // namespace

bool TarnExport::writeCsv(const TarnReportRows& rows, const QString& separator, QIODevice* device) {
    TarnReportSink sink(device);
    const QStringList headers = rows.headers();
    csvLine(sink, headers, headers.size(), separator);
    allRows(rows, sink, [&](TarnReportSink& part, const QStringList& cells) {
        csvLine(part, cells, headers.size(), separator);
    });
    return sink.flush();
}

bool TarnExport::writeHtml(const TarnReportRows& rows, QIODevice* device) {
    TarnReportSink sink(device);
    const QStringList headers = rows.headers();
    sink.append(QLatin1StringView(kHtmlHead));
    sink.append(QLatin1StringView("<body><h1>"));
    sink.appendText(rows.title());
    sink.append(QLatin1StringView(
        "</h1><div>"
        "<table id='resultTb' class='display cell-border' cellspacing='0' width='100%'>"
        "<thead><tr>"));
    htmlCells(sink, headers, headers.size(), QLatin1StringView("<th>"), QLatin1StringView("</th>"));
    sink.append(QLatin1StringView("</tr></thead><tbody>"));
    allRows(rows, sink, [&](TarnReportSink& part, const QStringList& cells) {
        part.append(QLatin1StringView("<tr>"));
        htmlCells(part, cells, headers.size(), QLatin1StringView("<td>"),
                  QLatin1StringView("</td>"));
        part.append(QLatin1StringView("</tr>"));
    });
    sink.append(QLatin1StringView("</tbody></table></div></body></html>"));
    return sink.flush();
}

bool TarnExport::writeJson(const TarnReportRows& rows, QIODevice* device) {
    TarnReportSink sink(device);
    TarnJsonWriter json(sink);
    const QStringList headers = rows.headers();
    auto array = [&](const QStringList& texts) {
        json.beginArray();
        for (qsizetype c = 0; c < headers.size(); ++c) json.string(texts.value(c));
        json.endArray();
    };
    json.beginObject();
    json.key(QLatin1StringView("columns"));
    array(headers);
    json.key(QLatin1StringView("rows"));
    json.beginArray();
    eachRow(rows, array);
    json.endArray();
    json.key(QLatin1StringView("title"));
    json.string(rows.title());
    json.endObject();
    return sink.flush();
}

QString TarnExport::genCsv(const TarnReportRows& rows, const QString& separator) {
    return toText([&](QIODevice* device) { return writeCsv(rows, separator, device); });
}

QString TarnExport::genHtml(const TarnReportRows& rows) {
    return toText([&](QIODevice* device) { return writeHtml(rows, device); });
}
