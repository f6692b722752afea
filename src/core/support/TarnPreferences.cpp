#include "support/TarnPreferences.h"

#include <QSettings>

#include <memory>

namespace {

std::unique_ptr<QSettings> openSettings() {
    QByteArray file = qgetenv("TARN_SETTINGS");
    if (!file.isEmpty()) {
        return std::make_unique<QSettings>(QString::fromLocal8Bit(file), QSettings::IniFormat);
    }
    return std::make_unique<QSettings>(QStringLiteral("Tarn"), QStringLiteral("Tarn"));
}

QVariantMap defaultVisibleColumns() {
    QVariantMap columns;
    for (const char* shown : {"IconCellID", "BitsCellID", "ClipnameCellID", "CompressionCellID",
                              "DateCellID", "FilenameCellID", "FramerateCellID", "KindCellID",
                              "PathCellID", "ProjectCellID", "SamplerateCellID", "SizeCellID"}) {
        columns.insert(QString::fromLatin1(shown), 1);
    }
    for (const char* hidden : {"ExistsCellID", "hash", "materialPackageUID", "filePackageUID",
                               "sourceFileID", "sourceTapeID"}) {
        columns.insert(QString::fromLatin1(hidden), 0);
    }
    return columns;
}

}  // namespace

TarnPreferences::TarnPreferences() {
    auto settings = openSettings();
    for (const QString& key : settings->allKeys()) stored_.insert(key, settings->value(key));
}

TarnPreferences* TarnPreferences::shared() {
    static TarnPreferences* instance = new TarnPreferences();
    return instance;
}

QString TarnPreferences::basescript() {
    // Reads the paths that Tarn put on the clipboard (one per line, separated
    // by carriage returns) and opens each in the external application.
    return QStringLiteral(
        "set thePaths to the clipboard as text\n"
        "set AppleScript's text item delimiters to return\n"
        "set theItems to text items of thePaths\n"
        "set AppleScript's text item delimiters to \"\"\n"
        "repeat with p in theItems\n"
        "\tif (length of p) > 0 then\n"
        "\t\ttell application \"Finder\" to open (POSIX file p as alias)\n"
        "\tend if\n"
        "end repeat\n");
}

QVariant TarnPreferences::defaultValue(const QString& key) {
    if (key == QLatin1String(kShowOnlyExistingFiles)) return 1;
    if (key == QLatin1String(kScanMDB)) return 1;
    if (key == QLatin1String(kScanMXF)) return 1;
    if (key == QLatin1String(kExternalAppBundleID))
        return QStringLiteral("net.mediaarea.mediainfo.mac");
    if (key == QLatin1String(kExtApplescript)) return basescript();
    if (key == QLatin1String(kVisibleColumns)) return defaultVisibleColumns();
    return QVariant();
}

QVariant TarnPreferences::value(const QString& key) const {
    QReadLocker locker(&lock_);
    auto o = overrides_.constFind(key);
    if (o != overrides_.constEnd()) return *o;
    auto s = stored_.constFind(key);
    if (s != stored_.constEnd()) return *s;
    return defaultValue(key);
}

int TarnPreferences::integer(const QString& key) const {
    return value(key).toInt();
}

QString TarnPreferences::string(const QString& key) const {
    return value(key).toString();
}

void TarnPreferences::setValue(const QString& key, const QVariant& v) {
    {
        QWriteLocker locker(&lock_);
        stored_.insert(key, v);
    }
    auto settings = openSettings();
    settings->setValue(key, v);
}

void TarnPreferences::setRunOverride(const QString& key, const QVariant& v) {
    QWriteLocker locker(&lock_);
    overrides_.insert(key, v);
}

void TarnPreferences::clearRunOverrides() {
    QWriteLocker locker(&lock_);
    overrides_.clear();
}

void TarnPreferences::resetToDefaults() {
    {
        QWriteLocker locker(&lock_);
        stored_.clear();
    }
    auto settings = openSettings();
    settings->clear();
}
