#pragma once

#include <QAbstractTableModel>

#include "status/TarnVolumeSelector.h"

// The volume selector's table: "CheckID" (the volume's check box) and
// "VolumeID" (its path), over the selector's volumes and checks.
class VolumeListModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    explicit VolumeListModel(const QStringList& volumes, QObject* parent = nullptr);

    TarnVolumeSelector& selector() { return selector_; }
    // Sets every check (the select-all box) and returns the box's new title.
    QString delectDeselectAll(bool state);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

  private:
    TarnVolumeSelector selector_;
};
