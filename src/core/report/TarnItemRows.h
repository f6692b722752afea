#pragma once

#include <QList>
#include <QString>

#include "items/TarnDatabaseItem.h"
#include "report/TarnColumns.h"
#include "report/TarnReportRows.h"

class TarnCore;

// The rows of the database table for an export: one row per item, in the
// table's order, with the given columns in the given order (the table's
// current order, hidden columns included). Cells hold each column's export
// text. Texts are made as the exporter asks for a row, so nothing of the view
// is copied.
class TarnItemRows : public TarnReportRows {
  public:
    // The rows the database shows (sorted and filtered). The database must
    // not change while the rows are read.
    TarnItemRows(const TarnCore& core, const QString& title,
                 const QList<TarnColumn>& columns = TarnColumns::all());
    // The given items, in order; a null item gives a row of empty cells.
    TarnItemRows(const QList<TarnItemPtr>& items, const QString& title,
                 const QList<TarnColumn>& columns = TarnColumns::all());

    QString title() const override { return title_; }
    QStringList headers() const override;
    qsizetype rowCount() const override;
    void cells(qsizetype row, QStringList& cells) const override;
    bool cellsFromAnyThread() const override { return true; }

  private:
    const TarnCore* core_ = nullptr;
    QList<TarnItemPtr> items_;
    QString title_;
    QList<TarnColumn> columns_;
};
