#pragma once

#include <QtGlobal>

#include <deque>
#include <optional>

#include "items/TarnRBTree.h"
#include "readers/UIDtoBentoObj.h"

// An identifier table of a media database as an ordered tree: short
// identifier -> Bento object ID. The nodes live here; the tree orders them.
// When an identifier is listed more than once, the last listing wins.
class UIDtoBentoObjTree {
  public:
    UIDtoBentoObjTree();
    UIDtoBentoObjTree(const UIDtoBentoObjTree&) = delete;
    UIDtoBentoObjTree& operator=(const UIDtoBentoObjTree&) = delete;

    void insert(quint64 key, quint32 objectID);
    std::optional<quint32> find(quint64 key);
    bool isEmpty() const { return nodes_.empty(); }
    qsizetype count() const { return qsizetype(nodes_.size()); }

  private:
    std::deque<UIDtoBentoObj> nodes_;  // stable addresses for the tree
    TarnRBTree<const UIDtoBentoObj*> tree_;
};
