#include "sheets/SheetSupport.h"

#include <QCheckBox>
#include <QDialog>
#include <QHeaderView>
#include <QPushButton>
#include <QTableView>

void SheetSupport::name(QWidget* widget, const QString& name) {
    widget->setObjectName(name);
    widget->setAccessibleName(name);
}

void SheetSupport::makeSheet(QDialog* dialog, const QString& name, const QString& title) {
    SheetSupport::name(dialog, name);
    dialog->setWindowTitle(title);
    dialog->setWindowModality(Qt::WindowModal);
}

QPushButton* SheetSupport::button(QWidget* parent, const QString& name, const QString& text) {
    auto* b = new QPushButton(text, parent);
    SheetSupport::name(b, name);
    b->setAutoDefault(false);
    return b;
}

QCheckBox* SheetSupport::checkBox(QWidget* parent, const QString& name, const QString& text) {
    auto* box = new QCheckBox(text, parent);
    SheetSupport::name(box, name);
    return box;
}

QTableView* SheetSupport::makeTable(QWidget* parent, const QString& name,
                                    QAbstractItemModel* model) {
    auto* table = new QTableView(parent);
    SheetSupport::name(table, name);
    table->setModel(model);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setAlternatingRowColors(true);
    table->setWordWrap(false);
    table->verticalHeader()->hide();
    table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    table->horizontalHeader()->setHighlightSections(false);
    return table;
}
