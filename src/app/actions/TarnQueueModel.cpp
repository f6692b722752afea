#include "actions/TarnQueueModel.h"

#include <cmath>

#include "actions/TarnActionOperation.h"

TarnQueueModel::TarnQueueModel(TarnActionManager* manager, QObject* parent)
    : QAbstractTableModel(parent), manager_(manager) {
    connect(manager_, &TarnActionManager::rowInserted, this, &TarnQueueModel::insertAction);
    connect(manager_, &TarnActionManager::rowRemoved, this, &TarnQueueModel::removeAction);
    connect(manager_, &TarnActionManager::queueCleared, this, &TarnQueueModel::reloadData);
    reloadData();
}

TarnQueueModel::~TarnQueueModel() = default;

int TarnQueueModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(rows_.size());
}

int TarnQueueModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : ColumnCount;
}

TarnQueueModel::ActionPtr TarnQueueModel::actionAt(int row) const {
    return row >= 0 && row < rows_.size() ? rows_.at(row).action : nullptr;
}

void TarnQueueModel::reloadData() {
    beginResetModel();
    for (const Row& row : std::as_const(rows_))
        disconnect(row.action.get(), nullptr, this, nullptr);
    rows_.clear();
    const QList<ActionPtr> actions = manager_->actions();
    for (const ActionPtr& action : actions) rows_.append(Row{action});
    endResetModel();
    for (int row = 0; row < rows_.size(); ++row) {
        follow(rows_.at(row).action);
        manager_->SetCellForRow(row);
    }
}

void TarnQueueModel::insertAction(int row) {
    const ActionPtr action = manager_->actions().value(row);
    if (!action || row > rows_.size()) return;
    beginInsertRows(QModelIndex(), row, row);
    rows_.insert(row, Row{action});
    endInsertRows();
    follow(action);
    manager_->SetCellForRow(row);
}

void TarnQueueModel::removeAction(int row) {
    if (row < 0 || row >= rows_.size()) return;
    disconnect(rows_.at(row).action.get(), nullptr, this, nullptr);
    beginRemoveRows(QModelIndex(), row, row);
    rows_.removeAt(row);
    endRemoveRows();
}

void TarnQueueModel::follow(const ActionPtr& action) {
    // The row is found again by address at delivery: a queued change of an
    // action removed meanwhile finds no row and is dropped.
    const TarnAction* key = action.get();
    connect(action.get(), &TarnAction::descriptionChanged, this,
            [this, key] { rowChanged(key, DescriptionColumn, DescriptionColumn); });
    connect(action.get(), &TarnAction::statusChanged, this,
            [this, key] { rowChanged(key, StatusColumn, StatusColumn); });
    connect(action.get(), &TarnAction::progressMaximumChanged, this,
            [this, key] { rowChanged(key, ProgressColumn, ProgressColumn); });
    connect(action.get(), &TarnAction::progressChanged, this,
            [this, key](double value, bool busy) { progressChanged(key, value, busy); });
}

int TarnQueueModel::rowOf(const TarnAction* action) const {
    for (int row = 0; row < rows_.size(); ++row)
        if (rows_.at(row).action.get() == action) return row;
    return -1;
}

void TarnQueueModel::rowChanged(const TarnAction* action, int first, int last) {
    const int row = rowOf(action);
    if (row >= 0) emit dataChanged(index(row, first), index(row, last));
}

void TarnQueueModel::progressChanged(const TarnAction* action, double value, bool busy) {
    const int row = rowOf(action);
    if (row < 0) return;
    Row& entry = rows_[row];
    if (entry.value == value && entry.busy == busy) return;
    entry.value = value;
    entry.busy = busy;
    const QModelIndex cell = index(row, ProgressColumn);
    emit dataChanged(cell, cell);
}

int TarnQueueModel::percent(const Row& row) {
    const double maximum = row.action->progressMaximum();
    if (maximum <= 0) return 0;
    return int(std::clamp(std::floor(row.value * 100.0 / maximum), 0.0, 100.0));
}

QVariant TarnQueueModel::displayData(const Row& row, int column) const {
    switch (column) {
        case DescriptionColumn:
            return row.action->descriptionText();
        case StatusColumn:
            return row.action->statusText();
        case ProgressColumn:
            return row.busy ? QString() : QStringLiteral("%1%").arg(percent(row));
        default:
            return QVariant();
    }
}

QVariant TarnQueueModel::accessibleText(const Row& row, int column) const {
    switch (column) {
        case DescriptionColumn:
            return row.action->descriptionText().simplified();
        case StatusColumn:
            return row.action->statusText();
        case ProgressColumn:
            return row.busy ? tr("Progress: finished")
                            : tr("Progress: %1 percent").arg(percent(row));
        default:
            return tr("Cancel, Info");
    }
}

QVariant TarnQueueModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return QVariant();
    const Row& row = rows_.at(index.row());
    switch (role) {
        case Qt::DisplayRole:
            return displayData(row, index.column());
        case Qt::AccessibleTextRole:
            return accessibleText(row, index.column());
        case Qt::ToolTipRole:
            if (index.column() == ButtonsColumn) return tr("Cancel the action, or show its log");
            return index.column() == DescriptionColumn ? row.action->descriptionText() : QVariant();
        case Qt::TextAlignmentRole:
            return int(Qt::AlignLeft | Qt::AlignVCenter);
        case ProgressValueRole:
            return row.value;
        case ProgressMaximumRole:
            return row.action->progressMaximum();
        case ProgressBusyRole:
            return row.busy;
        default:
            return QVariant();
    }
}

QVariant TarnQueueModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= ColumnCount)
        return QAbstractTableModel::headerData(section, orientation, role);
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole) return QVariant();
    switch (section) {
        case DescriptionColumn:
            return tr("Action");
        case StatusColumn:
            return tr("Status");
        case ProgressColumn:
            return tr("Progress");
        default:
            return role == Qt::AccessibleTextRole ? tr("Cancel and Info") : QString();
    }
}

Qt::ItemFlags TarnQueueModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
}

void TarnQueueModel::cancelOperation(int row) {
    if (const ActionPtr action = actionAt(row)) manager_->queueRemoveAction(action);
}

QString TarnQueueModel::targetFolderAt(int row) const {
    const ActionPtr action = actionAt(row);
    if (!action || action->Action_Operation()->Action_Properties().isDelete()) return QString();
    return action->Action_Operation()->targetURL();
}

QString TarnQueueModel::actionLogAt(int row) const {
    const ActionPtr action = actionAt(row);
    return action ? action->Action_Operation()->actionLog() : QString();
}
