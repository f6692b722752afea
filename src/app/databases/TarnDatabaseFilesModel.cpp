#include "databases/TarnDatabaseFilesModel.h"

#include <QLocale>

#include "items/TarnFileSize.h"

void TarnDatabaseFilesModel::setFiles(const QList<TarnDatabaseFiles::Entry>& files) {
    beginResetModel();
    files_ = files;
    ticked_ = QList<bool>(files.size(), false);
    endResetModel();
    emit tickedCountChanged(0);
}

QList<TarnDatabaseFiles::Entry> TarnDatabaseFilesModel::tickedFiles() const {
    QList<TarnDatabaseFiles::Entry> ticked;
    for (qsizetype i = 0; i < files_.size(); ++i)
        if (ticked_.at(i)) ticked.append(files_.at(i));
    return ticked;
}

int TarnDatabaseFilesModel::tickedCount() const {
    return int(ticked_.count(true));
}

void TarnDatabaseFilesModel::setAllTicked(bool ticked) {
    if (files_.isEmpty()) return;
    ticked_.fill(ticked);
    emit dataChanged(index(0, 0), index(int(files_.size()) - 1, 0), {Qt::CheckStateRole});
    emit tickedCountChanged(tickedCount());
}

QString TarnDatabaseFilesModel::rowText(const TarnDatabaseFiles::Entry& file) {
    return QStringLiteral("%1    %2    %3\n%4")
        .arg(file.fileName, TarnFileSize::toHumanBytes(double(file.size)).trimmed(),
             QLocale().toString(file.date, QLocale::ShortFormat), file.folder);
}

int TarnDatabaseFilesModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(files_.size());
}

int TarnDatabaseFilesModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 1;
}

QVariant TarnDatabaseFilesModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid() || index.row() >= files_.size()) return {};
    const TarnDatabaseFiles::Entry& file = files_.at(index.row());
    switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return rowText(file);
        case Qt::ToolTipRole:
            return file.path;
        case Qt::CheckStateRole:
            return ticked_.at(index.row()) ? Qt::Checked : Qt::Unchecked;
        default:
            return {};
    }
}

bool TarnDatabaseFilesModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    if (!index.isValid() || index.row() >= files_.size() || role != Qt::CheckStateRole)
        return false;
    ticked_[index.row()] = value.toInt() == Qt::Checked;
    emit dataChanged(index, index, {Qt::CheckStateRole});
    emit tickedCountChanged(tickedCount());
    return true;
}

Qt::ItemFlags TarnDatabaseFilesModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable;
}

QVariant TarnDatabaseFilesModel::headerData(int section, Qt::Orientation orientation,
                                            int role) const {
    if (orientation == Qt::Horizontal && section == 0 && role == Qt::DisplayRole)
        return QStringLiteral("Items");
    return {};
}
