#pragma once

#include <QtGlobal>

// Node of the 32-bit key/value tree. Equal keys hang on the middle chain; chain
// nodes have the previous chain node as parent.
struct TarnTreeNode32t {
    quint32 value;
    quint32 key;
    quint8 NodeColor;  // 0 red, 1 black
    TarnTreeNode32t* NodeParent;
    TarnTreeNode32t* NodeRight;
    TarnTreeNode32t* NodeLeft;
    TarnTreeNode32t* NodeMiddle;
};
