#include "actions/TarnNewActionWindow.h"

#include <QButtonGroup>
#include <QCheckBox>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include "actions/TarnAlert.h"
#include "actions/TarnNewActionRules.h"
#include "support/TarnUtilities.h"

TarnNewActionWindow::TarnNewActionWindow(const QList<TarnItemPtr>& items, QWidget* parent)
    : QDialog(parent), properties_(TarnNewActionRules::optionsForSelection(items)) {
    setObjectName(QStringLiteral("TarnNewActionWindow"));
    setWindowTitle(tr("New Action"));
    buildControls();
    layOutControls();
    windowDidLoad();
}

TarnNewActionWindow::TarnNewActionWindow(const std::vector<TarnItemPtr>& items, QWidget* parent)
    : TarnNewActionWindow(QList<TarnItemPtr>(items.begin(), items.end()), parent) {}

template <typename Control>
Control* TarnNewActionWindow::named(Control* control, const QString& name) {
    control->setObjectName(name);
    control->setAccessibleName(name);
    return control;
}

void TarnNewActionWindow::buildControls() {
    summaryText_ = named(new QLabel(this), QStringLiteral("summaryText"));
    summaryText_->setFrameShape(QFrame::StyledPanel);
    summaryText_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    summaryText_->setMargin(6);
    summaryText_->setMinimumHeight(summaryText_->fontMetrics().lineSpacing() * 3 + 16);

    radioCopy_ = named(new QRadioButton(tr("Copy"), this), QStringLiteral("RadioCopy"));
    radioMove_ = named(new QRadioButton(tr("Move"), this), QStringLiteral("RadioMove"));
    radioDelete_ = named(new QRadioButton(tr("Delete"), this), QStringLiteral("RadioDelete"));
    auto* radios = new QButtonGroup(this);
    for (QRadioButton* radio : {radioCopy_, radioMove_, radioDelete_}) radios->addButton(radio);
    connect(radios, &QButtonGroup::buttonToggled, this, [this](QAbstractButton* radio, bool on) {
        if (on) RadioChanged(radio);
    });

    destinationText_ = named(new QLineEdit(this), QStringLiteral("destinationText"));
    destinationText_->setMinimumWidth(360);
    connect(destinationText_, &QLineEdit::editingFinished, this,
            &TarnNewActionWindow::DestinationEditingEnd);
    select_ = named(new QPushButton(tr("Select"), this), QStringLiteral("Select"));
    connect(select_, &QPushButton::clicked, this, &TarnNewActionWindow::SelectDestination);

    checkProjects_ =
        named(new QCheckBox(tr("Create projects folders"), this), QStringLiteral("CheckProjects"));
    checkMXF_ = named(new QCheckBox(tr("Create MXF folders"), this), QStringLiteral("CheckMXF"));
    checkKeepOriginalFolders_ = named(new QCheckBox(tr("Keep original folders"), this),
                                      QStringLiteral("CheckKeepOriginalFolders"));
    checkKeepPMR_ = named(new QCheckBox(tr("Keep pmr"), this), QStringLiteral("CheckKeepPMR"));
    checkImSure_ = named(new QCheckBox(tr("I'm sure"), this), QStringLiteral("CheckImSure"));
    connect(checkProjects_, &QCheckBox::toggled, this, &TarnNewActionWindow::checkSetFolders);
    connect(checkMXF_, &QCheckBox::toggled, this, &TarnNewActionWindow::checkSetMXF);
    connect(checkKeepOriginalFolders_, &QCheckBox::toggled, this,
            &TarnNewActionWindow::checkSetKeepOriginalFolders);
    connect(checkKeepPMR_, &QCheckBox::toggled, this, &TarnNewActionWindow::checkSetKeepPMR);
    connect(checkImSure_, &QCheckBox::toggled, this, &TarnNewActionWindow::checkSetSure);

    go_ = named(new QPushButton(tr("GO"), this), QStringLiteral("GO"));
    cancel_ = named(new QPushButton(tr("Cancel"), this), QStringLiteral("Cancel"));
    // Return ends the destination's editing; only a click (or Space) presses GO.
    for (QPushButton* button : {select_, go_, cancel_}) button->setAutoDefault(false);
    connect(go_, &QPushButton::clicked, this, &TarnNewActionWindow::PushGo);
    connect(cancel_, &QPushButton::clicked, this, &TarnNewActionWindow::PushCancel);
}

