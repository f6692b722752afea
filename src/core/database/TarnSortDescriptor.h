#pragma once

#include <QString>

// One column of a sort: the key of the column ("filename", "filesize", ...)
// and its direction.
struct TarnSortDescriptor {
    QString key;
    bool ascending = true;
};
