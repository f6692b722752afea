#include "window/PreferencesCommands.h"

#include <QCheckBox>
#include <QCoreApplication>
#include <QLineEdit>
#include <QPlainTextEdit>

#include "database/TarnCore.h"
#include "sheets/PreferencesSheet.h"
#include "support/TarnPreferences.h"
#include "window/CommandGuard.h"
#include "window/CoreAccess.h"
#include "window/FilterCommands.h"
#include "window/MainWindow.h"

namespace {

QString key(const char* name) {
    return QString::fromLatin1(name);
}

TarnPreferences* prefs() {
    return TarnPreferences::shared();
}

}  // namespace

PreferencesCommands::PreferencesCommands(CoreAccess* access, CommandGuard* guard,
                                         FilterCommands* filters, MainWindow* window,
                                         QObject* parent)
    : QObject(parent),
      access_(access),
      guard_(guard),
      filters_(filters),
      sheet_(new PreferencesSheet(window)),
      terminate_([] { QCoreApplication::quit(); }) {
    connect(sheet_, &PreferencesSheet::existingFilesClicked, this,
            &PreferencesCommands::SetExistingCheck);
    connect(sheet_, &PreferencesSheet::scanMDBClicked, this, &PreferencesCommands::SetScamMDBCheck);
    connect(sheet_, &PreferencesSheet::scanMXFClicked, this, &PreferencesCommands::SetScamMXFCheck);
    connect(sheet_, &PreferencesSheet::externalBundleEdited, this,
            &PreferencesCommands::ExternalBundleEndEdit);
    connect(sheet_, &PreferencesSheet::saveScriptClicked, this, &PreferencesCommands::SaveScript);
    connect(sheet_, &PreferencesSheet::resetScriptClicked, this, &PreferencesCommands::ResetScript);
    connect(sheet_, &PreferencesSheet::resetToDefaultsClicked, this,
            &PreferencesCommands::ResetPreferencesToDefaults);
    connect(sheet_, &PreferencesSheet::closeClicked, this, &PreferencesCommands::ClosePreferences);
}

void PreferencesCommands::fillControls() {
    sheet_->externalBundleTextField()->setText(
        prefs()->string(key(TarnPreferences::kExternalAppBundleID)));
    sheet_->propertiesExistingFiles()->setChecked(
        prefs()->integer(key(TarnPreferences::kShowOnlyExistingFiles)) == 1);
    sheet_->propertiesScanMDB()->setChecked(prefs()->integer(key(TarnPreferences::kScanMDB)) == 1);
    sheet_->propertiesScanMXF()->setChecked(prefs()->integer(key(TarnPreferences::kScanMXF)) == 1);
    sheet_->applescriptTextview()->setPlainText(
        prefs()->string(key(TarnPreferences::kExtApplescript)));
}

void PreferencesCommands::ShowPreferences() {
    if (guard_->sheetShown() || guard_->busy()) return;
    sheet_->applescriptTextview()->setPlainText(
        prefs()->string(key(TarnPreferences::kExtApplescript)));
    sheet_->open();
}

void PreferencesCommands::ClosePreferences() {
    sheet_->accept();
}

void PreferencesCommands::ResetPreferencesToDefaults() {
    sheet_->accept();
    prefs()->resetToDefaults();
    if (terminate_) terminate_();
}

void PreferencesCommands::ExternalBundleEndEdit(const QString& text) {
    prefs()->setValue(key(TarnPreferences::kExternalAppBundleID), text);
}

void PreferencesCommands::SaveScript() {
    prefs()->setValue(key(TarnPreferences::kExtApplescript),
                      sheet_->applescriptTextview()->toPlainText());
}

void PreferencesCommands::ResetScript() {
    prefs()->setValue(key(TarnPreferences::kExtApplescript), TarnPreferences::basescript());
    sheet_->applescriptTextview()->setPlainText(
        prefs()->string(key(TarnPreferences::kExtApplescript)));
}

void PreferencesCommands::SetExistingCheck(bool state) {
    if (guard_->busy()) return;
    prefs()->setValue(key(TarnPreferences::kShowOnlyExistingFiles), state ? 1 : 0);
    filters_->clearSearchField();
    access_->change([](TarnCore& core) { core.LoadDefaults(); });
    filters_->AllTablesReload();
}

void PreferencesCommands::SetScamMDBCheck(bool state) {
    if (guard_->busy()) return;
    prefs()->setValue(key(TarnPreferences::kScanMDB), state ? 1 : 0);
}

void PreferencesCommands::SetScamMXFCheck(bool state) {
    if (guard_->busy()) return;
    prefs()->setValue(key(TarnPreferences::kScanMXF), state ? 1 : 0);
}
