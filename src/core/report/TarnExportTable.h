#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "report/TarnReportRows.h"

// A small table of texts held whole: a title, the header titles and the
// rows added to it. For tables that are not views of the database.
class TarnExportTable : public TarnReportRows {
  public:
    TarnExportTable() = default;
    TarnExportTable(const QString& title, const QStringList& columns);

    // A row shorter than the header is padded with empty cells, a longer one cut.
    void addRow(const QStringList& cells);

    QString title() const override { return title_; }
    QStringList headers() const override { return columns_; }
    qsizetype rowCount() const override { return rows_.size(); }
    void cells(qsizetype row, QStringList& cells) const override { cells += rows_.at(row); }

    const QStringList& columns() const { return columns_; }
    const QList<QStringList>& rows() const { return rows_; }

  private:
    QString title_;
    QStringList columns_;
    QList<QStringList> rows_;
};
