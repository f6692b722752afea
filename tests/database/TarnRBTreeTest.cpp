#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <random>
#include <vector>

#include "items/TarnRBTree.h"
#include "items/TarnRBTree_u32t_u32t.h"

// Both ordered trees are filled with generated input and their answers
// compared with a std::map of each key's entries; their height must stay that
// of a balanced tree (the walks and lookups check the order).
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

template <typename N>
int height(const N* n, const N* nil) {
    return n == nil ? 0 : 1 + std::max(height(n->NodeLeft, nil), height(n->NodeRight, nil));
}

// No path from the root is longer than a red-black tree of `keys` allows.
// The root's parent is the sentinel, whose own parent is empty.
template <typename N>
void expectBalanced(N* anyNode, size_t keys) {
    while (anyNode->NodeParent->NodeParent != nullptr) anyNode = anyNode->NodeParent;
    EXPECT_LE(height(anyNode, anyNode->NodeParent),
              2 * int(std::ceil(std::log2(double(keys) + 1))));
}

// Input: seeds 0..5 give random keys with many repeats, -1 gives 65,536
// ascending keys (the worst case for an unbalanced tree).
class TarnRBTreeModel : public ::testing::TestWithParam<int> {};

TEST_P(TarnRBTreeModel, AgreesWithAMapAndStaysBalanced) {
    const int seed = GetParam();
    std::mt19937 rng(seed < 0 ? 0 : seed);
    const int count = seed < 0 ? 1 << 16 : 3000 + seed * 500;
    const int maxKey = seed < 0 ? count - 1 : count / 3;

    Tree tree;
    tree.setEQBlock([](const Entry& a, const Entry& b) { return a.key == b.key; });
    tree.setLTBlock([](const Entry& a, const Entry& b) { return a.key < b.key; });
    std::map<int, std::vector<int>> model;  // key -> serials, latest first
    for (int serial = 0; serial < count; ++serial) {
        const int key = seed < 0 ? serial : int(rng() % unsigned(maxKey + 1));
        model[key].insert(model[key].begin(), serial);
        Node* node = tree.TreeInsertNode(Entry{key, serial});
        ASSERT_TRUE(node && node->NodeData.serial == serial);
    }
    EXPECT_EQ(tree.TreeNodeCount(), quint64(count));
    EXPECT_EQ(tree.TreeEqualNodeCount(), quint64(count) - model.size());
    expectBalanced(tree.Tree_v2_GetMinNonEqual(), model.size());

    // The walk over keys (and the data array) gives each key once with its
    // first entry; the walk over entries gives each key's entries from latest
    // to first.
    Pairs expectedFirst, walkedFirst, arrayFirst, expectedAll, walkedAll;
    for (const auto& [key, serials] : model) {
        expectedFirst.emplace_back(key, serials.back());
        for (int serial : serials) expectedAll.emplace_back(key, serial);
    }
    for (Node* n = tree.Tree_v2_GetMinNonEqual(); n; n = tree.Tree_v2_GetNextNonEqual())
        walkedFirst.emplace_back(n->NodeData.key, n->NodeData.serial);
    const auto array = tree.Tree_v2_GetNonEqDataArray();
    ASSERT_TRUE(array.has_value());
    for (const Entry& e : *array) arrayFirst.emplace_back(e.key, e.serial);
    for (const Entry* e = tree.TreeGetMin(); e; e = tree.TreeGetNext())
        walkedAll.emplace_back(e->key, e->serial);
    EXPECT_EQ(walkedFirst, expectedFirst);
    EXPECT_EQ(arrayFirst, expectedFirst);
    EXPECT_EQ(walkedAll, expectedAll);

    // Lookups: every key's entries from latest to first, then nothing.
    for (int key = -1; key <= maxKey + 1; ++key) {
        std::vector<int> found;
        for (const Entry* e = tree.TreefindNode(Entry{key, -1}); e; e = tree.TreefindNextEQ())
            found.push_back(e->key == key ? e->serial : -1);
        const auto it = model.find(key);
        EXPECT_EQ(found, it == model.end() ? std::vector<int>() : it->second) << "key " << key;
    }
    EXPECT_EQ(tree.TreefindNextEQ(), nullptr);  // a miss leaves no cursor
}

INSTANTIATE_TEST_SUITE_P(Seeds, TarnRBTreeModel, ::testing::Range(-1, 6));

