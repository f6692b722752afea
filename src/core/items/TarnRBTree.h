#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <exception>
#include <functional>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "items/TarnNodePool.h"
#include "items/TarnRBLinks.h"

// Red-black tree over arbitrary objects ordered by two caller-supplied rules
// (equal, less-than). Entries whose key equals one already present hang on a
// "middle" chain below the tree node, in insertion order (the tree node is the
// first inserted, the chain's end the last), so the tree keeps many entries per
// key and can still be walked in key order with each key once.
//
// Every empty child or middle link points at the tree's own sentinel node.
// The cursor (last walk step or lookup) is shared state: walks and lookups on
// one tree must not be interleaved. A tree belongs to the thread that made it.
template <typename T>
class TarnRBTree {
  public:
    struct TarnTreeNode {
        quint8 NodeColor;  // 0 red, 1 black
        T NodeData;
        TarnTreeNode* NodeParent;
        TarnTreeNode* NodeRight;
        TarnTreeNode* NodeLeft;
        TarnTreeNode* NodeMiddle;
    };
    using Rule = std::function<bool(const T& a, const T& b)>;

    static constexpr quint8 kRed = 0;
    static constexpr quint8 kBlack = 1;

    TarnRBTree() { linkSentinel(); }
    ~TarnRBTree() {
        TreeDelete();
        TreeSetNil();
    }
    TarnRBTree(const TarnRBTree&) = delete;
    TarnRBTree& operator=(const TarnRBTree&) = delete;

    // Configure before the first insertion.
    void setEQBlock(Rule rule) { m_eq = std::move(rule); }
    void setLTBlock(Rule rule) { m_lt = std::move(rule); }
    void setAllowEQNodes(bool allow) { m_allowEQNodes = allow; }

    // The new node; the existing equal node when equal keys are not allowed;
    // null when a node cannot be made or a rule is missing (tree unchanged).
    TarnTreeNode* TreeInsertNode(T x);

    // Data of the last-inserted entry equal to x (the cursor stays there), or
    // null. A miss leaves the cursor on nothing.
    const T* TreefindNode(const T& x);
    // One step back along the cursor's middle chain: the entry inserted just
    // before it, or null when the cursor is on the tree node.
    const T* TreefindNextEQ();

    // In-order walk over every entry; each key's chain is visited from its
    // last entry back to the first.
    const T* TreeGetMin();
    const T* TreeGetNext();

    // In-order walk over tree nodes only (each key once); null at the end.
    TarnTreeNode* Tree_v2_GetMinNonEqual();
    TarnTreeNode* Tree_v2_GetNextNonEqual();
    // The data of every tree node in key order (the first-inserted entry of
    // each key); empty optional for an empty tree.
    std::optional<std::vector<T>> Tree_v2_GetNonEqDataArray();

    // A fresh unlinked node owned by the tree (null when out of memory).
    TarnTreeNode* TreeGetNewNode();

    // Removes all entries, without recursion.
    void TreeDelete();
    // Unlinks the sentinel from itself and forgets root, cursor and list. The
    // next insertion starts a fresh, empty tree.
    void TreeSetNil();

    quint64 TreeNodeCount() const { return m_nodeCount; }
    quint64 TreeEqualNodeCount() const { return m_equalNodeCount; }
    bool AllowEQNodes() const { return m_allowEQNodes; }

    // Hot-path field access: copies the address of the field into the caller's
    // slot, no copy of the data and no ownership taken.
    static void _data_Unsafe(const TarnTreeNode* node, const T** slot) { *slot = &node->NodeData; }
    static void _left_Unsafe(const TarnTreeNode* node, TarnTreeNode** slot) {
        *slot = node->NodeLeft;
    }
    static void _right_Unsafe(const TarnTreeNode* node, TarnTreeNode** slot) {
        *slot = node->NodeRight;
    }
    static void _middle_Unsafe(const TarnTreeNode* node, TarnTreeNode** slot) {
        *slot = node->NodeMiddle;
    }

