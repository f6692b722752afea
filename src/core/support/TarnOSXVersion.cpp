#include "support/TarnOSXVersion.h"

#include <QSysInfo>

QString TarnOSXVersion::description() {
    static const QString text =
#ifdef Q_OS_MACOS
        QSysInfo::productVersion();
#else
        QSysInfo::prettyProductName();
#endif
    return text;
}
