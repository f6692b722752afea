#pragma once

#include <QtGlobal>

// Link surgery shared by the ordered trees: rotations, the insert repair and
// the non-recursive teardown. Works on any node type with NodeColor,
// NodeParent, NodeLeft, NodeRight and NodeMiddle, where empty links point at
// the tree's sentinel `nil`.
template <typename Node>
class TarnRBLinks {
  public:
    static constexpr quint8 kRed = 0;
    static constexpr quint8 kBlack = 1;

    static Node* leftmost(Node* n, const Node* nil) {
        while (n->NodeLeft != nil) n = n->NodeLeft;
        return n;
    }

    static Node* chainEnd(Node* n, const Node* nil) {
        while (n->NodeMiddle != nil) n = n->NodeMiddle;
        return n;
    }

    // The usual red-black insert repair for the new tree node z. Sides are read
    // from the links themselves, so a rotation pivot is never the sentinel, and
    // a node hanging below a middle chain ends the repair.
    static void insertRepair(Node*& root, Node* nil, Node* z) {
        while (z != root && z->NodeParent->NodeColor == kRed) {
            Node* p = z->NodeParent;
            Node* g = p->NodeParent;
            if (g == nil) break;
            const bool leftSide = p == g->NodeLeft;
            if (!leftSide && p != g->NodeRight) break;  // p is a chain entry
            Node* uncle = leftSide ? g->NodeRight : g->NodeLeft;
            if (uncle != nil && uncle->NodeColor == kRed) {
                p->NodeColor = kBlack;
                uncle->NodeColor = kBlack;
                g->NodeColor = kRed;
                z = g;
                continue;
            }
            if (leftSide) {
                if (z == p->NodeRight) {
                    z = p;
                    rotateLeft(root, nil, z);
                    p = z->NodeParent;
                }
                p->NodeColor = kBlack;
                g->NodeColor = kRed;
                rotateRight(root, nil, g);
            } else {
                if (z == p->NodeLeft) {
                    z = p;
                    rotateRight(root, nil, z);
                    p = z->NodeParent;
                }
                p->NodeColor = kBlack;
                g->NodeColor = kRed;
                rotateLeft(root, nil, g);
            }
        }
        root->NodeColor = kBlack;
    }

    // Empties the tree depth first without recursion: down the first of left,
    // middle, right that is set; a node without any is unlinked from its
    // parent, handed to `clear` and left for its parent.
    template <typename Clear>
    static void teardown(Node* root, Node* nil, Clear clear) {
        Node* n = root;
        while (n != nil && n != nullptr) {
            if (n->NodeLeft != nil) {
                n = n->NodeLeft;
            } else if (n->NodeMiddle != nil) {
                n = n->NodeMiddle;
            } else if (n->NodeRight != nil) {
                n = n->NodeRight;
            } else {
                Node* p = n->NodeParent;
                if (p != nil && p != nullptr) {
                    if (p->NodeLeft == n) {
                        p->NodeLeft = nil;
                    } else if (p->NodeRight == n) {
                        p->NodeRight = nil;
                    } else if (p->NodeMiddle == n) {
                        p->NodeMiddle = nil;
                    }
                }
                clear(n);
                n = p;
            }
        }
    }

  private:
    static void replaceChild(Node*& root, Node* nil, Node* parent, Node* oldChild, Node* newChild) {
        if (parent == nil) {
            root = newChild;
        } else if (parent->NodeLeft == oldChild) {
            parent->NodeLeft = newChild;
        } else if (parent->NodeRight == oldChild) {
            parent->NodeRight = newChild;
        } else {
            parent->NodeMiddle = newChild;
        }
    }

    static void rotateLeft(Node*& root, Node* nil, Node* x) {
        Node* y = x->NodeRight;
        x->NodeRight = y->NodeLeft;
        if (y->NodeLeft != nil) y->NodeLeft->NodeParent = x;
        y->NodeParent = x->NodeParent;
        replaceChild(root, nil, x->NodeParent, x, y);
        y->NodeLeft = x;
        x->NodeParent = y;
    }

    static void rotateRight(Node*& root, Node* nil, Node* x) {
        Node* y = x->NodeLeft;
        x->NodeLeft = y->NodeRight;
        if (y->NodeRight != nil) y->NodeRight->NodeParent = x;
        y->NodeParent = x->NodeParent;
        replaceChild(root, nil, x->NodeParent, x, y);
        y->NodeRight = x;
        x->NodeParent = y;
    }
};
