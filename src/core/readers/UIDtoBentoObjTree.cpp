#include "readers/UIDtoBentoObjTree.h"

UIDtoBentoObjTree::UIDtoBentoObjTree() {
    tree_.setEQBlock(UIDtoBentoObj::equalRule);
    tree_.setLTBlock(UIDtoBentoObj::lessRule);
}

void UIDtoBentoObjTree::insert(quint64 key, quint32 objectID) {
    nodes_.emplace_back(key, objectID);
    tree_.TreeInsertNode(&nodes_.back());
}

std::optional<quint32> UIDtoBentoObjTree::find(quint64 key) {
    const UIDtoBentoObj probe(key, 0);
    const UIDtoBentoObj* const* found = tree_.TreefindNode(&probe);
    if (!found || !*found) return std::nullopt;
    return (*found)->objectID();
}
