#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <random>
#include <set>
#include <vector>

#include "TreeShapeCheck.h"
#include "items/TarnRBTree.h"

namespace {

// An entry: `key` decides order and equality, `serial` tells entries apart.
struct Entry {
    int key = 0;
    int serial = 0;
};

using Tree = TarnRBTree<Entry>;
using Node = Tree::TarnTreeNode;

void byKey(Tree& tree) {
    tree.setEQBlock([](const Entry& a, const Entry& b) { return a.key == b.key; });
    tree.setLTBlock([](const Entry& a, const Entry& b) { return a.key < b.key; });
}

TreeShapeCheck<Node> shapeCheck() {
    return TreeShapeCheck<Node>(
        [](const Node* a, const Node* b) { return a->NodeData.key < b->NodeData.key; },
        [](const Node* a, const Node* b) { return a->NodeData.key == b->NodeData.key; });
}

// Fills a tree and a reference multimap with the same random entries (many
// repeated keys) and compares everything the tree answers.
class TarnRBTreeModel : public ::testing::TestWithParam<int> {};

TEST_P(TarnRBTreeModel, AgreesWithAMultimap) {
    const int seed = GetParam();
    std::mt19937 rng(seed);
    const int count = 3000 + seed * 500;
    std::uniform_int_distribution<int> keys(0, count / 3);

    Tree tree;
    byKey(tree);
    std::vector<Node*> firstNodes;
    tree.setNonEQNodeArray(&firstNodes);
    std::multimap<int, int> model;  // key -> serials in insertion order
    std::vector<int> firstKeyOrder;
    for (int serial = 0; serial < count; ++serial) {
        const int key = keys(rng);
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
    EXPECT_EQ(shapeCheck().check(firstNodes.front()), "");

    // The list of new tree nodes: each key once, in order of first arrival.
    ASSERT_EQ(firstNodes.size(), firstKeyOrder.size());
    for (size_t i = 0; i < firstNodes.size(); ++i) {
        EXPECT_EQ(firstNodes[i]->NodeData.key, firstKeyOrder[i]);
    }

    // Walk over keys: ascending, each once, carrying the first-inserted entry.
    std::vector<std::pair<int, int>> expectedFirst;
    for (int key : distinct) expectedFirst.emplace_back(key, model.lower_bound(key)->second);
    std::vector<std::pair<int, int>> walkedFirst;
    for (Node* n = tree.Tree_v2_GetMinNonEqual(); n; n = tree.Tree_v2_GetNextNonEqual()) {
        walkedFirst.emplace_back(n->NodeData.key, n->NodeData.serial);
    }
    EXPECT_EQ(walkedFirst, expectedFirst);

    auto array = tree.Tree_v2_GetNonEqDataArray();
    ASSERT_TRUE(array.has_value());
    ASSERT_EQ(array->size(), expectedFirst.size());
    for (size_t i = 0; i < array->size(); ++i) {
        EXPECT_EQ((*array)[i].key, expectedFirst[i].first);
        EXPECT_EQ((*array)[i].serial, expectedFirst[i].second);
    }

    // Walk over every entry: keys ascending, each key from latest to first.
    std::vector<std::pair<int, int>> expectedAll;
    for (int key : distinct) {
        auto range = model.equal_range(key);
        std::vector<std::pair<int, int>> run;
        for (auto it = range.first; it != range.second; ++it) run.emplace_back(key, it->second);
        expectedAll.insert(expectedAll.end(), run.rbegin(), run.rend());
    }
    std::vector<std::pair<int, int>> walkedAll;
    for (const Entry* e = tree.TreeGetMin(); e; e = tree.TreeGetNext()) {
        walkedAll.emplace_back(e->key, e->serial);
    }
    EXPECT_EQ(walkedAll, expectedAll);

    // Lookups: every key's entries from latest to first, then nothing.
    for (int key = -1; key <= count / 3 + 1; ++key) {
        std::vector<int> expected;
        auto range = model.equal_range(key);
        for (auto it = range.first; it != range.second; ++it)
            expected.insert(expected.begin(), it->second);
        std::vector<int> found;
        for (const Entry* e = tree.TreefindNode(Entry{key, -1}); e; e = tree.TreefindNextEQ()) {
            ASSERT_EQ(e->key, key);
            found.push_back(e->serial);
        }
        EXPECT_EQ(found, expected) << "key " << key;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, TarnRBTreeModel, ::testing::Range(0, 6));

TEST(TarnRBTree, StaysBalancedForSortedInput) {
    Tree tree;
    byKey(tree);
    Node* first = nullptr;
    const int count = 1 << 16;
    for (int i = 0; i < count; ++i) {
        Node* n = tree.TreeInsertNode(Entry{i, i});
        if (!first) first = n;
    }
    auto check = shapeCheck();
    EXPECT_EQ(check.check(first), "");
    EXPECT_LE(check.height(), 2 * 17);
}

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
        EXPECT_EQ(tree.TreeNodeCount(), 0u);
        EXPECT_EQ(tree.TreeEqualNodeCount(), 0u);
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

}  // namespace
