#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "TreeShapeCheck.h"
#include "items/TarnRBTree.h"
#include "items/TarnRBTree_u32t_u32t.h"

// Both ordered trees are checked alike: filled with generated input, their
// answers are compared with a std::multimap and their shape is checked.
namespace {

// An entry: `key` decides order and equality, `serial` tells entries apart.
struct Entry {
    int key = 0;
    int serial = 0;
};

using Tree = TarnRBTree<Entry>;
using Node = Tree::TarnTreeNode;
using Pairs = std::vector<std::pair<int, int>>;
constexpr quint32 kNone = 4294967295u;

void byKey(Tree& tree) {
    tree.setEQBlock([](const Entry& a, const Entry& b) { return a.key == b.key; });
    tree.setLTBlock([](const Entry& a, const Entry& b) { return a.key < b.key; });
}

int keyOf(const Node* n) {
    return n->NodeData.key;
}
quint32 keyOf(const TarnTreeNode32t* n) {
    return n->key;
}

// The shape holds and no path is longer than a red-black tree of `nodes` allows.
template <typename N>
void expectShape(N* anyNode, size_t nodes) {
    TreeShapeCheck<N> check([](const N* a, const N* b) { return keyOf(a) < keyOf(b); },
                            [](const N* a, const N* b) { return keyOf(a) == keyOf(b); });
    EXPECT_EQ(check.check(anyNode), "");
    EXPECT_LE(check.height(), 2 * int(std::ceil(std::log2(double(nodes) + 1))));
}

// Input: seeds 0..5 give random keys with many repeats, -1 gives 65,536
// ascending keys (the worst case for an unbalanced tree).
class TarnRBTreeModel : public ::testing::TestWithParam<int> {};

TEST_P(TarnRBTreeModel, AgreesWithAMultimapAndStaysBalanced) {
    const int seed = GetParam();
    std::mt19937 rng(seed < 0 ? 0 : seed);
    const int count = seed < 0 ? 1 << 16 : 3000 + seed * 500;
    const int maxKey = seed < 0 ? count - 1 : count / 3;
    std::uniform_int_distribution<int> keys(0, maxKey);

    Tree tree;
    byKey(tree);
    std::vector<Node*> firstNodes;
    tree.setNonEQNodeArray(&firstNodes);
    std::multimap<int, int> model;  // key -> serials in insertion order
    std::vector<int> firstKeyOrder;
    for (int serial = 0; serial < count; ++serial) {
        const int key = seed < 0 ? serial : keys(rng);
        if (model.find(key) == model.end()) firstKeyOrder.push_back(key);
        model.emplace(key, serial);
        Node* node = tree.TreeInsertNode(Entry{key, serial});
        ASSERT_NE(node, nullptr);
        ASSERT_EQ(node->NodeData.serial, serial);
    }
    std::set<int> distinct;
    for (const auto& kv : model) distinct.insert(kv.first);
    EXPECT_EQ(tree.TreeNodeCount(), quint64(count));
    EXPECT_EQ(tree.TreeEqualNodeCount(), quint64(count - int(distinct.size())));
    expectShape(firstNodes.front(), distinct.size());

    // The list of new tree nodes: each key once, in order of first arrival.
    ASSERT_EQ(firstNodes.size(), firstKeyOrder.size());
    for (size_t i = 0; i < firstNodes.size(); ++i)
        EXPECT_EQ(firstNodes[i]->NodeData.key, firstKeyOrder[i]);

    // Walk over keys: ascending, each once, carrying the first-inserted entry;
    // the data array holds the same.
    Pairs expectedFirst, walkedFirst, arrayFirst;
    for (int key : distinct) expectedFirst.emplace_back(key, model.lower_bound(key)->second);
    for (Node* n = tree.Tree_v2_GetMinNonEqual(); n; n = tree.Tree_v2_GetNextNonEqual())
        walkedFirst.emplace_back(n->NodeData.key, n->NodeData.serial);
    EXPECT_EQ(walkedFirst, expectedFirst);
    auto array = tree.Tree_v2_GetNonEqDataArray();
    ASSERT_TRUE(array.has_value());
    for (const Entry& e : *array) arrayFirst.emplace_back(e.key, e.serial);
    EXPECT_EQ(arrayFirst, expectedFirst);

    // Walk over every entry: keys ascending, each key from latest to first.
    Pairs expectedAll, walkedAll;
    for (int key : distinct) {
        const auto [from, to] = model.equal_range(key);
        for (auto it = to; it != from;) expectedAll.emplace_back(key, (--it)->second);
    }
    for (const Entry* e = tree.TreeGetMin(); e; e = tree.TreeGetNext())
        walkedAll.emplace_back(e->key, e->serial);
    EXPECT_EQ(walkedAll, expectedAll);

    // Lookups: every key's entries from latest to first, then nothing.
    for (int key = -1; key <= maxKey + 1; ++key) {
        std::vector<int> expected, found;
        auto range = model.equal_range(key);
        for (auto it = range.first; it != range.second; ++it)
            expected.insert(expected.begin(), it->second);
        for (const Entry* e = tree.TreefindNode(Entry{key, -1}); e; e = tree.TreefindNextEQ()) {
            ASSERT_EQ(e->key, key);
            found.push_back(e->serial);
        }
        EXPECT_EQ(found, expected) << "key " << key;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, TarnRBTreeModel, ::testing::Range(-1, 6));

TEST(TarnRBTree, EqualKeysRefusedWhenNotAllowed) {
    Tree tree;
    byKey(tree);
    tree.setAllowEQNodes(false);
    std::vector<Node*> list;
    tree.setNonEQNodeArray(&list);
    Node* first = tree.TreeInsertNode({4, 1});
    tree.TreeInsertNode({9, 2});
    Node* again = tree.TreeInsertNode({4, 3});
    EXPECT_EQ(again, first);
    EXPECT_EQ(again->NodeData.serial, 1);
    EXPECT_EQ(tree.TreeNodeCount(), 2u);
    EXPECT_EQ(tree.TreeEqualNodeCount(), 0u);
    EXPECT_EQ(list.size(), 2u);
}

TEST(TarnRBTree, EmptyOrUnconfiguredTreeAnswersNothing) {
    Tree tree;
    EXPECT_EQ(tree.TreeInsertNode({1, 1}), nullptr);  // no rules yet
    byKey(tree);
    EXPECT_EQ(tree.TreefindNode({1, 0}), nullptr);
    EXPECT_EQ(tree.TreeGetMin(), nullptr);
    EXPECT_EQ(tree.Tree_v2_GetMinNonEqual(), nullptr);
    EXPECT_FALSE(tree.Tree_v2_GetNonEqDataArray().has_value());
    tree.TreeInsertNode({1, 1});
    EXPECT_EQ(tree.TreefindNode({2, 0}), nullptr);
    EXPECT_EQ(tree.TreefindNextEQ(), nullptr);  // a miss leaves no cursor
}

TEST(TarnRBTree, DeleteReleasesDataAndTheTreeCanBeRefilled) {
    using Ptr = std::shared_ptr<int>;
    auto held = std::make_shared<int>(5);
    auto other = std::make_shared<int>(6);
    {
        TarnRBTree<Ptr> tree;
        tree.setEQBlock([](const Ptr& a, const Ptr& b) { return *a == *b; });
        tree.setLTBlock([](const Ptr& a, const Ptr& b) { return *a < *b; });
        std::vector<TarnRBTree<Ptr>::TarnTreeNode*> list;
        tree.setNonEQNodeArray(&list);
        for (int i = 0; i < 3; ++i) tree.TreeInsertNode(held);
        tree.TreeInsertNode(other);
        EXPECT_EQ(held.use_count(), 4);
        tree.TreeDelete();
        EXPECT_EQ(held.use_count(), 1);
        EXPECT_EQ(other.use_count(), 1);
        EXPECT_TRUE(list.empty());
        EXPECT_EQ(tree.TreeNodeCount() + tree.TreeEqualNodeCount(), 0u);
        EXPECT_EQ(tree.TreeGetMin(), nullptr);

        tree.TreeInsertNode(other);
        tree.TreeInsertNode(held);
        ASSERT_NE(tree.TreeGetMin(), nullptr);
        EXPECT_EQ(**tree.TreeGetMin(), 5);
        EXPECT_EQ(list.size(), 2u);
        EXPECT_EQ(held.use_count(), 2);

        tree.TreeSetNil();  // forgets the entries: the next insert starts afresh
        EXPECT_EQ(tree.TreeGetMin(), nullptr);
        tree.TreeInsertNode(held);
        EXPECT_EQ(tree.TreeNodeCount(), 1u);
    }
    EXPECT_EQ(held.use_count(), 1);  // destruction releases what is left
    EXPECT_EQ(other.use_count(), 1);
}

// Rules that are not a consistent order (as the duplicate search's path rule
// can be) must still give walks that end.
TEST(TarnRBTree, WalksEndUnderInconsistentRules) {
    Tree tree;
    std::mt19937 rng(7);
    tree.setEQBlock([](const Entry& a, const Entry& b) { return a.key == b.key; });
    tree.setLTBlock([&rng](const Entry&, const Entry&) { return (rng() & 1) != 0; });
    for (int i = 0; i < 500; ++i) tree.TreeInsertNode({i % 200, i});
    int steps = 0;
    for (const Entry* e = tree.TreeGetMin(); e; e = tree.TreeGetNext()) ++steps;
    EXPECT_LE(steps, 500);
    steps = 0;
    for (Node* n = tree.Tree_v2_GetMinNonEqual(); n; n = tree.Tree_v2_GetNextNonEqual()) ++steps;
    EXPECT_LE(steps, 500);
}

std::vector<quint32> walk(TarnRBTree_u32t_u32t& tree) {
    std::vector<quint32> values;
    for (quint32 v = tree.TreeGetMin(); v != kNone; v = tree.TreeGetNext()) values.push_back(v);
    return values;
}

// The object numbers of a container arrive in non-decreasing order. Runs of
// equal keys keep their first and their last entry: each new equal key
// replaces the middle link of the key's tree node.
TEST(TarnRBTree32, OrderedInputAgreesWithAMultimap) {
    std::mt19937 rng(11);
    TarnRBTree_u32t_u32t tree;
    std::multimap<quint32, quint32> model;
    TarnTreeNode32t* first = nullptr;
    quint32 key = 0;
    const int count = 50000;
    std::set<quint32> distinct;
    for (int i = 0; i < count; ++i) {
        key += (rng() % 4 == 0) ? 0 : 1 + rng() % 5;  // a quarter repeat the previous key
        TarnTreeNode32t* n = tree.TreeInsert(key, quint32(i));
        ASSERT_NE(n, nullptr);
        if (!first) first = n;
        model.emplace(key, quint32(i));
        distinct.insert(key);
    }
    EXPECT_EQ(tree.TreeNodeCount(), quint64(count));
    EXPECT_EQ(tree.TreeEqualNodeCount(), 0u);  // never met a greater key
    expectShape(first, distinct.size());

    std::vector<quint32> expectedWalk;
    for (quint32 k : distinct) {
        auto range = model.equal_range(k);
        const quint32 firstValue = range.first->second, lastValue = std::prev(range.second)->second;
        expectedWalk.push_back(lastValue);
        EXPECT_EQ(tree.TreefindNode(k), lastValue);
        if (lastValue != firstValue) {
            expectedWalk.push_back(firstValue);
            EXPECT_EQ(tree.TreefindNextEQ(), firstValue);
        }
        EXPECT_EQ(tree.TreefindNextEQ(), kNone);
        EXPECT_EQ(tree.TreefindNode(k + 1) == kNone, model.count(k + 1) == 0);
    }
    EXPECT_EQ(walk(tree), expectedWalk);
}

// A smaller key after a greater root: the root counts as the "equal" node.
TEST(TarnRBTree32, SmallerKeyHangsLeftOfTheGreaterNode) {
    TarnRBTree_u32t_u32t tree;
    TarnTreeNode32t* root = tree.TreeInsert(5, 50);
    TarnTreeNode32t* three = tree.TreeInsert(3, 30);
    EXPECT_EQ(root->NodeLeft, three);
    EXPECT_EQ(tree.TreeEqualNodeCount(), 1u);
    EXPECT_EQ(tree.TreefindNode(3), 30u);

    TarnTreeNode32t* four = tree.TreeInsert(4, 40);
    EXPECT_EQ(root->NodeLeft, four);
    EXPECT_EQ(tree.TreeEqualNodeCount(), 2u);
    EXPECT_EQ(tree.TreeNodeCount(), 3u);
    EXPECT_EQ(tree.TreefindNode(3), kNone);
    EXPECT_EQ(tree.TreefindNode(4), 40u);
    EXPECT_EQ(tree.TreefindNode(5), 50u);
}

TEST(TarnRBTree32, EqualKeysRefusedWhenNotAllowed) {
    TarnRBTree_u32t_u32t tree;
    tree.setAllowEQkeys(false);
    TarnTreeNode32t* root = tree.TreeInsert(5, 50);
    EXPECT_EQ(tree.TreeInsert(3, 30), root);  // the "equal" node, nothing inserted
    EXPECT_EQ(tree.TreeNodeCount(), 1u);
    EXPECT_EQ(tree.TreeEqualNodeCount(), 0u);
    EXPECT_EQ(tree.TreefindNode(3), kNone);

    // A repeated greatest key is not met as "equal": it becomes a right child,
    // which lookups and walks never reach.
    TarnTreeNode32t* again = tree.TreeInsert(5, 51);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(root->NodeRight, again);
    EXPECT_EQ(tree.TreeNodeCount(), 2u);
    EXPECT_EQ(tree.TreefindNode(5), 50u);
    EXPECT_EQ(tree.TreefindNextEQ(), kNone);
    EXPECT_EQ(walk(tree), std::vector<quint32>{50});
}

TEST(TarnRBTree32, EmptiedTreeAnswersNoneAndCanBeRefilled) {
    TarnRBTree_u32t_u32t tree;
    EXPECT_EQ(tree.TreefindNode(0), kNone);
    EXPECT_EQ(tree.TreeGetMin(), kNone);
    for (quint32 k = 0; k < 1000; ++k) tree.TreeInsert(k / 2, k);
    tree.TreeDelete();
    EXPECT_EQ(tree.TreeNodeCount(), 0u);
    EXPECT_EQ(tree.TreefindNode(3), kNone);
    EXPECT_EQ(tree.TreeGetMin(), kNone);
    tree.TreeInsert(7, 70);
    EXPECT_EQ(tree.TreefindNode(7), 70u);
    tree.TreeSetNil();
    EXPECT_EQ(tree.TreefindNode(7), kNone);
    tree.TreeInsert(8, 80);
    EXPECT_EQ(tree.TreefindNode(8), 80u);
    EXPECT_EQ(tree.TreeNodeCount(), 1u);
}

// A damaged container can list object numbers out of order: the tree may then
// lose entries, but it must answer only stored pairs and every walk must end.
TEST(TarnRBTree32, UnorderedInputNeverBreaksTheTree) {
    for (int seed = 0; seed < 20; ++seed) {
        std::mt19937 rng(seed);
        TarnRBTree_u32t_u32t tree;
        std::multimap<quint32, quint32> stored;
        const int count = 2000;
        for (int i = 0; i < count; ++i) {
            const quint32 key = rng() % 300;
            tree.TreeInsert(key, quint32(i));
            stored.emplace(key, quint32(i));
        }
        EXPECT_EQ(tree.TreeNodeCount(), quint64(count));
        for (quint32 key = 0; key < 300; ++key) {
            for (quint32 v = tree.TreefindNode(key); v != kNone; v = tree.TreefindNextEQ()) {
                auto range = stored.equal_range(key);
                ASSERT_TRUE(std::any_of(range.first, range.second,
                                        [v](const auto& kv) { return kv.second == v; }))
                    << "key " << key << " value " << v;
            }
        }
        EXPECT_LE(walk(tree).size(), size_t(count));
    }
}

}  // namespace
