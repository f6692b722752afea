#pragma once

#include <QList>
#include <QPointer>
#include <QString>

#include <functional>

#include "report/TarnReportRows.h"

class QTableView;

// A table view as an export reads it, one row at a time: the window's title,
// the columns in the header's current order (hidden ones too, titles from the
// model's header) and the model's rows in its current, sorted and filtered
// order. Each cell's text comes from the source (a null text, or no source
// at all, is an empty cell), asked for only as the row is written.
class TableViewRows : public TarnReportRows {
  public:
    // The text of the model's (logical) column `column` in row `row`.
    using StringSource = std::function<QString(int row, int column)>;

    // The columns and their order are taken now; the rows as they are read.
    TableViewRows(const QTableView* view, StringSource source);

    QString title() const override { return title_; }
    QStringList headers() const override { return titles_; }
    qsizetype rowCount() const override;
    void cells(qsizetype row, QStringList& cells) const override;

  private:
    QPointer<const QTableView> view_;
    StringSource source_;
    QString title_;
    QList<int> columns_;  // logical columns in visual order
    QStringList titles_;
};
