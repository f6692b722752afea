#pragma once

#include <QList>
#include <QString>
#include <QStringView>

#include <memory>
#include <optional>
#include <vector>

#include "items/TarnSortKey.h"

class TarnDatabaseItem;
using TarnItemPtr = std::shared_ptr<TarnDatabaseItem>;

// The order of the database table for one sort key and direction.
//
// Keys are the names of TarnSortKeys. An unknown key compares every pair as equal, so a stable sort
// by it keeps the order it was given.
//
// With `invalidLast`, rows that are not shown as valid sort after the valid
// ones (before them when descending); missing items and missing dates are last
// in both directions.
class TarnItemComparator {
  public:
    TarnItemComparator(const QString& key, bool ascending, bool invalidLast);


    // <0, 0 or >0 as `a` orders before, with or after `b`.
    int compare(const TarnDatabaseItem* a, const TarnDatabaseItem* b) const;
    bool operator()(const TarnDatabaseItem* a, const TarnDatabaseItem* b) const {
        return compare(a, b) < 0;
    }

    // A stable sort of positions in `items` in this order. Each item's key is
    // taken once (names case-folded, dates as numbers), so sorting 100,000
    // rows does not redo that work in every comparison.
    // `dates`, when given, holds dateKeys(items).
    void sort(QList<quint32>& indexes, const QList<TarnItemPtr>& items,
              const std::vector<qint64>* dates = nullptr) const;
    bool needsDates() const { return key_ == TarnSortKey::FileDate; }
    // The first four UTF-16 units of a text as one number that orders like
    // the text itself (a shorter text pads with zeros); equal heads need the
    // full text.
    static quint64 textHead(QStringView text);
    // Each item's date in milliseconds since the epoch; the least value for none.
    static std::vector<qint64> dateKeys(const QList<TarnItemPtr>& items);

  private:
    int compareField(const TarnDatabaseItem& a, const TarnDatabaseItem& b) const;

    std::optional<TarnSortKey> key_;
    bool ascending_;
    bool invalidLast_;
};
