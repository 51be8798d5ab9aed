#ifndef QV_COLLECTIONS_CHAININDEX_H
#define QV_COLLECTIONS_CHAININDEX_H

#include <qv/collections/HashTable.h>

#include <cstdint>

namespace qv {
namespace collections {

// The ordered index beside one long chain of a HashTable: a B+ tree of the
// chain's entries ordered by a 64-bit digest of the key, then by the key
// itself (which is read only when two digests are equal), and beside it,
// for each entry, its predecessor in the chain, found through the entry's
// indexSlot, so that unlinking needs neither a walk of the chain nor a
// second search. A tree node holds 32 digests side by side, so a lookup
// among a million entries touches four or five nodes instead of twenty
// scattered ones.
//
// Nothing here throws: an operation that runs out of memory, or meets keys
// that the map's order cannot compare, says so, and the table then walks the
// chain as it would without an index.
class ChainIndex {
public:
    // Null when memory runs out.
    static ChainIndex* create(const HashTable::KeyOrder* keys) noexcept;
    ~ChainIndex();
    ChainIndex(const ChainIndex&) = delete;
    ChainIndex& operator=(const ChainIndex&) = delete;

    int32_t getSize() const noexcept { return m_size; }

    // Sets found to the entry whose key equals key (digest is its digest),
    // or null. False when the keys' order failed for key.
    bool find(uint64_t digest, const void* key, HashNode*& found) const noexcept;
    // Adds node without setting its predecessor (see relink). False when
    // memory ran out or the keys' order failed; the index is then as it
    // was.
    bool add(HashNode* node, uint64_t digest) noexcept;
    // Adds node, the new head of the chain (node->next the old head, which
    // is in the index when not null). False as add(); the index then no
    // longer covers the chain.
    bool addHead(HashNode* node, uint64_t digest) noexcept;
    // The entry before node in the chain, null for the head.
    HashNode* previousOf(const HashNode* node) const noexcept;
    // Takes node, which is in the index, out of it, as the table unlinks it
    // from the chain: the entry after node gets node's predecessor. False
    // when the keys' order failed; the index no longer covers the chain.
    bool remove(HashNode* node) noexcept;
    // Sets every predecessor again from the chain as it now stands.
    void relink(HashNode* head) noexcept;

    // Whether every entry ever added had one hash (then they all share a
    // bucket at any capacity).
    bool hasOneHash() const noexcept { return m_oneHash; }
    // Growth of the table counts the entries moved into this index's new
    // bucket: the index still covers that chain when they are its entries
    // alone.
    void startMove() noexcept { m_moved = 0; }
    void noteMoved() noexcept { ++m_moved; }
    bool keptWhole() const noexcept { return m_moved == m_size; }

private:
    struct Node;
    struct Inner;
    struct Path;
    struct Place {
        // For a free place, the next free one (as a number) instead.
        HashNode* previous;
        uint64_t digest;
    };
    struct Probe {
        uint64_t digest;
        // One of the two: a wanted key, or an entry.
        const void* key;
        const HashNode* node;
    };

    explicit ChainIndex(const HashTable::KeyOrder* keys) noexcept : m_keys(keys) {}

    int compare(const Probe& probe, const HashNode* entry) const noexcept;
    int lowerBound(const Node* node, const Probe& probe, bool& equal) const noexcept;
    int childFor(const Inner* inner, const Probe& probe) const noexcept;
    // False when the keys' order failed on the way.
    bool descend(const Probe& probe, Path& path) const noexcept;
    bool insertItem(const Probe& probe, HashNode* entry) noexcept;
    bool takePlace(HashNode* node, uint64_t digest) noexcept;
    void releasePlace(uint32_t place) noexcept;
    static void freeNode(Node* node) noexcept;
    static void freeTree(Node* node) noexcept;

    const HashTable::KeyOrder* m_keys;
    Node* m_root = nullptr;
    int32_t m_depth = 0;
    int32_t m_size = 0;
    Place* m_places = nullptr;
    uint32_t m_placeCount = 0;
    uint32_t m_placeCapacity = 0;
    uint32_t m_freePlace = UINT32_MAX;
    uint32_t m_hash = 0;
    bool m_oneHash = true;
    int32_t m_moved = 0;
};

} // namespace collections
} // namespace qv

#endif
