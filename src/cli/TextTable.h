#pragma once

#include <QList>
#include <QString>
#include <QStringList>

// A plain-text table for a terminal: a header, a rule and left-aligned
// columns two blanks apart. Long cells are cut with "..." so a row stays on
// one line; line breaks inside a cell become blanks.
class TextTable {
  public:
    explicit TextTable(const QStringList& headers, int maxCellWidth = 40);

    void addRow(const QStringList& cells);
    QString toString() const;

  private:
    static QString cell(const QString& text, int maxWidth);

    QStringList headers_;
    QList<QStringList> rows_;
    int maxCellWidth_;
};
