#include "support/TarnUtilities.h"

#include "support/TarnFileName.h"
#include "support/TarnVersion.h"

QString TarnUtilities::stringByRemovingPercentEncoding(const QString& text) {
    if (text.isNull() || !text.contains(QLatin1Char('%'))) return text;
    return TarnFileName::removingPercentEncoding(text);
}

QString TarnUtilities::versionText() {
    return QStringLiteral("v%1 build %2")
        .arg(QStringLiteral(TARN_VERSION_STRING), QStringLiteral(TARN_BUILD_STRING));
}
