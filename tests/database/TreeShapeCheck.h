#pragma once

#include <string>

// Walks a tree's links from any of its nodes and checks the shape the ordered
// trees promise: root black, no red node with a red child, the same number of
// black nodes on every path, parent links consistent, keys ordered across left
// and right links, middle chains of equal keys without left or right children.
// Returns an empty string when the shape holds, else what broke first.
template <typename Node>
class TreeShapeCheck {
  public:
    using KeyLess = bool (*)(const Node*, const Node*);
    using KeyEqual = bool (*)(const Node*, const Node*);

    TreeShapeCheck(KeyLess less, KeyEqual equal) : m_less(less), m_equal(equal) {}

    static Node* rootFrom(Node* any) {
        // The root's parent is the sentinel, whose own parent is empty.
        while (any->NodeParent->NodeParent != nullptr) any = any->NodeParent;
        return any;
    }

    std::string check(Node* anyNode) {
        Node* root = rootFrom(anyNode);
        m_nil = root->NodeParent;
        if (root->NodeColor != 1) return "root is red";
        m_height = 0;
        m_error.clear();
        blackHeight(root, nullptr, nullptr);
        return m_error;
    }

    // Longest path of left/right links from the root.
    int height() const { return m_height; }

  private:
    int blackHeight(Node* n, const Node* lowerBound, const Node* upperBound, int depth = 1) {
        if (n == m_nil || !m_error.empty()) return 1;
        if (depth > m_height) m_height = depth;
        if (lowerBound && !m_less(lowerBound, n)) fail("order broken below a right link");
        if (upperBound && !m_less(n, upperBound)) fail("order broken below a left link");
        for (Node* c : {n->NodeLeft, n->NodeRight, n->NodeMiddle}) {
            if (c != m_nil && c->NodeParent != n) fail("child does not point back at its parent");
        }
        if (n->NodeColor == 0) {
            if (n->NodeLeft->NodeColor == 0 || n->NodeRight->NodeColor == 0) fail("red-red");
        }
        for (Node* m = n->NodeMiddle; m != m_nil; m = m->NodeMiddle) {
            if (!m_equal(m, n)) fail("chain entry with another key");
            if (m->NodeLeft != m_nil || m->NodeRight != m_nil) fail("chain entry with children");
            if (m->NodeMiddle != m_nil && m->NodeMiddle->NodeParent != m) fail("chain link");
        }
        int left = blackHeight(n->NodeLeft, lowerBound, n, depth + 1);
        int right = blackHeight(n->NodeRight, n, upperBound, depth + 1);
        if (left != right) fail("black heights differ");
        return left + (n->NodeColor == 1 ? 1 : 0);
    }

    void fail(const char* what) {
        if (m_error.empty()) m_error = what;
    }

    KeyLess m_less;
    KeyEqual m_equal;
    Node* m_nil = nullptr;
    int m_height = 0;
    std::string m_error;
};
