#pragma once

#include <QList>
#include <QString>

#include "items/TarnDatabaseItem.h"

class TarnCore;

// What the views show of the database at one moment, frozen: the shown rows
// in order, the items behind them, the project summary and the counts.
//
// It is made on the thread that owns the database at that moment (a scan's
// own thread when the scan ends, the main thread between scans); afterwards
// any thread may read it while the database changes again. Items are shared,
// never copied, and the lists are copy-on-write, so a snapshot of 100,000
// items costs a few small allocations.
class TarnViewSnapshot {
  public:
    // One row of the project summary, by value: the database changes its
    // projects in place.
    struct Project {
        QString name;
        quint64 size = 0;
        quint32 filesCount = 0;
        bool shown = true;
    };

    // An empty view.
    TarnViewSnapshot() = default;
    explicit TarnViewSnapshot(const TarnCore& core);

    // Shown rows (getFilteredIndexesCount).
    qsizetype rowCount() const { return rows_.size(); }
    // The item of a shown row; null out of range.
    const TarnDatabaseItem* itemAt(qsizetype row) const;
    TarnItemPtr itemPtrAt(qsizetype row) const;
    // The items of the given rows in the order given; rows out of range are skipped.
    QList<TarnItemPtr> itemsOfRows(const QList<qsizetype>& rows) const;
    // The summed size of the rows first..last (both included), missing files
    // with their recorded size.
    quint64 sizeOfRows(qsizetype first, qsizetype last) const;

    // The same items in the same rows (a new summary, say, over an unchanged
    // view).
    bool showsSameRows(const TarnViewSnapshot& other) const;

    qsizetype allItemsCount() const { return allItems_; }
    quint64 filteredSize() const { return filteredSize_; }

    qsizetype projectsCount() const { return projects_.size(); }
    // Null out of range.
    const Project* projectAt(qsizetype row) const;

  private:
    QList<TarnItemPtr> items_;
    QList<quint32> rows_;
    QList<Project> projects_;
    qsizetype allItems_ = 0;
    quint64 filteredSize_ = 0;
};
