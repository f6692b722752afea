#include "readers/UIDtoBentoObjTree.h"

#include <algorithm>

void UIDtoBentoObjTree::insert(quint64 key, quint32 objectID) {
    nodes_.emplace_back(key, objectID);
    if (nodes_.size() > 1 && nodes_[nodes_.size() - 1].isLiteThan(nodes_[nodes_.size() - 2]))
        ordered_ = false;
}

std::optional<quint32> UIDtoBentoObjTree::find(quint64 key) {
    auto less = [](const UIDtoBentoObj& a, const UIDtoBentoObj& b) { return a.isLiteThan(b); };
    if (!ordered_) {
        std::stable_sort(nodes_.begin(), nodes_.end(), less);
        ordered_ = true;
    }
    // The last of the equal keys is the last listed.
    const UIDtoBentoObj probe(key, 0);
    const auto after = std::upper_bound(nodes_.begin(), nodes_.end(), probe, less);
    if (after == nodes_.begin()) return std::nullopt;
    const UIDtoBentoObj& found = *(after - 1);
    if (!found.isEqualKey(probe)) return std::nullopt;
    return found.objectID();
}