void TarnNewActionWindow::layOutControls() {
    auto* radioRow = new QHBoxLayout;
    for (QRadioButton* radio : {radioCopy_, radioMove_, radioDelete_}) radioRow->addWidget(radio);
    radioRow->addStretch();
    auto* destinationRow = new QHBoxLayout;
    auto* destinationLabel = new QLabel(tr("Destination:"), this);
    destinationLabel->setBuddy(destinationText_);
    destinationRow->addWidget(destinationLabel);
    destinationRow->addWidget(destinationText_, 1);
    destinationRow->addWidget(select_);
    auto* folders = new QGridLayout;
    folders->addWidget(checkProjects_, 0, 0);
    folders->addWidget(checkMXF_, 1, 0);
    folders->addWidget(checkKeepOriginalFolders_, 2, 0);
    folders->addWidget(checkKeepPMR_, 2, 1);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(checkImSure_);
    buttons->addStretch();
    buttons->addWidget(cancel_);
    buttons->addWidget(go_);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(summaryText_);
    layout->addLayout(radioRow);
    layout->addLayout(destinationRow);
    layout->addLayout(folders);
    layout->addStretch();
    layout->addLayout(buttons);
}

void TarnNewActionWindow::windowDidLoad() {
    // Programmatic states must not run the control actions: they would write
    // the values back that they were read from.
    const QSignalBlocker blockers[] = {
        QSignalBlocker(radioCopy_),    QSignalBlocker(radioMove_),
        QSignalBlocker(radioDelete_),  QSignalBlocker(checkProjects_),
        QSignalBlocker(checkMXF_),     QSignalBlocker(checkKeepOriginalFolders_),
        QSignalBlocker(checkKeepPMR_), QSignalBlocker(checkImSure_)};
    radioCopy_->setChecked(true);
    destinationText_->setText(properties_.Destination);
    checkProjects_->setChecked(properties_.Create_projects_folders);
    checkMXF_->setChecked(properties_.Create_mxf_folders);
    checkKeepOriginalFolders_->setChecked(properties_.Keep_original_folders);
    checkKeepPMR_->setChecked(false);
    checkKeepPMR_->setEnabled(false);
    checkKeepPMR_->setHidden(true);
    checkImSure_->setChecked(properties_.Im_sure);
    updateStatusText();
}

QString TarnNewActionWindow::summary() const {
    return summaryText_->text();
}

void TarnNewActionWindow::updateStatusText() {
    const QString text = TarnNewActionRules::updateStatusText(properties_, itemsTotalSize_);
    summaryText_->setText(text);
    summaryText_->setAccessibleDescription(text);
}

void TarnNewActionWindow::RadioChanged(QAbstractButton* sender) {
    if (sender == radioCopy_ && radioCopy_->isChecked())
        properties_.Action = TarnActionOptions::copyWord();
    else if (sender == radioMove_ && radioMove_->isChecked())
        properties_.Action = TarnActionOptions::moveWord();
    else if (sender == radioDelete_ && radioDelete_->isChecked())
        properties_.Action = TarnActionOptions::deleteWord();
    updateStatusText();
}

void TarnNewActionWindow::checkSetFolders(bool on) {
    properties_.Create_projects_folders = on;
}

void TarnNewActionWindow::checkSetMXF(bool on) {
    properties_.Create_mxf_folders = on;
}

void TarnNewActionWindow::checkSetKeepOriginalFolders(bool on) {
    TarnNewActionRules::setKeepOriginalFolders(properties_, on);
    checkKeepPMR_->setEnabled(on);
    if (!on) {
        const QSignalBlocker blocker(checkKeepPMR_);
        checkKeepPMR_->setChecked(false);
    }
}

void TarnNewActionWindow::checkSetKeepPMR(bool on) {
    properties_.Keep_pmr = on;
}

void TarnNewActionWindow::checkSetSure(bool on) {
    properties_.Im_sure = on;
}

void TarnNewActionWindow::DestinationEditingEnd() {
    properties_.Destination =
        TarnUtilities::stringByRemovingPercentEncoding(destinationText_->text());
    updateStatusText();
}

void TarnNewActionWindow::SelectDestination() {
    auto* panel = new QFileDialog(this, tr("Select"));
    panel->setObjectName(QStringLiteral("SelectDestinationPanel"));
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setFileMode(QFileDialog::Directory);
    panel->setOption(QFileDialog::ShowDirsOnly);
    if (QFileInfo(properties_.Destination).isDir()) panel->setDirectory(properties_.Destination);
    connect(panel, &QFileDialog::fileSelected, this, &TarnNewActionWindow::chooseDestination);
    panel->open();
}

void TarnNewActionWindow::chooseDestination(const QString& folder) {
    const QString path = TarnUtilities::stringByRemovingPercentEncoding(folder);
    destinationText_->setText(path);
    properties_.Destination = path;
    updateStatusText();
}

void TarnNewActionWindow::PushGo() {
    const TarnNewActionRules::Verdict verdict = TarnNewActionRules::PushGo(properties_);
    updateStatusText();
    if (verdict.accepted) {
        done(kAccept);
        return;
    }
    TarnAlert::ShowDialog_with_errorName(verdict.message, verdict.detail);
}

void TarnNewActionWindow::PushCancel() {
    done(0);
}
