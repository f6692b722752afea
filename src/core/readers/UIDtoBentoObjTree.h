#pragma once

#include <QtGlobal>

#include <optional>
#include <vector>

#include "readers/UIDtoBentoObj.h"

// An identifier table of a media database, ordered for look-ups: short
// identifier -> Bento object ID. When an identifier is listed more than once,
// the last listing wins.
//
// A table is read whole before it is asked: the nodes are kept in the order
// listed and put in key order (equal keys in listing order) at the first
// look-up, so a look-up is a binary search over one array rather than a walk
// through nodes of a tree.
class UIDtoBentoObjTree {
  public:
    UIDtoBentoObjTree() = default;
    UIDtoBentoObjTree(const UIDtoBentoObjTree&) = delete;
    UIDtoBentoObjTree& operator=(const UIDtoBentoObjTree&) = delete;

    void insert(quint64 key, quint32 objectID);
    std::optional<quint32> find(quint64 key);
    bool isEmpty() const { return nodes_.empty(); }
    qsizetype count() const { return qsizetype(nodes_.size()); }

  private:
    std::vector<UIDtoBentoObj> nodes_;
    bool ordered_ = true;
};
