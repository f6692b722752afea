#include "support/TarnVersionCheck.h"

#include <QMutex>
#include <QMutexLocker>

#include "support/TarnUtilities.h"
#include "support/TarnVersion.h"

namespace {

QMutex& overrideMutex() {
    static QMutex mutex;
    return mutex;
}
QString& overrideSlot() {
    static QString url;
    return url;
}

QString withoutTrailingSlash(QString url) {
    while (url.endsWith(QLatin1Char('/'))) url.chop(1);
    return url;
}

}  // namespace

QString TarnVersionCheck::siteBaseUrl() {
    {
        QMutexLocker lock(&overrideMutex());
        if (!overrideSlot().isEmpty()) return overrideSlot();
    }
    const QByteArray fromEnvironment = qgetenv("TARN_SITE_URL");
    if (!fromEnvironment.isEmpty())
        return withoutTrailingSlash(QString::fromLocal8Bit(fromEnvironment));
    return withoutTrailingSlash(QStringLiteral(TARN_SITE_URL));
}

void TarnVersionCheck::setSiteBaseUrl(const QString& url) {
    QMutexLocker lock(&overrideMutex());
    overrideSlot() = withoutTrailingSlash(url);
}

QString TarnVersionCheck::versionPageUrl() {
    return siteBaseUrl() + QStringLiteral("/trnversion/?");
}

QString TarnVersionCheck::sitePageUrl() {
    return siteBaseUrl() + QStringLiteral("/trn");
}

QString TarnVersionCheck::installedVersion() {
    return TarnUtilities::versionText();
}

bool TarnVersionCheck::differs(const QString& reply, const QString& installed) {
    return reply != installed;
}

QString TarnVersionCheck::questionText(const QString& reply, const QString& installed) {
    return QStringLiteral(
               "Current version on the website:\n%1 \n\nYou Have version installed:\n%2\n")
        .arg(reply, installed);
}

QString TarnVersionCheck::questionDetail() {
    return QStringLiteral("Open Tarn Website?");
}

QString TarnVersionCheck::resultText(const QString& reply) {
    return QStringLiteral("Current version on the website:\n%1").arg(reply);
}

QString TarnVersionCheck::errorText() {
    return QStringLiteral("Error in http request");
}

QString TarnVersionCheck::logLine(const QString& host, const QString& reply) {
    return host + QStringLiteral(": ") + reply + QLatin1Char('\n');
}
