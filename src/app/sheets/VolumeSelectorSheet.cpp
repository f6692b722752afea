#include "sheets/VolumeSelectorSheet.h"

#include <QCheckBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "models/VolumeListModel.h"
#include "sheets/SheetSupport.h"

VolumeSelectorSheet::VolumeSelectorSheet(const QStringList& volumes, QWidget* parent)
    : QDialog(parent), model_(new VolumeListModel(volumes, this)) {
    SheetSupport::makeSheet(this, QStringLiteral("TarnVolumeSelector"),
                            QStringLiteral("Scan all volumes"));

    auto* heading = SheetSupport::heading(this, QStringLiteral("Choose the volumes to scan"));
    table_ = SheetSupport::makeTable(this, QStringLiteral("VolumesTable"), model_);
    table_->horizontalHeader()->setSectionResizeMode(0, QHeaderView::ResizeToContents);
    table_->horizontalHeader()->setStretchLastSection(true);

    selectAll_ = new QCheckBox(this);
    SheetSupport::name(selectAll_, QStringLiteral("delectDeselectAll"));
    selectAll_->setChecked(true);
    selectAll_->setText(TarnVolumeSelector::selectAllTitle(true));
    connect(selectAll_, &QCheckBox::clicked, this, &VolumeSelectorSheet::delectDeselectAll);

    auto* go = SheetSupport::button(this, QStringLiteral("pushGo"), QStringLiteral("Go"));
    go->setDefault(true);
    auto* cancel =
        SheetSupport::button(this, QStringLiteral("pushCancel"), QStringLiteral("Cancel"));
    connect(go, &QPushButton::clicked, this, &VolumeSelectorSheet::pushGo);
    connect(cancel, &QPushButton::clicked, this, &VolumeSelectorSheet::pushCancel);

    auto* buttons = new QHBoxLayout();
    buttons->addWidget(selectAll_);
    buttons->addStretch(1);
    buttons->addWidget(cancel);
    buttons->addWidget(go);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(heading);
    layout->addWidget(table_, 1);
    layout->addLayout(buttons);
    resize(520, 320);
}

QStringList VolumeSelectorSheet::createResultingArray() const {
    return model_->selector().createResultingArray();
}

void VolumeSelectorSheet::delectDeselectAll(bool state) {
    selectAll_->setChecked(state);
    selectAll_->setText(model_->delectDeselectAll(state));
}

void VolumeSelectorSheet::pushGo() {
    done(1);
}

void VolumeSelectorSheet::pushCancel() {
    done(0);
}
