#pragma once

#include <QList>
#include <QString>
#include <QStringList>

class TarnReportRows;
class TarnReportSink;

// A plain-text table for a terminal: a header, a rule and left-aligned
// columns two blanks apart. Long cells are cut with "..." so a row stays on
// one line; line breaks inside a cell become blanks.
//
// The rows are read twice, once to measure the columns and once to write
// them, so the table is never held whole.
class TextTable {
  public:
    // Null cells are written as `nullText`.
    static void write(const TarnReportRows& rows, TarnReportSink& sink, int maxCellWidth = 40,
                      const QString& nullText = QString());
    // The same as one text, for small tables.
    static QString text(const TarnReportRows& rows, int maxCellWidth = 40);

  private:
    TextTable(const QStringList& headers, int maxCellWidth, const QString& nullText);
    void measure(const QStringList& cells);
    // The header line and the rule under it.
    void writeHeader(TarnReportSink& sink) const;
    void writeRow(TarnReportSink& sink, const QStringList& cells) const;
    // One cell: flattened and cut to the width limit, then (but for the last
    // column) padded to the column's width and the two blanks.
    void writeCell(TarnReportSink& sink, qsizetype column, QStringView text, bool flatten) const;
    QStringView shown(const QStringList& cells, qsizetype column) const;

    QStringList headers_;
    QList<qsizetype> widths_;
    int maxCellWidth_;
    QString nullText_;
};