// Without its rules a tree takes nothing; emptied, it answers nothing,
// releases its data and takes new entries.
TEST(TarnRBTree, DeleteReleasesDataAndTheTreeCanBeRefilled) {
    using Ptr = std::shared_ptr<int>;
    auto held = std::make_shared<int>(5), other = std::make_shared<int>(6);
    {
        TarnRBTree<Ptr> tree;
        EXPECT_EQ(tree.TreeInsertNode(held), nullptr);
        tree.setEQBlock([](const Ptr& a, const Ptr& b) { return *a == *b; });
        tree.setLTBlock([](const Ptr& a, const Ptr& b) { return *a < *b; });
        for (const Ptr& p : {held, held, held, other}) tree.TreeInsertNode(p);
        EXPECT_EQ(held.use_count(), 4);
        tree.TreeDelete();
        EXPECT_EQ(held.use_count() + other.use_count(), 2);
        EXPECT_TRUE(!tree.TreeGetMin() && !tree.TreefindNode(held) &&
                    !tree.Tree_v2_GetMinNonEqual());
        EXPECT_FALSE(tree.Tree_v2_GetNonEqDataArray().has_value());
        for (const Ptr& p : {other, held}) tree.TreeInsertNode(p);
        EXPECT_EQ(**tree.TreeGetMin(), 5);
    }
    EXPECT_EQ(held.use_count() + other.use_count(), 2);  // destruction releases the rest
}

// Rules that are not a consistent order (as the duplicate search's path rule
// can be) must still give walks that end.
TEST(TarnRBTree, WalksEndUnderInconsistentRules) {
    Tree tree;
    std::mt19937 rng(7);
    tree.setEQBlock([](const Entry& a, const Entry& b) { return a.key == b.key; });
    tree.setLTBlock([&rng](const Entry&, const Entry&) { return (rng() & 1) != 0; });
    for (int i = 0; i < 500; ++i) tree.TreeInsertNode({i % 200, i});
    int entries = 0, nodes = 0;
    for (const Entry* e = tree.TreeGetMin(); e; e = tree.TreeGetNext()) ++entries;
    for (Node* n = tree.Tree_v2_GetMinNonEqual(); n; n = tree.Tree_v2_GetNextNonEqual()) ++nodes;
    EXPECT_LE(entries, 500);
    EXPECT_LE(nodes, 500);
}

std::vector<quint32> walk(TarnRBTree_u32t_u32t& tree) {
    std::vector<quint32> values;
    for (quint32 v = tree.TreeGetMin(); v != kNone; v = tree.TreeGetNext()) values.push_back(v);
    return values;
}

// The object numbers of a container arrive in non-decreasing order. Runs of
// equal keys keep their first and their last entry: each new equal key
// replaces the middle link of the key's tree node.
TEST(TarnRBTree32, OrderedInputAgreesWithAMap) {
    std::mt19937 rng(11);
    TarnRBTree_u32t_u32t tree;
    std::map<quint32, std::pair<quint32, quint32>> firstAndLast;  // key -> values
    TarnTreeNode32t* first = nullptr;
    quint32 key = 0;
    const quint32 count = 50000;
    for (quint32 i = 0; i < count; ++i) {
        key += (rng() % 4 == 0) ? 0 : 1 + rng() % 5;  // a quarter repeat the previous key
        TarnTreeNode32t* n = tree.TreeInsert(key, i);
        ASSERT_NE(n, nullptr);
        if (!first) first = n;
        firstAndLast.try_emplace(key, i, i).first->second.second = i;
    }
    EXPECT_EQ(tree.TreeNodeCount(), quint64(count));
    EXPECT_EQ(tree.TreeEqualNodeCount(), 0u);  // never met a greater key
    expectBalanced(first, firstAndLast.size());

    // Lookups and the walk: each key's last value, then its first.
    std::vector<quint32> expected, found;
    for (const auto& [k, values] : firstAndLast) {
        expected.push_back(values.second);
        if (values.first != values.second) expected.push_back(values.first);
        for (quint32 v = tree.TreefindNode(k); v != kNone; v = tree.TreefindNextEQ())
            found.push_back(v);
        EXPECT_EQ(tree.TreefindNode(k + 1) == kNone, firstAndLast.count(k + 1) == 0);
    }
    EXPECT_EQ(found, expected);
    EXPECT_EQ(walk(tree), expected);
}

// A damaged container can list object numbers out of order: the tree may then
// lose entries, but it must answer only stored pairs and every walk must end.
TEST(TarnRBTree32, UnorderedInputNeverBreaksTheTree) {
    for (int seed = 0; seed < 20; ++seed) {
        std::mt19937 rng(seed);
        TarnRBTree_u32t_u32t tree;
        ASSERT_EQ(tree.TreefindNode(0), kNone);
        ASSERT_EQ(tree.TreeGetMin(), kNone);
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
                auto [from, to] = stored.equal_range(key);
                ASSERT_TRUE(std::any_of(from, to, [v](const auto& kv) { return kv.second == v; }))
                    << "key " << key << " value " << v;
            }
        }
        EXPECT_LE(walk(tree).size(), size_t(count));
    }
}

}  // namespace
