#include "sheets/FilterSheet.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QVBoxLayout>

#include "sheets/SheetSupport.h"
#include "status/TarnVolumeSelector.h"

namespace {

struct FlagBox {
    const char* name;
    const char* title;
};

// In Flag order.
constexpr FlagBox kBoxes[FilterSheet::kFlags] = {
    {"ShowOnlyPrecomputesCheckBox", "Precomputes"},
    {"ShowOnlyImportedMediaCheckbox", "Imported media"},
    {"ShowOnlyAudioMediaCheckbox", "Audio media"},
    {"ShowOnlyNonPortableCheckBox", "Non-portable file names"},
    {"ShowOnlyBadUMIDCheckbox", "Bad UMIDs"},
    {"ShowOnlyUnreferencedMediaCheckbox", "Media no index lists"},
};

}  // namespace

FilterSheet::FilterSheet(QAbstractItemModel* projects, QWidget* parent) : QDialog(parent) {
    SheetSupport::makeSheet(this, QStringLiteral("FilterSheet"), QStringLiteral("Filter"));

    auto* types = new QGroupBox(QStringLiteral("Show only these types"), this);
    auto* problems = new QGroupBox(QStringLiteral("Show only media with these problems"), this);
    auto* typesLayout = new QVBoxLayout(types);
    auto* problemsLayout = new QVBoxLayout(problems);
    for (int i = 0; i < kFlags; ++i) {
        QCheckBox* box = SheetSupport::checkBox(this, QString::fromLatin1(kBoxes[i].name),
                                                QString::fromLatin1(kBoxes[i].title));
        boxes_[size_t(i)] = box;
        (i < 3 ? typesLayout : problemsLayout)->addWidget(box);
        connect(box, &QCheckBox::clicked, this,
                [this, i](bool state) { emit flagClicked(Flag(i), state); });
    }

    projects_ = SheetSupport::makeTable(this, QStringLiteral("ProjectFilterTable"), projects);
    projects_->setAccessibleDescription(QStringLiteral("Projects shown in the database table"));
    projects_->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    projects_->horizontalHeader()->setSectionResizeMode(1, QHeaderView::Stretch);

    selectAll_ = SheetSupport::checkBox(this, QStringLiteral("FilterSelectAllButton"), QString());
    setSelectAllState(true);
    connect(selectAll_, &QCheckBox::clicked, this, &FilterSheet::selectAllClicked);

    auto* reset =
        SheetSupport::button(this, QStringLiteral("ResetFilterState"), QStringLiteral("Reset"));
    auto* close =
        SheetSupport::button(this, QStringLiteral("CloseFilter"), QStringLiteral("Close"));
    close->setDefault(true);
    connect(reset, &QPushButton::clicked, this, &FilterSheet::resetClicked);
    connect(close, &QPushButton::clicked, this, &FilterSheet::closeClicked);

    auto* flags = new QHBoxLayout();
    flags->addWidget(types);
    flags->addWidget(problems);
    auto* buttons = new QHBoxLayout();
    buttons->addWidget(selectAll_);
    buttons->addStretch(1);
    buttons->addWidget(reset);
    buttons->addWidget(close);
    auto* layout = new QVBoxLayout(this);
    layout->addWidget(SheetSupport::heading(this, QStringLiteral("Filter")));
    layout->addLayout(flags);
    layout->addWidget(projects_, 1);
    layout->addLayout(buttons);
    resize(560, 440);
}

void FilterSheet::setFlags(const TarnFilter::Snapshot& filter) {
    const bool states[kFlags] = {filter.precomputes, filter.importedMedia,
                                 filter.audioMedia,  filter.nonPortableFiles,
                                 filter.badUMID,     filter.unreferenced};
    for (int i = 0; i < kFlags; ++i) boxes_[size_t(i)]->setChecked(states[i]);
}

void FilterSheet::setSelectAllState(bool state) {
    selectAll_->setChecked(state);
    selectAll_->setText(TarnVolumeSelector::selectAllTitle(state));
}
