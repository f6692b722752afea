#include "TextTable.h"

#include <QBuffer>

#include "report/TarnReportRows.h"
#include "report/TarnReportSink.h"

namespace {

// A row stays on one line: line breaks inside a cell become blanks.
const TarnReportSink::Escapes kOneLine = TarnReportSink::Escapes::of({{'\r', " "}, {'\n', " "}});

}  // namespace

TextTable::TextTable(const QStringList& headers, int maxCellWidth, const QString& nullText)
    : headers_(headers), maxCellWidth_(qMax(4, maxCellWidth)), nullText_(nullText) {
    for (const QString& header : headers_) widths_.append(header.size());
}

void TextTable::write(const TarnReportRows& rows, TarnReportSink& sink, int maxCellWidth,
                      const QString& nullText) {
    TextTable table(rows.headers(), maxCellWidth, nullText);
    QStringList cells;
    const qsizetype count = rows.rowCount();
    for (qsizetype r = 0; r < count; ++r) {
        cells.clear();
        rows.cells(r, cells);
        table.measure(cells);
    }
    table.writeHeader(sink);
    for (qsizetype r = 0; r < count; ++r) {
        cells.clear();
        rows.cells(r, cells);
        table.writeRow(sink, cells);
    }
}

QString TextTable::text(const TarnReportRows& rows, int maxCellWidth) {
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    {
        TarnReportSink sink(&buffer);
        write(rows, sink, maxCellWidth);
    }
    return QString::fromUtf8(buffer.data());
}

QStringView TextTable::shown(const QStringList& cells, qsizetype column) const {
    if (column >= cells.size()) return QStringView();
    const QString& text = cells.at(column);
    return text.isNull() ? QStringView(nullText_) : QStringView(text);
}

void TextTable::measure(const QStringList& cells) {
    for (qsizetype c = 0; c < widths_.size(); ++c) {
        widths_[c] = qMax(widths_[c], qMin(shown(cells, c).size(), qsizetype(maxCellWidth_)));
    }
}

void TextTable::writeCell(TarnReportSink& sink, qsizetype column, QStringView text,
                          bool flatten) const {
    qsizetype width = text.size();
    const bool cut = flatten && text.size() > maxCellWidth_;
    if (cut) text = text.left(maxCellWidth_ - 3);
    if (flatten) {
        sink.appendEscaped(text, kOneLine);
    } else {
        sink.appendText(text);
    }
    if (cut) {
        sink.append(QLatin1StringView("..."));
        width = maxCellWidth_;
    }
    if (column + 1 == widths_.size()) return;
    for (qsizetype pad = width; pad < widths_[column] + 2; ++pad) sink.append(' ');
}

void TextTable::writeHeader(TarnReportSink& sink) const {
    for (qsizetype c = 0; c < headers_.size(); ++c) writeCell(sink, c, headers_.at(c), false);
    sink.append('\n');
    for (qsizetype c = 0; c < widths_.size(); ++c) {
        writeCell(sink, c, QString(widths_[c], QLatin1Char('-')), false);
    }
    sink.append('\n');
}

void TextTable::writeRow(TarnReportSink& sink, const QStringList& cells) const {
    for (qsizetype c = 0; c < widths_.size(); ++c) writeCell(sink, c, shown(cells, c), true);
    sink.append('\n');
}
