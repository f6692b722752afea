#include "sheets/ProjectsSummarySheet.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "sheets/SheetSupport.h"

ProjectsSummarySheet::ProjectsSummarySheet(QAbstractItemModel* projects, QWidget* parent)
    : QDialog(parent) {
    SheetSupport::makeSheet(this, QStringLiteral("ProjectsSummaryWindow"),
                            QStringLiteral("Projects Summary"));
    table_ = SheetSupport::makeTable(this, QStringLiteral("ProjectSumaryTable"), projects);
    table_->setAccessibleDescription(QStringLiteral("Size and number of files of each project"));
    table_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    table_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::Stretch);

    export_ = SheetSupport::button(this, QStringLiteral("ExportProjectSummaryButton"),
                                   QStringLiteral("Export"));
    auto* close =
        SheetSupport::button(this, QStringLiteral("CloseProjectsSummary"), QStringLiteral("Close"));
    close->setDefault(true);
    connect(export_, &QPushButton::clicked, this, [this] { emit exportClicked(export_); });
    connect(close, &QPushButton::clicked, this, &ProjectsSummarySheet::closeClicked);

    auto* buttons = new QHBoxLayout();
    buttons->addWidget(export_);
    buttons->addStretch(1);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(SheetSupport::heading(this, QStringLiteral("Projects summary")));
    layout->addWidget(table_, 1);
    layout->addLayout(buttons);
    resize(520, 360);
}
