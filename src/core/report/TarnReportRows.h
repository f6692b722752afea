#pragma once

#include <QString>
#include <QStringList>

// A table as it is shown, read one row at a time: the window's title, the
// header titles and the cell texts of each row in order. The exporters take
// their rows from here, so a view of any size is written without first being
// copied whole.
class TarnReportRows {
  public:
    virtual ~TarnReportRows() = default;

    virtual QString title() const = 0;
    virtual QStringList headers() const = 0;
    virtual qsizetype rowCount() const = 0;
    // Appends the texts of row `row` (0 to rowCount() - 1) to `cells`, one per
    // header; a missing text is an empty cell.
    virtual void cells(qsizetype row, QStringList& cells) const = 0;
    // True when cells() may be called from several threads at once (rows
    // read from the database, not from a view of the interface).
    virtual bool cellsFromAnyThread() const { return false; }
};
