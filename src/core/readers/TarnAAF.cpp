#include "TarnAAF.h"

#include "xConsole.h"

bool TarnAAF::openFile(const QString& path, TarnProgressIndicator* indicator) {
    (void)path;
    localWorkInProgressIndicator = indicator;
    TARN_LOG(QStringLiteral("AAf file : open"));
    return false;
}
