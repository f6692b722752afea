#include "database/TarnProject.h"

#include <QHashFunctions>

bool TarnProject::isEqual(const TarnProject& other) const {
    if (name.isNull() && other.name.isNull()) return true;
    return name == other.name;
}

size_t TarnProject::hash() const {
    return qHash(name);
}
