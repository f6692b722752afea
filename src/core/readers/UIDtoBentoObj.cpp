#include "UIDtoBentoObj.h"

#include "xConsole.h"

namespace {

bool bothPresent(const UIDtoBentoObj* a, const UIDtoBentoObj* b) {
    if (a && b) return true;
    TARN_LOG(QStringLiteral("Error in UID tree - nil object"));
    return false;
}

}  // namespace

bool UIDtoBentoObj::isEqualKey(const UIDtoBentoObj& other) const {
    return quint32(key_) == quint32(other.key_) && quint32(key_ >> 32) == quint32(other.key_ >> 32);
}

bool UIDtoBentoObj::equalRule(const UIDtoBentoObj* a, const UIDtoBentoObj* b) {
    return bothPresent(a, b) && a->isEqualKey(*b);
}

bool UIDtoBentoObj::lessRule(const UIDtoBentoObj* a, const UIDtoBentoObj* b) {
    return bothPresent(a, b) && a->isLiteThan(*b);
}
