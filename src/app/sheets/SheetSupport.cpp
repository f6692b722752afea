#include "sheets/SheetSupport.h"

#include <QCheckBox>
#include <QDialog>
#include <QHeaderView>
#include <QLabel>
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

QLabel* SheetSupport::heading(QWidget* parent, const QString& text) {
    auto* label = new QLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
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
    table->verticalHeader()->setDefaultSectionSize(table->fontMetrics().height() + 8);
    table->horizontalHeader()->setHighlightSections(false);
    return table;
}
