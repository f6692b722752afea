#pragma once

#include <QDialog>

class QCheckBox;
class QLineEdit;
class QPlainTextEdit;

// The preferences sheet: three check boxes (show only existing files, read
// media databases, read unlisted MXF files), the external application and the
// script handed the selected files. It only shows and reports; the
// application controller stores the preferences.
class PreferencesSheet : public QDialog {
    Q_OBJECT
  public:
    explicit PreferencesSheet(QWidget* parent);

    QCheckBox* propertiesExistingFiles() const { return existing_; }
    QCheckBox* propertiesScanMDB() const { return scanMdb_; }
    QCheckBox* propertiesScanMXF() const { return scanMxf_; }
    QLineEdit* externalBundleTextField() const { return bundle_; }
    QPlainTextEdit* applescriptTextview() const { return script_; }

  signals:
    void existingFilesClicked(bool state);
    void scanMDBClicked(bool state);
    void scanMXFClicked(bool state);
    void externalBundleEdited(const QString& text);
    void saveScriptClicked();
    void resetScriptClicked();
    void resetToDefaultsClicked();
    void closeClicked();

  private:
    QCheckBox* existing_;
    QCheckBox* scanMdb_;
    QCheckBox* scanMxf_;
    QLineEdit* bundle_;
    QPlainTextEdit* script_;
};
