#include "items/TarnRBTree_u32t_u32t.h"

#include <new>
#include <type_traits>

TarnRBTree_u32t_u32t::TarnRBTree_u32t_u32t() {
    linkSentinel();
}

TarnRBTree_u32t_u32t::~TarnRBTree_u32t_u32t() {
    TreeDelete();
    TreeSetNil();
}

void TarnRBTree_u32t_u32t::linkSentinel() {
    m_sentinel.value = kNone;
    m_sentinel.key = 0;
    m_sentinel.NodeColor = kBlack;
    m_sentinel.NodeParent = nullptr;
    m_sentinel.NodeLeft = nil();
    m_sentinel.NodeRight = nil();
    m_sentinel.NodeMiddle = nil();
    m_root = nil();
    m_cursor = nil();
    m_rightmost = nullptr;
    m_maxKey = 0;
    m_walkSteps = 0;
}

void TarnRBTree_u32t_u32t::restart() {
    m_pool.reset();
    linkSentinel();
    m_nodeCount = 0;
    m_equalNodeCount = 0;
}

TarnTreeNode32t* TarnRBTree_u32t_u32t::makeNode(quint32 key, quint32 value, Node* parent) {
    try {
        return m_pool.make(value, key, kRed, parent, nil(), nil(), nil());
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}

TarnTreeNode32t* TarnRBTree_u32t_u32t::TreeInsert(quint32 key, quint32 value) {
    if (m_root == nullptr) restart();  // after TreeSetNil
    Node* const s = nil();
    if (m_root == s) {
        Node* node = makeNode(key, value, s);
        if (node == nullptr) return nullptr;
        m_root = node;
        m_rightmost = node;
        m_maxKey = key;
        ++m_nodeCount;
        Links::insertRepair(m_root, s, node);
        return node;
    }

    // The search only walks right: with keys arriving in order, the new key is
    // never smaller than any key met. A node with a greater key stops the walk
    // and counts as the "equal" node.
    Node* equal = nullptr;
    Node* parent = s;
    if (m_rightmost != nullptr && key >= m_maxKey) {
        parent = m_rightmost;
    } else if (m_root->key > key) {
        equal = m_root;
    } else {
        Node* n = m_root;
        for (;;) {
            Node* child = n->NodeRight;
            if (child == s) {
                parent = n;
                break;
            }
            if (child->key > key) {
                equal = child;
                break;
            }
            n = child;
        }
    }
    if (equal != nullptr) {
        if (!m_allowEQkeys) return equal;
        parent = Links::chainEnd(equal, s);
    }

    Node* node = makeNode(key, value, parent);
    if (node == nullptr) return nullptr;
    if (equal != nullptr) ++m_equalNodeCount;
    ++m_nodeCount;
    if (key > m_maxKey) m_maxKey = key;
    if (m_allowEQkeys && parent->key == key) {
        parent->NodeMiddle = node;  // replaces an existing middle link
        return node;
    }
    if (parent->key > key) {
        parent->NodeLeft = node;  // replaces an existing left child
    } else {
        parent->NodeRight = node;
        if (parent == m_rightmost) m_rightmost = node;
    }
    Links::insertRepair(m_root, s, node);
    return node;
}

quint32 TarnRBTree_u32t_u32t::TreefindNode(quint32 key) {
    if (isEmpty()) return kNone;
    Node* const s = nil();
    Node* n = m_root;
    while (n != s) {
        if (n->key == key) {
            m_cursor = Links::chainEnd(n, s);
            m_walkSteps = 0;
            return m_cursor->value;
        }
        n = n->key > key ? n->NodeLeft : n->NodeRight;
    }
    m_cursor = s;
    return kNone;
}

quint32 TarnRBTree_u32t_u32t::TreefindNextEQ() {
    Node* c = m_cursor;
    if (c == nullptr || c == nil()) return kNone;
    Node* p = c->NodeParent;
    if (p == nullptr || p == nil() || p->NodeMiddle != c) return kNone;
    m_cursor = p;
    return p->value;
}

TarnTreeNode32t* TarnRBTree_u32t_u32t::successor(Node* c) {
    Node* const s = nil();
    Node* r = c->NodeRight;
    if (r != s && c->key < r->key) return Links::chainEnd(Links::leftmost(r, s), s);
    for (Node* p = c->NodeParent; p != nullptr && p != s; p = p->NodeParent) {
        if (c->key < p->key) return Links::chainEnd(p, s);
        if (p->key == c->key) return p;
    }
    return s;
}

quint32 TarnRBTree_u32t_u32t::TreeGetMin() {
    if (isEmpty()) return kNone;
    Node* const s = nil();
    m_cursor = Links::chainEnd(Links::leftmost(m_root, s), s);
    m_walkSteps = 0;
    return m_cursor->value;
}

quint32 TarnRBTree_u32t_u32t::TreeGetNext() {
    if (m_cursor == nullptr || m_cursor == nil()) return kNone;
    // An ordered tree needs fewer steps than entries; more means the keys did
    // not arrive in order and the links loop back.
    if (++m_walkSteps >= m_nodeCount) {
        m_cursor = nil();
        return kNone;
    }
    m_cursor = successor(m_cursor);
    return m_cursor == nil() ? kNone : m_cursor->value;
}

// Every node lives in the pool and holds nothing to release: giving the
// pool back empties the tree without visiting the nodes.
static_assert(std::is_trivially_destructible_v<TarnTreeNode32t>);

void TarnRBTree_u32t_u32t::TreeDelete() {
    restart();
}

void TarnRBTree_u32t_u32t::TreeSetNil() {
    m_sentinel.NodeLeft = nullptr;
    m_sentinel.NodeRight = nullptr;
    m_sentinel.NodeMiddle = nullptr;
    m_sentinel.NodeParent = nullptr;
    m_root = nullptr;
    m_cursor = nullptr;
    m_rightmost = nullptr;
}
