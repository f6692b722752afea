#include "support/TarnUtilities.h"

#include <QUrl>

#include "support/TarnVersion.h"

QString TarnUtilities::stringByRemovingPercentEncoding(const QString& text) {
    if (text.isNull() || !text.contains(QLatin1Char('%'))) return text;
    return QUrl::fromPercentEncoding(text.toUtf8());
}

QString TarnUtilities::versionText() {
    return QStringLiteral("v%1 build %2")
        .arg(QStringLiteral(TARN_VERSION_STRING), QStringLiteral(TARN_BUILD_STRING));
}
