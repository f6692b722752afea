#include "support/TarnPreferences.h"

#include <QFile>
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
    // The platform's default script, a resource of the core (see README):
    // AppleScript on macOS, a shell script elsewhere. Null when missing.
#ifdef Q_OS_MACOS
    QFile file(QStringLiteral(":/tarn/basescript.applescript"));
#else
    QFile file(QStringLiteral(":/tarn/basescript.sh"));
#endif
    if (!file.open(QIODevice::ReadOnly)) return QString();
    return QString::fromUtf8(file.readAll());
}

QString TarnPreferences::defaultExternalApplication() {
#ifdef Q_OS_MACOS
    return QStringLiteral("net.mediaarea.mediainfo.mac");
#else
    // MediaInfo's GUI (Debian package "mediainfo-gui"): a desktop entry and a command.
    return QStringLiteral("mediainfo-gui");
#endif
}

QVariant TarnPreferences::defaultValue(const QString& key) {
    if (key == QLatin1String(kShowOnlyExistingFiles)) return 1;
    if (key == QLatin1String(kScanMDB)) return 1;
    if (key == QLatin1String(kScanMXF)) return 1;
    if (key == QLatin1String(kExternalAppBundleID)) return defaultExternalApplication();
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
