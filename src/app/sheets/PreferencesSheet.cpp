#include "sheets/PreferencesSheet.h"

#include <QCheckBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "sheets/SheetSupport.h"

PreferencesSheet::PreferencesSheet(QWidget* parent) : QDialog(parent) {
    SheetSupport::makeSheet(this, QStringLiteral("Preferences"), QStringLiteral("Preferences"));

    existing_ = SheetSupport::checkBox(this, QStringLiteral("PropertiesExistingFiles"),
                                       QStringLiteral("Show only existing files"));
    scanMdb_ = SheetSupport::checkBox(this, QStringLiteral("PropertiesScanMDB"),
                                      QStringLiteral("Read media databases while scanning"));
    scanMxf_ = SheetSupport::checkBox(this, QStringLiteral("PropertiesScanMXF"),
                                      QStringLiteral("Read MXF files that no index lists"));
    connect(existing_, &QCheckBox::clicked, this, &PreferencesSheet::existingFilesClicked);
    connect(scanMdb_, &QCheckBox::clicked, this, &PreferencesSheet::scanMDBClicked);
    connect(scanMxf_, &QCheckBox::clicked, this, &PreferencesSheet::scanMXFClicked);

    bundle_ = new QLineEdit(this);
    SheetSupport::name(bundle_, QStringLiteral("ExternalBundleTextField"));
    connect(bundle_, &QLineEdit::editingFinished, this,
            [this] { emit externalBundleEdited(bundle_->text()); });

    script_ = new QPlainTextEdit(this);
    SheetSupport::name(script_, QStringLiteral("ApplescriptTextview"));
    // The script runs as typed: no wrapping, a fixed-pitch font.
    script_->setLineWrapMode(QPlainTextEdit::NoWrap);
    script_->setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    auto* save = SheetSupport::button(this, QStringLiteral("SaveScript"), QStringLiteral("Save"));
    auto* resetScript =
        SheetSupport::button(this, QStringLiteral("ResetScript"), QStringLiteral("Reset script"));
    connect(save, &QPushButton::clicked, this, &PreferencesSheet::saveScriptClicked);
    connect(resetScript, &QPushButton::clicked, this, &PreferencesSheet::resetScriptClicked);

    auto* resetAll = SheetSupport::button(this, QStringLiteral("ResetPreferencesToDefaults"),
                                          QStringLiteral("Reset to defaults and quit"));
    auto* close =
        SheetSupport::button(this, QStringLiteral("ClosePreferences"), QStringLiteral("Close"));
    close->setDefault(true);
    connect(resetAll, &QPushButton::clicked, this, &PreferencesSheet::resetToDefaultsClicked);
    connect(close, &QPushButton::clicked, this, &PreferencesSheet::closeClicked);

    auto* form = new QFormLayout();
    form->addRow(QStringLiteral("External application:"), bundle_);
    auto* scriptButtons = new QHBoxLayout();
    scriptButtons->addStretch(1);
    scriptButtons->addWidget(resetScript);
    scriptButtons->addWidget(save);
    auto* buttons = new QHBoxLayout();
    buttons->addWidget(resetAll);
    buttons->addStretch(1);
    buttons->addWidget(close);

    auto* layout = new QVBoxLayout(this);
    layout->addWidget(SheetSupport::heading(this, QStringLiteral("Preferences")));
    layout->addWidget(existing_);
    layout->addWidget(scanMdb_);
    layout->addWidget(scanMxf_);
    layout->addLayout(form);
    layout->addWidget(new QLabel(QStringLiteral("Script run on the selected files:"), this));
    layout->addWidget(script_, 1);
    layout->addLayout(scriptButtons);
    layout->addLayout(buttons);
    resize(560, 480);
}