  private:
    TarnTreeNode* nil() { return &m_sentinel; }
    bool hasRules() const { return m_eq && m_lt; }
    bool isEmpty() const { return m_root == nullptr || m_root == &m_sentinel; }
    using Links = TarnRBLinks<TarnTreeNode>;
    TarnTreeNode* leftmost(TarnTreeNode* n) { return Links::leftmost(n, nil()); }
    TarnTreeNode* chainEnd(TarnTreeNode* n) { return Links::chainEnd(n, nil()); }
    void linkSentinel();
    void restart();
    TarnTreeNode* makeNode(T&& x, TarnTreeNode* parent);
    TarnTreeNode* successor(TarnTreeNode* c, bool throughChains);
    TarnTreeNode* stepCursor(bool throughChains);

    TarnTreeNode m_sentinel{};
    TarnTreeNode* m_root = nullptr;
    TarnTreeNode* m_cursor = nullptr;
    bool m_allowEQNodes = true;
    quint64 m_nodeCount = 0;
    quint64 m_equalNodeCount = 0;
    Rule m_eq;
    Rule m_lt;
    // Walk steps since the cursor was last placed; bounds a walk under rules
    // that are not a consistent order.
    quint64 m_walkSteps = 0;
    TarnNodePool<TarnTreeNode> m_pool;
};

template <typename T>
void TarnRBTree<T>::linkSentinel() {
    m_sentinel.NodeColor = kBlack;
    m_sentinel.NodeParent = nullptr;
    m_sentinel.NodeLeft = nil();
    m_sentinel.NodeRight = nil();
    m_sentinel.NodeMiddle = nil();
    m_root = nil();
    m_cursor = nil();
    m_walkSteps = 0;
}

// Drops every node and leaves an empty, linked tree.
template <typename T>
void TarnRBTree<T>::restart() {
    m_pool.reset();
    linkSentinel();
    m_nodeCount = 0;
    m_equalNodeCount = 0;
}

