#include "models/VolumeListModel.h"

namespace {
constexpr int kCheckColumn = 0;  // "CheckID"
}  // namespace

VolumeListModel::VolumeListModel(const QStringList& volumes, QObject* parent)
    : QAbstractTableModel(parent), selector_(volumes) {}

QString VolumeListModel::delectDeselectAll(bool state) {
    const QString title = selector_.delectDeselectAll(state);
    if (rowCount() > 0) emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    return title;
}

int VolumeListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : selector_.numberOfRows();
}

int VolumeListModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 2;
}

QVariant VolumeListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return QVariant();
    const bool check = index.column() == kCheckColumn;
    switch (role) {
        case Qt::DisplayRole:
            return check ? QVariant() : QVariant(selector_.volumeAt(index.row()));
        case Qt::AccessibleTextRole:
            return selector_.volumeAt(index.row());
        case Qt::CheckStateRole:
            if (!check) return QVariant();
            return selector_.checkAt(index.row()) ? Qt::Checked : Qt::Unchecked;
        default:
            return QVariant();
    }
}

bool VolumeListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::CheckStateRole ||
        index.column() != kCheckColumn) {
        return false;
    }
    selector_.setCheck(index.row(), value.toInt() == Qt::Checked);
    emit dataChanged(index, index, {Qt::CheckStateRole});
    return true;
}

QVariant VolumeListModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal ||
        (role != Qt::DisplayRole && role != Qt::AccessibleTextRole)) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    if (section == kCheckColumn) return QStringLiteral("Scan");
    if (section == 1) return QStringLiteral("Volume");
    return QVariant();
}

Qt::ItemFlags VolumeListModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (index.column() == kCheckColumn) f |= Qt::ItemIsUserCheckable;
    return f;
}
