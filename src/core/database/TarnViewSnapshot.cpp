#include "database/TarnViewSnapshot.h"

#include "database/TarnCore.h"

TarnViewSnapshot::TarnViewSnapshot(const TarnCore& core)
    : items_(core.ItemsUnsorted()),
      rows_(core.IndexesSortedFiltered()),
      allItems_(core.getAllItemsCount()),
      filteredSize_(core.FilteredItemsSize()) {
    projects_.reserve(core.ProjectsSummaryA().size());
    for (const TarnProjectPtr& p : core.ProjectsSummaryA()) {
        projects_.append({p->name, p->SizeValue, p->FilesCount, p->mustBeShownInList.load()});
    }
}

const TarnDatabaseItem* TarnViewSnapshot::itemAt(qsizetype row) const {
    if (row < 0 || row >= rows_.size()) return nullptr;
    const quint32 index = rows_.at(row);
    return index < quint32(items_.size()) ? items_.at(index).get() : nullptr;
}

TarnItemPtr TarnViewSnapshot::itemPtrAt(qsizetype row) const {
    if (row < 0 || row >= rows_.size()) return nullptr;
    const quint32 index = rows_.at(row);
    return index < quint32(items_.size()) ? items_.at(index) : nullptr;
}

QList<TarnItemPtr> TarnViewSnapshot::itemsOfRows(const QList<qsizetype>& rows) const {
    QList<TarnItemPtr> items;
    items.reserve(rows.size());
    for (const qsizetype row : rows) {
        if (TarnItemPtr item = itemPtrAt(row)) items.append(std::move(item));
    }
    return items;
}

quint64 TarnViewSnapshot::sizeOfRows(qsizetype first, qsizetype last) const {
    quint64 size = 0;
    for (qsizetype row = qMax<qsizetype>(first, 0); row <= last && row < rows_.size(); ++row) {
        if (const TarnDatabaseItem* item = itemAt(row)) size += item->DB_filesize.value_or(0);
    }
    return size;
}

bool TarnViewSnapshot::showsSameRows(const TarnViewSnapshot& other) const {
    // Lists the database left alone still share their data; a copy compares
    // pointer by pointer, which is quick too.
    return (items_.constData() == other.items_.constData() || items_ == other.items_) &&
           (rows_.constData() == other.rows_.constData() || rows_ == other.rows_);
}

const TarnViewSnapshot::Project* TarnViewSnapshot::projectAt(qsizetype row) const {
    return row >= 0 && row < projects_.size() ? &projects_.at(row) : nullptr;
}
