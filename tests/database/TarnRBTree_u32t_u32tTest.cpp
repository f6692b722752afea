#include <gtest/gtest.h>

#include <map>
#include <random>
#include <vector>

#include "TreeShapeCheck.h"
#include "items/TarnRBTree_u32t_u32t.h"

namespace {

constexpr quint32 kNone = 4294967295u;

TreeShapeCheck<TarnTreeNode32t> shapeCheck() {
    return TreeShapeCheck<TarnTreeNode32t>(
        [](const TarnTreeNode32t* a, const TarnTreeNode32t* b) { return a->key < b->key; },
        [](const TarnTreeNode32t* a, const TarnTreeNode32t* b) { return a->key == b->key; });
}

std::vector<quint32> walk(TarnRBTree_u32t_u32t& tree) {
    std::vector<quint32> values;
    for (quint32 v = tree.TreeGetMin(); v != kNone; v = tree.TreeGetNext()) values.push_back(v);
    return values;
}

// Object numbers of a container arrive in non-decreasing order. Runs of equal
// keys keep their first and their last entry: each new equal key replaces the
// middle link of the key's tree node.
TEST(TarnRBTree32, OrderedInputAgreesWithAMultimap) {
    std::mt19937 rng(11);
    TarnRBTree_u32t_u32t tree;
    std::multimap<quint32, quint32> model;
    TarnTreeNode32t* first = nullptr;
    quint32 key = 0;
    const int count = 50000;
    for (int i = 0; i < count; ++i) {
        key += (rng() % 4 == 0) ? 0 : 1 + rng() % 5;  // a quarter repeat the previous key
        TarnTreeNode32t* n = tree.TreeInsert(key, quint32(i));
        ASSERT_NE(n, nullptr);
        if (!first) first = n;
        model.emplace(key, quint32(i));
    }
    EXPECT_EQ(tree.TreeNodeCount(), quint64(count));
    EXPECT_EQ(tree.TreeEqualNodeCount(), 0u);  // never met a greater key
    auto check = shapeCheck();
    EXPECT_EQ(check.check(first), "");
    EXPECT_LE(check.height(), 2 * 17);

    std::vector<quint32> expectedWalk;
    for (auto it = model.begin(); it != model.end();) {
        auto range = model.equal_range(it->first);
        quint32 firstValue = range.first->second;
        quint32 lastValue = std::prev(range.second)->second;
        expectedWalk.push_back(lastValue);
        if (lastValue != firstValue) expectedWalk.push_back(firstValue);

        EXPECT_EQ(tree.TreefindNode(it->first), lastValue);
        if (lastValue != firstValue) {
            EXPECT_EQ(tree.TreefindNextEQ(), firstValue);
        }
        EXPECT_EQ(tree.TreefindNextEQ(), kNone);
        EXPECT_EQ(tree.TreefindNode(it->first + 1) == kNone, model.count(it->first + 1) == 0);
        it = range.second;
    }
    EXPECT_EQ(walk(tree), expectedWalk);
    EXPECT_EQ(tree.TreefindNode(key + 1), kNone);
}

// A smaller key after a greater root: the root counts as the "equal" node.
TEST(TarnRBTree32, SmallerKeyHangsLeftOfTheGreaterNode) {
    TarnRBTree_u32t_u32t tree;
    TarnTreeNode32t* root = tree.TreeInsert(5, 50);
    TarnTreeNode32t* three = tree.TreeInsert(3, 30);
    ASSERT_NE(three, nullptr);
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
            quint32 key = rng() % 300;
            tree.TreeInsert(key, quint32(i));
            stored.emplace(key, quint32(i));
        }
        EXPECT_EQ(tree.TreeNodeCount(), quint64(count));
        for (quint32 key = 0; key < 300; ++key) {
            for (quint32 v = tree.TreefindNode(key); v != kNone; v = tree.TreefindNextEQ()) {
                auto range = stored.equal_range(key);
                bool present = false;
                for (auto it = range.first; it != range.second; ++it) present |= it->second == v;
                ASSERT_TRUE(present) << "key " << key << " value " << v;
            }
        }
        EXPECT_LE(walk(tree).size(), size_t(count));
    }
}

}  // namespace
