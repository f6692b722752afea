#pragma once

#include <QtGlobal>

#include <algorithm>
#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>
#include <utility>
#include <vector>

// Bump allocator for tree nodes. A tree never frees single nodes, only all of
// them at once, so nodes are carved out of growing chunks and released
// together: one allocation per chunk instead of one per node, and nodes made
// one after another sit next to each other in memory.
template <typename Node>
class TarnNodePool {
  public:
    TarnNodePool() = default;
    ~TarnNodePool() { reset(); }
    TarnNodePool(const TarnNodePool&) = delete;
    TarnNodePool& operator=(const TarnNodePool&) = delete;

    // Constructs a node from the aggregate initialisers. Throws std::bad_alloc
    // when memory runs out (the caller turns that into a null result).
    template <typename... Args>
    Node* make(Args&&... args) {
        if (m_chunks.empty() || m_chunks.back().used == m_chunks.back().capacity) grow();
        Chunk& chunk = m_chunks.back();
        Node* node = chunk.nodes + chunk.used;
        ::new (static_cast<void*>(node)) Node{std::forward<Args>(args)...};
        ++chunk.used;
        ++m_count;
        return node;
    }

    // Destroys every node and gives the memory back.
    void reset() {
        std::allocator<Node> alloc;
        for (Chunk& chunk : m_chunks) {
            if constexpr (!std::is_trivially_destructible_v<Node>) {
                std::destroy_n(chunk.nodes, chunk.used);
            }
            alloc.deallocate(chunk.nodes, chunk.capacity);
        }
        m_chunks.clear();
        m_count = 0;
    }

    // Nodes made since the last reset.
    quint64 count() const { return m_count; }

  private:
    struct Chunk {
        Node* nodes;
        std::size_t capacity;
        std::size_t used;
    };

    // Chunks stay below the C library's threshold for mapping memory freshly
    // from the system, so a new tree reuses memory that earlier ones gave back
    // instead of faulting in new pages.
    static constexpr std::size_t kFirstChunk = 32;
    static constexpr std::size_t kLargestChunk =
        std::max<std::size_t>(kFirstChunk, (std::size_t{64} << 10) / sizeof(Node));

    void grow() {
        const std::size_t capacity =
            m_chunks.empty() ? kFirstChunk : std::min(m_chunks.back().capacity * 2, kLargestChunk);
        m_chunks.reserve(m_chunks.size() + 1);  // so that push_back cannot throw below
        std::allocator<Node> alloc;
        Node* nodes = alloc.allocate(capacity);
        m_chunks.push_back(Chunk{nodes, capacity, 0});
    }

    std::vector<Chunk> m_chunks;
    quint64 m_count = 0;
};
