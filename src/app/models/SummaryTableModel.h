#pragma once

#include <QAbstractTableModel>
#include <QStringList>

#include <memory>

#include "database/TarnViewSnapshot.h"

// The one-row summary under the database table ("DatabaseSummaryID"). Each
// column's label is also its identifier: "Items In Database", "Projects
// count", "Filtered Items", "Selected Items", "Filtered Size", "Selected Size".
// The selection is the database table's, handed in by whoever watches it.
class SummaryTableModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    explicit SummaryTableModel(QObject* parent = nullptr);

    static const QStringList& labels();

    void setSnapshot(std::shared_ptr<const TarnViewSnapshot> snapshot);
    void setSelection(qsizetype selectedItems, quint64 selectedSize);

    // The text of a column by its label; null for an unknown label.
    QString text(const QString& label) const;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;

  private:
    std::shared_ptr<const TarnViewSnapshot> snapshot_;
    qsizetype selectedItems_ = 0;
    quint64 selectedSize_ = 0;
};
