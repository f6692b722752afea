#include "readers/TarnAAF.h"

#include "log/xConsole.h"

bool TarnAAF::openFile(const QString& path, TarnProgressIndicator* indicator) {
    (void)path;
    localWorkInProgressIndicator = indicator;
    TARN_LOG(QStringLiteral("AAf file : open"));
    return false;
}
