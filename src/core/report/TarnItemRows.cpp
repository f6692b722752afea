#include "report/TarnItemRows.h"

#include "database/TarnCore.h"

TarnItemRows::TarnItemRows(const TarnCore& core, const QString& title,
                           const QList<TarnColumn>& columns)
    : core_(&core), title_(title), columns_(columns) {}

TarnItemRows::TarnItemRows(const QList<TarnItemPtr>& items, const QString& title,
                           const QList<TarnColumn>& columns)
    : items_(items), title_(title), columns_(columns) {}

QStringList TarnItemRows::headers() const {
    QStringList titles;
    for (TarnColumn c : columns_) titles.append(TarnColumns::title(c));
    return titles;
}

qsizetype TarnItemRows::rowCount() const {
    return core_ ? core_->getFilteredIndexesCount() : items_.size();
}

void TarnItemRows::cells(qsizetype row, QStringList& cells) const {
    const TarnItemPtr item = core_ ? core_->ObjectAtIndexFiltered(row) : items_.value(row);
    for (TarnColumn c : columns_) {
        cells.append(item ? TarnColumns::exportText(c, *item) : QString());
    }
}
