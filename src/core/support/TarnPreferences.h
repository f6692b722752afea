#pragma once

#include <QHash>
#include <QReadWriteLock>
#include <QString>
#include <QVariant>

// The user's preferences: QSettings under the same key names as the desktop
// program has always used, with the defaults registered in one place.
//
// Values are read once and cached (scanner threads read "ScanMXF" per file).
// A run override (`tarn scan --no-mdb`, a test) changes a value for this
// process only and is never written. The environment variable TARN_SETTINGS
// names an INI file to use instead of the user's settings (tests, demos).
class TarnPreferences {
  public:
    static constexpr const char* kShowOnlyExistingFiles = "ShowOnlyExistingFiles";
    static constexpr const char* kScanMDB = "ScanMDB";
    static constexpr const char* kScanMXF = "ScanMXF";
    static constexpr const char* kExternalAppBundleID = "ExternalAppBundleID";
    static constexpr const char* kExtApplescript = "ExtApplescript";
    static constexpr const char* kVisibleColumns = "kUserDefaultsKeyVisisbleColumns";

    static TarnPreferences* shared();

    // The registered default of a key (invalid when the key has none).
    static QVariant defaultValue(const QString& key);
    // The default script handed the selected files' paths: the resource
    // "basescript" of the platform (see README); null when it is missing.
    static QString basescript();
    // "net.mediaarea.mediainfo.mac" on macOS, "mediainfo-gui" elsewhere.
    static QString defaultExternalApplication();

    int integer(const QString& key) const;
    QString string(const QString& key) const;
    QVariant value(const QString& key) const;

    // Stores the value in the user's settings.
    void setValue(const QString& key, const QVariant& value);
    // For this run only; never written.
    void setRunOverride(const QString& key, const QVariant& value);
    void clearRunOverrides();
    // Erases the whole settings domain (the preferences' "reset to defaults").
    void resetToDefaults();

  private:
    TarnPreferences();

    mutable QReadWriteLock lock_;
    QHash<QString, QVariant> stored_;
    QHash<QString, QVariant> overrides_;
};
