#pragma once

#include "report/TarnReportRows.h"

class TarnCore;

// The rows of the projects summary table for an export: project, size and
// number of files, one row per project in the summary's order.
class TarnProjectRows : public TarnReportRows {
  public:
    // The summary must not change while the rows are read.
    TarnProjectRows(const TarnCore& core, const QString& title);

    QString title() const override { return title_; }
    QStringList headers() const override;
    qsizetype rowCount() const override;
    void cells(qsizetype row, QStringList& cells) const override;

  private:
    const TarnCore& core_;
    QString title_;
};