template <typename T>
typename TarnRBTree<T>::TarnTreeNode* TarnRBTree<T>::makeNode(T&& x, TarnTreeNode* parent) {
    try {
        return m_pool.make(kRed, std::move(x), parent, nil(), nil(), nil());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

template <typename T>
typename TarnRBTree<T>::TarnTreeNode* TarnRBTree<T>::TreeGetNewNode() {
    if (m_root == nullptr) restart();
    return makeNode(T{}, nil());
}

template <typename T>
typename TarnRBTree<T>::TarnTreeNode* TarnRBTree<T>::TreeInsertNode(T x) {
    if (!hasRules()) return nullptr;
    if (m_root == nullptr) restart();  // after TreeSetNil
    TarnTreeNode* const s = nil();
    const Rule& eq = m_eq;
    const Rule& lt = m_lt;

    TarnTreeNode* equal = nullptr;
    TarnTreeNode* parent = s;
    bool asLeft = false;
    if (m_root != s) {
        if (eq(x, m_root->NodeData)) {
            equal = m_root;
        } else {
            TarnTreeNode* n = m_root;
            for (;;) {
                asLeft = lt(x, n->NodeData);
                TarnTreeNode* child = asLeft ? n->NodeLeft : n->NodeRight;
                if (child == s) {
                    parent = n;
                    break;
                }
                if (eq(x, child->NodeData)) {
                    equal = child;
                    break;
                }
                n = child;
            }
        }
    }

    if (equal != nullptr) {
        if (!m_allowEQNodes) return equal;
        TarnTreeNode* end = chainEnd(equal);
        TarnTreeNode* node = makeNode(std::move(x), end);
        if (node == nullptr) return nullptr;
        end->NodeMiddle = node;
        ++m_equalNodeCount;
        ++m_nodeCount;
        return node;
    }

    TarnTreeNode* node = makeNode(std::move(x), parent);
    if (node == nullptr) return nullptr;
    ++m_nodeCount;
    if (parent == s) {
        m_root = node;
    } else if (asLeft) {
        parent->NodeLeft = node;
    } else {
        parent->NodeRight = node;
    }
    Links::insertRepair(m_root, s, node);
    return node;
}

template <typename T>
const T* TarnRBTree<T>::TreefindNode(const T& x) {
    if (isEmpty() || !hasRules()) return nullptr;
    TarnTreeNode* const s = nil();
    const Rule& eq = m_eq;
    const Rule& lt = m_lt;
    TarnTreeNode* n = m_root;
    while (n != s) {
        if (eq(x, n->NodeData)) {
            m_cursor = chainEnd(n);
            m_walkSteps = 0;
            return &m_cursor->NodeData;
        }
        n = lt(x, n->NodeData) ? n->NodeLeft : n->NodeRight;
    }
    m_cursor = s;
    return nullptr;
}

template <typename T>
const T* TarnRBTree<T>::TreefindNextEQ() {
    TarnTreeNode* c = m_cursor;
    if (c == nullptr || c == nil()) return nullptr;
    TarnTreeNode* p = c->NodeParent;
    if (p == nullptr || p == nil() || p->NodeMiddle != c) return nullptr;
    m_cursor = p;
    return &p->NodeData;
}

// The successor is decided by the rules: the leftmost node of the right
// subtree when the right child orders after c, else the first ancestor that
// orders after c or equals it (an equal ancestor is the previous chain entry).
template <typename T>
typename TarnRBTree<T>::TarnTreeNode* TarnRBTree<T>::successor(TarnTreeNode* c,
                                                               bool throughChains) {
    TarnTreeNode* const s = nil();
    TarnTreeNode* r = c->NodeRight;
    if (r != s && m_lt(c->NodeData, r->NodeData)) {
        TarnTreeNode* n = leftmost(r);
        return throughChains ? chainEnd(n) : n;
    }
    for (TarnTreeNode* p = c->NodeParent; p != nullptr && p != s; p = p->NodeParent) {
        if (m_lt(c->NodeData, p->NodeData)) return throughChains ? chainEnd(p) : p;
        if (m_eq(p->NodeData, c->NodeData)) return p;
    }
    return s;
}

template <typename T>
typename TarnRBTree<T>::TarnTreeNode* TarnRBTree<T>::stepCursor(bool throughChains) {
    if (m_cursor == nullptr || m_cursor == nil() || !hasRules()) return nullptr;
    // A consistent order visits each entry once; more steps mean a cycle.
    if (++m_walkSteps >= m_nodeCount) {
        m_cursor = nil();
        return nullptr;
    }
    m_cursor = successor(m_cursor, throughChains);
    return m_cursor == nil() ? nullptr : m_cursor;
}

template <typename T>
const T* TarnRBTree<T>::TreeGetMin() {
    if (isEmpty() || !hasRules()) return nullptr;
    m_cursor = chainEnd(leftmost(m_root));
    m_walkSteps = 0;
    return &m_cursor->NodeData;
}

template <typename T>
const T* TarnRBTree<T>::TreeGetNext() {
    TarnTreeNode* n = stepCursor(true);
    return n == nullptr ? nullptr : &n->NodeData;
}

template <typename T>
typename TarnRBTree<T>::TarnTreeNode* TarnRBTree<T>::Tree_v2_GetMinNonEqual() {
    if (isEmpty() || !hasRules()) return nullptr;
    m_cursor = leftmost(m_root);
    m_walkSteps = 0;
    return m_cursor;
}

template <typename T>
typename TarnRBTree<T>::TarnTreeNode* TarnRBTree<T>::Tree_v2_GetNextNonEqual() {
    return stepCursor(false);
}

template <typename T>
std::optional<std::vector<T>> TarnRBTree<T>::Tree_v2_GetNonEqDataArray() {
    if (isEmpty() || !hasRules()) return std::nullopt;
    try {
        std::vector<T> out;
        out.reserve(m_nodeCount - m_equalNodeCount);
        for (TarnTreeNode* n = Tree_v2_GetMinNonEqual(); n != nullptr;
             n = Tree_v2_GetNextNonEqual()) {
            out.push_back(n->NodeData);
        }
        return out;
    } catch (const std::exception&) {
        return std::nullopt;
    }
}

template <typename T>
void TarnRBTree<T>::TreeDelete() {
    if (!isEmpty()) {
        Links::teardown(m_root, nil(), [](TarnTreeNode* n) { n->NodeData = T{}; });
    }
    restart();
}

template <typename T>
void TarnRBTree<T>::TreeSetNil() {
    m_sentinel.NodeLeft = nullptr;
    m_sentinel.NodeRight = nullptr;
    m_sentinel.NodeMiddle = nullptr;
    m_sentinel.NodeParent = nullptr;
    m_root = nullptr;
    m_cursor = nullptr;
}
