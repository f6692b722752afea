// Ordered index trees against std::multimap on the same data in the same run.
//
// Object tree: 1,000,000 objects keyed by a 64-bit identifier, 10% of them
// repeating an earlier key, inserted in random order, then each looked up.
// 32-bit tree: 1,000,000 ascending object numbers (10% repeated) mapped to
// entry indexes, as a container's table of contents fills it, then each looked
// up in random order. Each figure is the best of a few rounds.

#include <QtGlobal>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <map>
#include <random>
#include <vector>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "items/TarnRBTree.h"
#include "items/TarnRBTree_u32t_u32t.h"

namespace {

struct BenchItem {
    quint64 key = 0;
    quint32 serial = 0;
};

using Clock = std::chrono::steady_clock;

double nsPer(Clock::duration d, size_t n) {
    return std::chrono::duration<double, std::nano>(d).count() / double(n);
}

// Lets the optimiser drop nothing that feeds it.
volatile quint64 g_sink = 0;

// Freed nodes of one structure wait in the C library's bins and get sorted on
// the next large request; settle them outside the timed parts so that work is
// not charged to whichever structure is measured next.
void settleAllocator() {
#if defined(__GLIBC__)
    malloc_trim(0);
#endif
}

struct Timing {
    double insertNs = 1e300;
    double lookupNs = 1e300;
    void keepBest(double ins, double look) {
        insertNs = std::min(insertNs, ins);
        lookupNs = std::min(lookupNs, look);
    }
};

std::vector<BenchItem> makeObjects(size_t count, std::mt19937_64& rng) {
    std::vector<BenchItem> items;
    items.reserve(count);
    const size_t distinct = count - count / 10;
    for (size_t i = 0; i < distinct; ++i) items.push_back({rng(), quint32(i)});
    for (size_t i = distinct; i < count; ++i) {
        items.push_back({items[rng() % distinct].key, quint32(i)});
    }
    std::shuffle(items.begin(), items.end(), rng);
    return items;
}

void objectRound(const std::vector<BenchItem>& items, Timing& tree, Timing& baseline) {
    quint64 sum = 0;
    {
        TarnRBTree<BenchItem> t;
        t.setEQBlock([](const BenchItem& a, const BenchItem& b) { return a.key == b.key; });
        t.setLTBlock([](const BenchItem& a, const BenchItem& b) { return a.key < b.key; });
        auto t0 = Clock::now();
        for (const BenchItem& item : items) t.TreeInsertNode(item);
        auto t1 = Clock::now();
        for (const BenchItem& item : items) sum += t.TreefindNode(item)->serial;
        auto t2 = Clock::now();
        tree.keepBest(nsPer(t1 - t0, items.size()), nsPer(t2 - t1, items.size()));
    }
    settleAllocator();
    {
        std::multimap<quint64, BenchItem> m;
        auto t0 = Clock::now();
        for (const BenchItem& item : items) m.emplace(item.key, item);
        auto t1 = Clock::now();
        for (const BenchItem& item : items) sum += m.find(item.key)->second.serial;
        auto t2 = Clock::now();
        baseline.keepBest(nsPer(t1 - t0, items.size()), nsPer(t2 - t1, items.size()));
    }
    settleAllocator();
    g_sink = g_sink + sum;
}

void numberRound(const std::vector<quint32>& keys, const std::vector<quint32>& probes, Timing& tree,
                 Timing& baseline) {
    quint64 sum = 0;
    {
        TarnRBTree_u32t_u32t t;
        auto t0 = Clock::now();
        for (size_t i = 0; i < keys.size(); ++i) t.TreeInsert(keys[i], quint32(i));
        auto t1 = Clock::now();
        for (quint32 k : probes) sum += t.TreefindNode(k);
        auto t2 = Clock::now();
        tree.keepBest(nsPer(t1 - t0, keys.size()), nsPer(t2 - t1, probes.size()));
    }
    settleAllocator();
    {
        std::multimap<quint32, quint32> m;
        auto t0 = Clock::now();
        for (size_t i = 0; i < keys.size(); ++i) m.emplace(keys[i], quint32(i));
        auto t1 = Clock::now();
        for (quint32 k : probes) sum += m.find(k)->second;
        auto t2 = Clock::now();
        baseline.keepBest(nsPer(t1 - t0, keys.size()), nsPer(t2 - t1, probes.size()));
    }
    settleAllocator();
    g_sink = g_sink + sum;
}

void printRow(const char* what, const Timing& tree, const Timing& baseline) {
    std::printf(
        "%-34s insert %7.1f ns (multimap %7.1f ns, ratio %.2f)   lookup %7.1f ns "
        "(multimap %7.1f ns, ratio %.2f)\n",
        what, tree.insertNs, baseline.insertNs, tree.insertNs / baseline.insertNs, tree.lookupNs,
        baseline.lookupNs, tree.lookupNs / baseline.lookupNs);
}

}  // namespace

int main(int argc, char** argv) {
    const size_t count = argc > 1 ? size_t(std::max(1000L, std::atol(argv[1]))) : 1000000;
    const int rounds = 3;
    std::mt19937_64 rng(20240601);

    const std::vector<BenchItem> items = makeObjects(count, rng);

    std::vector<quint32> keys;
    keys.reserve(count);
    quint32 next = 1;
    for (size_t i = 0; i < count; ++i) {
        if (i == 0 || rng() % 10 != 0) ++next;  // one in ten repeats the previous number
        keys.push_back(next);
    }
    std::vector<quint32> probes = keys;
    std::shuffle(probes.begin(), probes.end(), rng);

    Timing objTree, objMap, numTree, numMap;
    for (int r = 0; r < rounds; ++r) {
        objectRound(items, objTree, objMap);
        numberRound(keys, probes, numTree, numMap);
    }

    std::printf("%zu entries, 10%% repeated keys, best of %d rounds; ratio = tree / multimap\n",
                count, rounds);
    printRow("TarnRBTree (objects, random order)", objTree, objMap);
    printRow("TarnRBTree_u32t_u32t (ascending)", numTree, numMap);
    return 0;
}
