#include "models/DatabaseTableModel.h"

#include <QFileInfo>
#include <QMimeData>
#include <QSet>
#include <QUrl>

#include <algorithm>

#include "database/TarnCore.h"

DatabaseTableModel::DatabaseTableModel(QObject* parent)
    : QAbstractTableModel(parent), snapshot_(std::make_shared<const TarnViewSnapshot>()) {}

void DatabaseTableModel::setSnapshot(std::shared_ptr<const TarnViewSnapshot> snapshot) {
    if (!snapshot) snapshot = std::make_shared<const TarnViewSnapshot>();
    // The same rows keep the view's selection and scroll position; only the
    // texts may have changed (a file found missing, say).
    if (snapshot_->showsSameRows(*snapshot)) {
        snapshot_ = std::move(snapshot);
        if (rowCount() > 0) emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
        return;
    }
    beginResetModel();
    snapshot_ = std::move(snapshot);
    endResetModel();
}

void DatabaseTableModel::setItemIcon(const QIcon& icon) {
    icon_ = icon;
    if (rowCount() > 0) {
        const int icons = sectionOf(TarnColumn::Icon);
        emit dataChanged(index(0, icons), index(rowCount() - 1, icons), {Qt::DecorationRole});
    }
}

TarnColumn DatabaseTableModel::columnAt(int section) {
    return TarnColumns::all().value(section, TarnColumn::Icon);
}

int DatabaseTableModel::sectionOf(TarnColumn column) {
    return int(TarnColumns::all().indexOf(column));
}

int DatabaseTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(snapshot_->rowCount());
}

int DatabaseTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(TarnColumns::all().size());
}

QString DatabaseTableModel::cellText(int row, int section) const {
    const TarnDatabaseItem* item = snapshot_->itemAt(row);
    if (!item) return TarnCore::novalue();
    const QString text = TarnColumns::cellText(columnAt(section), *item);
    return text.isNull() ? TarnCore::novalue() : text;
}

QVariant DatabaseTableModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return QVariant();
    const TarnColumn column = columnAt(index.column());
    switch (role) {
        case Qt::DisplayRole:
            if (column == TarnColumn::Icon) return QVariant();
            return cellText(index.row(), index.column());
        case Qt::DecorationRole:
            return column == TarnColumn::Icon ? QVariant(icon_) : QVariant();
        case Qt::ToolTipRole:
            return column == TarnColumn::Path ? QVariant(cellText(index.row(), index.column()))
                                              : QVariant();
        // Screen readers say what the icon stands for and which column a
        // text belongs to.
        case Qt::AccessibleTextRole:
            if (column == TarnColumn::Icon) return QStringLiteral("Media file");
            return cellText(index.row(), index.column());
        case Qt::AccessibleDescriptionRole:
            return TarnColumns::title(column);
        default:
            return QVariant();
    }
}

QVariant DatabaseTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) {
        return QAbstractTableModel::headerData(section, orientation, role);
    }
    const TarnColumn column = columnAt(section);
    if (role == Qt::DisplayRole) {
        return column == TarnColumn::Icon ? QString() : TarnColumns::title(column);
    }
    if (role == Qt::AccessibleTextRole || role == TitleRole) return TarnColumns::title(column);
    if (role == IdentifierRole) return TarnColumns::identifier(column);
    return QVariant();
}

Qt::ItemFlags DatabaseTableModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled |
           Qt::ItemNeverHasChildren;
}

QStringList DatabaseTableModel::mimeTypes() const {
    return {QStringLiteral("text/uri-list"), QStringLiteral("text/plain")};
}

QMimeData* DatabaseTableModel::mimeData(const QModelIndexList& indexes) const {
    QList<int> rows;
    for (const QModelIndex& index : indexes) rows.append(index.row());
    std::sort(rows.begin(), rows.end());
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());

    QList<QUrl> urls;
    QStringList names;
    for (const int row : rows) {
        const TarnDatabaseItem* item = snapshot_->itemAt(row);
        if (!item || !item->DB_FileExists || item->DB_itemPath.isEmpty()) continue;
        urls.append(QUrl::fromLocalFile(item->DB_itemPath));
        names.append(QFileInfo(item->DB_itemPath).fileName());
    }
    if (urls.isEmpty()) return nullptr;
    auto* mime = new QMimeData();
    mime->setUrls(urls);
    mime->setText(names.join(QLatin1Char('\n')));
    return mime;
}

Qt::DropActions DatabaseTableModel::supportedDragActions() const {
    return Qt::CopyAction;
}
