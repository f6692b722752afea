#include "report/TarnExportTable.h"

TarnExportTable::TarnExportTable(const QString& title, const QStringList& columns)
    : title_(title), columns_(columns) {}

void TarnExportTable::addRow(const QStringList& cells) {
    QStringList row = cells.mid(0, columns_.size());
    while (row.size() < columns_.size()) row.append(QString());
    rows_.append(row);
}
