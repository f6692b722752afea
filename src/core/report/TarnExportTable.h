#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include "items/TarnDatabaseItem.h"
#include "report/TarnColumns.h"

// A table as it is shown, reduced to texts: a title (the window's), the header
// titles and one row of cell texts per shown row. The exporters write only
// this, so the desktop app and the command line export the same way.
class TarnExportTable {
  public:
    TarnExportTable() = default;
    TarnExportTable(const QString& title, const QStringList& columns);

    // The database table: one row per item in the given order, each cell the
    // column's export text (none for the icon and the hash).
    static TarnExportTable forItems(const QString& title, const QList<TarnItemPtr>& items,
                                    const QList<TarnColumn>& columns = TarnColumns::all());
    // The projects summary table, with its three columns; add rows with addProject.
    static TarnExportTable forProjects(const QString& title);
    void addProject(const QString& name, quint64 size, quint32 filesCount);

    // A row shorter than the header is padded with empty cells, a longer one cut.
    void addRow(const QStringList& cells);

    const QString& title() const { return title_; }
    const QStringList& columns() const { return columns_; }
    const QList<QStringList>& rows() const { return rows_; }

  private:
    QString title_;
    QStringList columns_;
    QList<QStringList> rows_;
};
