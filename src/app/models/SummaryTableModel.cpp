#include "models/SummaryTableModel.h"

#include "items/TarnFileSize.h"

namespace {

QString sizeText(quint64 size) {
    return TarnFileSize::toHumanBytes(double(size));
}

}  // namespace

SummaryTableModel::SummaryTableModel(QObject* parent)
    : QAbstractTableModel(parent), snapshot_(std::make_shared<const TarnViewSnapshot>()) {}

const QStringList& SummaryTableModel::labels() {
    static const QStringList names = {
        QStringLiteral("Items In Database"), QStringLiteral("Projects count"),
        QStringLiteral("Filtered Items"),    QStringLiteral("Selected Items"),
        QStringLiteral("Filtered Size"),     QStringLiteral("Selected Size")};
    return names;
}

void SummaryTableModel::setSnapshot(std::shared_ptr<const TarnViewSnapshot> snapshot) {
    snapshot_ = snapshot ? std::move(snapshot) : std::make_shared<const TarnViewSnapshot>();
    emit dataChanged(index(0, 0), index(0, columnCount() - 1));
}

void SummaryTableModel::setSelection(qsizetype selectedItems, quint64 selectedSize) {
    selectedItems_ = selectedItems;
    selectedSize_ = selectedSize;
    emit dataChanged(index(0, 0), index(0, columnCount() - 1));
}

QString SummaryTableModel::text(const QString& label) const {
    const TarnViewSnapshot& s = *snapshot_;
    switch (labels().indexOf(label)) {
        case 0:
            return QString::number(s.allItemsCount());
        case 1:
            return QString::number(s.projectsCount());
        case 2:
            return QString::number(s.rowCount());
        case 3:
            return QString::number(selectedItems_);
        case 4:
            return sizeText(s.filteredSize());
        case 5:
            return sizeText(selectedSize_);
        default:
            return QString();
    }
}

int SummaryTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : 1;
}

int SummaryTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : int(labels().size());
}

QVariant SummaryTableModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) return QVariant();
    const QString& label = labels().at(index.column());
    switch (role) {
        case Qt::DisplayRole:
        case Qt::AccessibleTextRole:
            return text(label);
        case Qt::AccessibleDescriptionRole:
            return label;
        case Qt::TextAlignmentRole:
            return int(Qt::AlignCenter);
        default:
            return QVariant();
    }
}

QVariant SummaryTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation == Qt::Horizontal && section >= 0 && section < columnCount() &&
        (role == Qt::DisplayRole || role == Qt::AccessibleTextRole)) {
        return labels().at(section);
    }
    return QAbstractTableModel::headerData(section, orientation, role);
}
