#pragma once

#include <QtGlobal>

#include "items/TarnNodePool.h"
#include "items/TarnRBLinks.h"
#include "items/TarnTreeNode32t.h"

// Red-black tree from unsigned 32-bit keys to unsigned 32-bit values, built
// for the object numbers of a Bento container's table of contents, which come
// in non-decreasing order. The insertion search is built around that order:
// it only ever walks right, and a node whose key is greater than the new one
// is taken as the "equal" node. Callers must insert keys in non-decreasing
// order for the result to be a correct search tree; other orders are
// tolerated (never a crash or a hang) but may hide entries.
//
// Results of 4294967295 mean "none". The cursor is shared by lookups and
// walks; a tree belongs to the thread that made it.
class TarnRBTree_u32t_u32t {
  public:
    static constexpr quint32 kNone = 4294967295u;
    static constexpr quint8 kRed = 0;
    static constexpr quint8 kBlack = 1;

    TarnRBTree_u32t_u32t();
    ~TarnRBTree_u32t_u32t();
    TarnRBTree_u32t_u32t(const TarnRBTree_u32t_u32t&) = delete;
    TarnRBTree_u32t_u32t& operator=(const TarnRBTree_u32t_u32t&) = delete;

    // The new node; the "equal" node when equal keys are not allowed and one
    // was met; null when no node can be made (tree unchanged).
    TarnTreeNode32t* TreeInsert(quint32 key, quint32 value);
    // Value of the last entry with this key (the cursor stays there).
    quint32 TreefindNode(quint32 key);
    // Value of the entry before the cursor on its middle chain.
    quint32 TreefindNextEQ();
    // In-order walk over every entry, each chain from its last entry back.
    quint32 TreeGetMin();
    quint32 TreeGetNext();

    void TreeDelete();
    void TreeSetNil();
    void setAllowEQkeys(bool allow) { m_allowEQkeys = allow; }
    bool AllowEQkeys() const { return m_allowEQkeys; }

    quint64 TreeNodeCount() const { return m_nodeCount; }
    quint64 TreeEqualNodeCount() const { return m_equalNodeCount; }

  private:
    using Node = TarnTreeNode32t;
    using Links = TarnRBLinks<Node>;

    Node* nil() { return &m_sentinel; }
    bool isEmpty() const { return m_root == nullptr || m_root == &m_sentinel; }
    void linkSentinel();
    void restart();
    Node* makeNode(quint32 key, quint32 value, Node* parent);
    Node* successor(Node* c);

    Node m_sentinel{};
    Node* m_root = nullptr;
    Node* m_cursor = nullptr;
    // The end of the right spine, and the greatest key inserted: a key at
    // least that great walks the whole spine, so it goes straight there.
    // Rotations keep the spine's end in place.
    Node* m_rightmost = nullptr;
    quint32 m_maxKey = 0;
    bool m_allowEQkeys = true;
    quint64 m_nodeCount = 0;
    quint64 m_equalNodeCount = 0;
    quint64 m_walkSteps = 0;
    TarnNodePool<Node> m_pool;
};
