#include "TextTable.h"

TextTable::TextTable(const QStringList& headers, int maxCellWidth)
    : headers_(headers), maxCellWidth_(qMax(4, maxCellWidth)) {}

QString TextTable::cell(const QString& text, int maxWidth) {
    QString flat = text;
    flat.replace(QLatin1Char('\r'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
    if (flat.size() > maxWidth) flat = flat.left(maxWidth - 3) + QLatin1String("...");
    return flat;
}

void TextTable::addRow(const QStringList& cells) {
    QStringList row;
    for (qsizetype c = 0; c < headers_.size(); ++c) {
        row.append(cell(c < cells.size() ? cells.at(c) : QString(), maxCellWidth_));
    }
    rows_.append(row);
}

QString TextTable::toString() const {
    QList<qsizetype> widths;
    for (const QString& header : headers_) widths.append(header.size());
    for (const QStringList& row : rows_) {
        for (qsizetype c = 0; c < row.size(); ++c) widths[c] = qMax(widths[c], row.at(c).size());
    }
    auto line = [&](const QStringList& cells) {
        QString out;
        for (qsizetype c = 0; c < cells.size(); ++c) {
            const bool last = c + 1 == cells.size();
            out += last ? cells.at(c) : cells.at(c).leftJustified(widths[c] + 2, QLatin1Char(' '));
        }
        return out + QLatin1Char('\n');
    };
    QStringList rule;
    for (qsizetype w : widths) rule.append(QString(w, QLatin1Char('-')));
    QString out = line(headers_) + line(rule);
    for (const QStringList& row : rows_) out += line(row);
    return out;
}
