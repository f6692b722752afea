#pragma once

#include <QAbstractTableModel>
#include <QIcon>

#include <memory>

#include "database/TarnViewSnapshot.h"
#include "report/TarnColumns.h"

// The database table ("DatabaseTableID"): one row per shown item of a
// snapshot, one column per TarnColumns column in table order, the cell texts
// of TarnColumns with the database's placeholder ("...") where a cell has no
// text. Rows are read from the snapshot when the view asks; nothing is copied.
//
// Dragging rows out gives the existing files as file URLs and their names as
// plain text; rows whose file is missing give nothing.
class DatabaseTableModel : public QAbstractTableModel {
    Q_OBJECT
  public:
    // The column identifier ("FilenameCellID", ...) of a header section.
    static constexpr int IdentifierRole = Qt::UserRole + 1;
    // The column's full title, also where the header shows none (the icon's).
    static constexpr int TitleRole = Qt::UserRole + 2;

    explicit DatabaseTableModel(QObject* parent = nullptr);

    // A snapshot of other rows resets the model; one of the same rows only
    // refreshes the texts.
    void setSnapshot(std::shared_ptr<const TarnViewSnapshot> snapshot);
    const TarnViewSnapshot& snapshot() const { return *snapshot_; }
    // The one image of the icon column.
    void setItemIcon(const QIcon& icon);

    static TarnColumn columnAt(int section);
    static int sectionOf(TarnColumn column);

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    int columnCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation,
                        int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;

    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDragActions() const override;

  private:
    QString cellText(int row, int section) const;

    std::shared_ptr<const TarnViewSnapshot> snapshot_;
    QIcon icon_;
};
