#include "models/ProjectsModel.h"

#include "database/TarnCore.h"

ProjectsModel::ProjectsModel(Table table, QObject* parent)
    : QAbstractTableModel(parent),
      table_(table),
      snapshot_(std::make_shared<const TarnViewSnapshot>()) {}

void ProjectsModel::setSnapshot(std::shared_ptr<const TarnViewSnapshot> snapshot) {
    beginResetModel();
    snapshot_ = snapshot ? std::move(snapshot) : std::make_shared<const TarnViewSnapshot>();
    endResetModel();
}

QString ProjectsModel::tableIdentifier() const {
    return table_ == Table::ProjectSummary ? QStringLiteral("ProjectSummaryID")
                                           : QStringLiteral("ProjectFilterID");
}

std::optional<TarnProjectColumn> ProjectsModel::columnAt(int section) const {
    if (table_ == Table::ProjectSummary) return TarnColumns::projectColumns().value(section);
    static const std::optional<TarnProjectColumn> filter[] = {
        std::nullopt, TarnProjectColumn::Project, TarnProjectColumn::Size};
    return filter[section];
}

QString ProjectsModel::columnIdentifier(int section) const {
    const auto column = columnAt(section);
    return column ? TarnColumns::identifier(*column) : QStringLiteral("CheckCellID");
}

int ProjectsModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(snapshot_->projectsCount());
}

int ProjectsModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 3;
}

QVariant ProjectsModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return QVariant();
    const TarnViewSnapshot::Project* p = snapshot_->projectAt(index.row());
    if (!p) return QVariant();
    const auto column = columnAt(index.column());
    switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole: {
            // The check box column is named by its project for screen readers.
            if (!column) return role == Qt::AccessibleTextRole ? QVariant(p->name) : QVariant();
            const QString text =
                TarnColumns::projectCellText(*column, p->name, p->size, p->filesCount);
            return text.isNull() ? TarnCore::novalue() : text;
        }
        case Qt::CheckStateRole:
            if (column) return QVariant();
            return p->shown ? Qt::Checked : Qt::Unchecked;
        case Qt::TextAlignmentRole:
            if (column == TarnProjectColumn::Project) return QVariant();
            return int(Qt::AlignRight | Qt::AlignVCenter);
        default:
            return QVariant();
    }
}

bool ProjectsModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid) || role != Qt::CheckStateRole ||
        columnAt(index.column())) {
        return false;
    }
    emit checkStateProject(index.row(), value.toInt() == Qt::Checked);
    return true;
}

QVariant ProjectsModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    if (role == IdentifierRole) return columnIdentifier(section);
    if (role != Qt::DisplayRole && role != Qt::AccessibleTextRole) return QVariant();
    const auto column = columnAt(section);
    return column ? TarnColumns::title(*column) : QStringLiteral("Show");
}

Qt::ItemFlags ProjectsModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemNeverHasChildren;
    if (!columnAt(index.column())) f |= Qt::ItemIsUserCheckable;
    return f;
}
