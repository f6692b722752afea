#pragma once

#include <QObject>

#include <functional>

class CommandGuard;
class CoreAccess;
class FilterCommands;
class MainWindow;
class PreferencesSheet;

// The commands of the preferences sheet. Each control stores its value under
// its preference key as soon as it changes ("ShowOnlyExistingFiles",
// "ScanMDB", "ScanMXF", "ExternalAppBundleID", "ExtApplescript").
class PreferencesCommands : public QObject {
    Q_OBJECT
  public:
    PreferencesCommands(CoreAccess* access, CommandGuard* guard, FilterCommands* filters,
                        MainWindow* window, QObject* parent);

    PreferencesSheet* preferencesSheet() const { return sheet_; }
    // The controls from the stored values.
    void fillControls();
    // What ResetPreferencesToDefaults does last (quits the application).
    void setTerminate(std::function<void()> terminate) { terminate_ = std::move(terminate); }

  public slots:
    void ShowPreferences();
    void ClosePreferences();
    void ResetPreferencesToDefaults();
    void ExternalBundleEndEdit(const QString& text);
    void SaveScript();
    void ResetScript();
    void SetExistingCheck(bool state);
    void SetScamMDBCheck(bool state);
    void SetScamMXFCheck(bool state);

  private:
    CoreAccess* access_;
    CommandGuard* guard_;
    FilterCommands* filters_;
    PreferencesSheet* sheet_;
    std::function<void()> terminate_;
};
