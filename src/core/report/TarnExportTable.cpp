#include "report/TarnExportTable.h"

TarnExportTable::TarnExportTable(const QString& title, const QStringList& columns)
    : title_(title), columns_(columns) {}

TarnExportTable TarnExportTable::forItems(const QString& title, const QList<TarnItemPtr>& items,
                                          const QList<TarnColumn>& columns) {
    QStringList titles;
    for (TarnColumn c : columns) titles.append(TarnColumns::title(c));
    TarnExportTable table(title, titles);
    table.rows_.reserve(items.size());
    for (const TarnItemPtr& item : items) {
        QStringList cells;
        cells.reserve(columns.size());
        for (TarnColumn c : columns) {
            cells.append(item ? TarnColumns::exportText(c, *item) : QString());
        }
        table.rows_.append(cells);
    }
    return table;
}

TarnExportTable TarnExportTable::forProjects(const QString& title) {
    QStringList titles;
    for (TarnProjectColumn c : TarnColumns::projectColumns()) titles.append(TarnColumns::title(c));
    return TarnExportTable(title, titles);
}

void TarnExportTable::addProject(const QString& name, quint64 size, quint32 filesCount) {
    QStringList cells;
    for (TarnProjectColumn c : TarnColumns::projectColumns()) {
        cells.append(TarnColumns::projectCellText(c, name, size, filesCount));
    }
    addRow(cells);
}

void TarnExportTable::addRow(const QStringList& cells) {
    QStringList row = cells.mid(0, columns_.size());
    while (row.size() < columns_.size()) row.append(QString());
    rows_.append(row);
}
