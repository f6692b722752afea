#include "readers/UIDtoBentoObj.h"

#include "log/xConsole.h"

bool UIDtoBentoObj::missingNode() {
    TARN_LOG(QStringLiteral("Error in UID tree - nil object"));
    return false;
}
