#include "window/ColumnMenu.h"

#include <QHeaderView>
#include <QTableView>

#include "support/TarnPreferences.h"

namespace {

bool alwaysShown(const QString& identifier) {
    return identifier == QLatin1String("FilenameCellID") ||
           identifier == QLatin1String("ClipnameCellID");
}

QString visibleColumnsKey() {
    return QString::fromLatin1(TarnPreferences::kVisibleColumns);
}

}  // namespace

ColumnMenu::ColumnMenu(QTableView* table, int identifierRole, int titleRole)
    : QMenu(table), table_(table), identifierRole_(identifierRole), titleRole_(titleRole) {
    setObjectName(QStringLiteral("headerMenu"));
    setAccessibleName(QStringLiteral("Columns"));
    connect(this, &QMenu::triggered, this, &ColumnMenu::toggleColumn);
    connect(this, &QMenu::aboutToShow, this, &ColumnMenu::menuWillOpen);

    QHeaderView* header = table_->horizontalHeader();
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QHeaderView::customContextMenuRequested, this,
            [this, header](const QPoint& at) { popup(header->mapToGlobal(at)); });
}

QString ColumnMenu::identifierOf(int section) const {
    return table_->model()->headerData(section, Qt::Horizontal, identifierRole_).toString();
}

void ColumnMenu::setupHeaderMenu() {
    clear();
    const QVariant stored = TarnPreferences::shared()->value(visibleColumnsKey());
    const QVariantMap shown = stored.toMap();
    QAbstractItemModel* model = table_->model();
    for (int section = 0; section < model->columnCount(); ++section) {
        const QString identifier = identifierOf(section);
        if (alwaysShown(identifier)) continue;
        QAction* item =
            addAction(model->headerData(section, Qt::Horizontal, titleRole_).toString());
        item->setCheckable(true);
        item->setData(section);
        if (stored.isValid()) table_->setColumnHidden(section, !shown.value(identifier).toBool());
        item->setChecked(!table_->isColumnHidden(section));
    }
}

QAction* ColumnMenu::actionFor(const QString& identifier) const {
    for (QAction* item : actions()) {
        if (identifierOf(item->data().toInt()) == identifier) return item;
    }
    return nullptr;
}

void ColumnMenu::toggleColumn(QAction* item) {
    const int section = item->data().toInt();
    table_->setColumnHidden(section, !table_->isColumnHidden(section));
    item->setChecked(!table_->isColumnHidden(section));
    storeVisibility();
}

void ColumnMenu::menuWillOpen() {
    for (QAction* item : actions()) item->setChecked(!table_->isColumnHidden(item->data().toInt()));
}

void ColumnMenu::storeVisibility() const {
    QVariantMap shown;
    for (int section = 0; section < table_->model()->columnCount(); ++section) {
        shown.insert(identifierOf(section), table_->isColumnHidden(section) ? 0 : 1);
    }
    TarnPreferences::shared()->setValue(visibleColumnsKey(), shown);
}
