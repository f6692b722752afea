#include "export/TableViewRows.h"

#include <QHeaderView>
#include <QTableView>

TableViewRows::TableViewRows(const QTableView* view, StringSource source)
    : view_(view), source_(std::move(source)) {
    if (!view) return;
    title_ = view->window()->windowTitle();
    const QAbstractItemModel* model = view->model();
    if (!model) return;
    // The header's visual order is the order the user arranged; hidden
    // sections keep their place in it.
    const QHeaderView* header = view->horizontalHeader();
    for (int visual = 0; visual < header->count(); ++visual) {
        const int logical = header->logicalIndex(visual);
        columns_.append(logical);
        titles_.append(model->headerData(logical, Qt::Horizontal, Qt::DisplayRole).toString());
    }
}

qsizetype TableViewRows::rowCount() const {
    return view_ && view_->model() ? view_->model()->rowCount() : 0;
}

void TableViewRows::cells(qsizetype row, QStringList& cells) const {
    for (int column : columns_) cells.append(source_ ? source_(int(row), column) : QString());
}
