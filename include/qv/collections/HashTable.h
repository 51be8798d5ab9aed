#ifndef QV_COLLECTIONS_HASHTABLE_H
#define QV_COLLECTIONS_HASHTABLE_H

#include <qv/core/Export.h>

#include <climits>
#include <cstdint>

namespace qv {
namespace collections {

// The link part of an entry of a HashTable; every map's entry type derives
// from it and adds its key and value.
struct HashNode {
    HashNode* next = nullptr;
    // The key's hash code, computed once when the entry is made.
    uint32_t hash = 0;
    // Where the chain's index (when it has one) keeps this entry's
    // predecessor; meaningless otherwise.
    uint32_t indexSlot = 0;
};

class ChainIndex;

// The separately chained table under every hash map of the library (the
// component-object HashMap and HashSet, StringHashMap, IntegerHashMap,
// Str1HashMap): odd sizes from 101 growing to 2n + 1, threshold (int)(load x
// capacity), bucket = hash mod capacity, new entries at the head of their
// chain, iteration from the highest bucket down. The table owns its entries
// and frees them through the function given at construction; keys are the
// maps' business, so lookups take the hash and a match predicate.
//
// A chain that grows past a few entries gets an ordered index beside it when
// the keys have an order (KeyOrder), so that many keys sharing a hash or
// a bucket cost a logarithmic lookup instead of a walk; the chain itself,
// and with it every order the table shows, stays exactly as it would be
// without the index. The index is only an accelerator: when memory for it
// runs out the chain is simply walked.
//
// Not synchronised: one thread at a time.
class QV_EXPORT HashTable {
public:
    static constexpr int32_t DEFAULT_CAPACITY = 101;
    static constexpr float DEFAULT_LOAD = 0.75f;

    typedef void (*DestroyNode)(HashNode* node) noexcept;
    // How a map's keys are ordered in a chain's index.
    struct KeyOrder {
        // What a comparison returns for two keys it cannot order. The
        // index then steps aside: the lookup walks the chain instead, and a
        // change to the chain drops its index.
        static constexpr int UNORDERED = INT32_MIN;
        // Two entries of one chain: negative, 0 or positive, and 0 exactly
        // when their keys are equal; or UNORDERED.
        int (*compareNodes)(const HashNode* a, const HashNode* b) noexcept;
        // The wanted key (as the map passes it to find) against an entry.
        int (*compareKey)(const void* key, const HashNode* node) noexcept;
        // A digest of the whole key, the same for equal keys. The index
        // orders by it before the keys, so most of its comparisons need not
        // read a key at all.
        uint64_t (*digestNode)(const HashNode* node) noexcept;
        uint64_t (*digestKey)(const void* key) noexcept;
    };

    // A digest of UTF-16 text for KeyOrder, with case folded as
    // QVToLowerW does when foldCase is true. Seeded per process, so that
    // keys cannot be chosen in advance to collide in it as well.
    static uint64_t digestUnits(const char16_t* units, int32_t count, bool foldCase) noexcept;

    // capacity >= 1 and a load factor above 0, otherwise ResultException
    // 0x80070057. Without an order (which must outlive the table), chains
    // are never indexed.
    HashTable(int32_t capacity, float load, DestroyNode destroy, const KeyOrder* order = nullptr);
    HashTable(const HashTable&) = delete;
    HashTable& operator=(const HashTable&) = delete;
    ~HashTable();

    // Capacity for a table built to hold a copy of n entries: 2n if n > 5,
    // otherwise 11.
    static int32_t calcCapacity(int32_t n) noexcept;

    int32_t getSize() const noexcept { return m_size; }
    int32_t getCapacity() const noexcept { return m_capacity; }
    int32_t getThreshold() const noexcept { return m_threshold; }
    float getLoadFactor() const noexcept { return m_loadFactor; }
    int32_t getModCount() const noexcept { return m_modCount; }
    // Changes with every clear(), which frees the entries without touching
    // modCount; cursors use it to stop instead of reading freed entries.
    uint32_t getGeneration() const noexcept { return m_generation; }
    HashNode* getBucket(int32_t index) const noexcept { return m_table[index]; }

    // The first entry with this hash that match accepts, or null.
    template <class Match>
    HashNode* find(uint32_t hash, Match&& match) const
    {
        for (HashNode* node = m_table[hash % static_cast<uint32_t>(m_capacity)]; node; node = node->next) {
            if (node->hash == hash && match(node))
                return node;
        }
        return nullptr;
    }

    // A key being looked up, for find() and insert() by key: the key's digest,
    // when a chain's index needs it, is computed once for both.
    class Probe {
    public:
        Probe(uint32_t hash, const void* key) noexcept : m_hash(hash), m_key(key) {}
        uint32_t getHash() const noexcept { return m_hash; }

    private:
        friend class HashTable;
        uint32_t m_hash;
        bool m_digestKnown = false;
        uint64_t m_digest = 0;
        const void* m_key;
    };

    // The entry whose key is equal to the probe's (by the table's
    // KeyOrder), or null; match decides in chains that have no index.
    template <class Match>
    HashNode* find(Probe& probe, Match&& match) const
    {
        HashNode* found = nullptr;
        if (m_indexes && m_indexes[probe.m_hash % static_cast<uint32_t>(m_capacity)] && findIndexed(probe, found))
            return found;
        return find(probe.m_hash, match);
    }
    template <class Match>
    HashNode* find(uint32_t hash, const void* key, Match&& match) const
    {
        Probe probe(hash, key);
        return find(probe, match);
    }

    // Unlinks the first entry with this hash that match accepts and hands it
    // to the caller (who frees it); size - 1, modCount + 1. Null, and no
    // change, when there is none.
    template <class Match>
    HashNode* detach(uint32_t hash, Match&& match)
    {
        HashNode** link = &m_table[hash % static_cast<uint32_t>(m_capacity)];
        for (HashNode* node = *link; node; link = &node->next, node = node->next) {
            if (node->hash == hash && match(node)) {
                *link = node->next;
                node->next = nullptr;
                --m_size;
                bumpModCount();
                return node;
            }
        }
        return nullptr;
    }

    // detach() by key, as find() by key.
    template <class Match>
    HashNode* detach(uint32_t hash, const void* key, Match&& match)
    {
        if (m_indexes && m_indexes[hash % static_cast<uint32_t>(m_capacity)]) {
            Probe probe(hash, key);
            HashNode* node = nullptr;
            if (!findIndexed(probe, node))
                node = find(hash, match);
            if (node)
                unlink(node);
            return node;
        }
        return detach(hash, match);
    }

    // Links a new entry (its hash already set) at the head of its bucket,
    // growing the table first when the size has reached the threshold;
    // modCount + 1, size + 1. When growing fails for lack of memory nothing
    // has changed and the caller still owns node.
    void insert(HashNode* node);
    // insert() of an entry whose key is the probe's, which find() has just
    // missed.
    void insert(HashNode* node, Probe& probe);
    // Unlinks node, which must be in the table, and frees it.
    void removeNode(HashNode* node) noexcept;
    // Frees every entry and starts again with an empty table of the same
    // capacity. Kept as the maps have always behaved: size and modCount stay
    // as they were, so the size still reports the old count, the threshold
    // is met that much earlier, and iterators made before are not
    // invalidated (they find no further entries). Nothing changes when the
    // new table cannot be allocated.
    void clear();

    // The number of chains that carry an index (for tests and benchmarks).
    int32_t getIndexedChainCount() const noexcept;

private:
    friend class HashCursor;

    // False when the index cannot order the probe's key.
    bool findIndexed(Probe& probe, HashNode*& found) const noexcept;
    uint64_t digestOf(Probe& probe) const noexcept;
    void link(HashNode* node);
    void unlink(HashNode* node) noexcept;
    void indexAfterInsert(HashNode* node, Probe* probe) noexcept;
    void buildIndex(uint32_t bucket) noexcept;
    void buildIndexes() noexcept;
    ChainIndex** carryIndexes(int32_t capacity) noexcept;
    void freeIndexes() noexcept;
    void allocTable(int32_t capacity);
    void rehash();
    void freeNodes(HashNode** table, int32_t capacity) noexcept;
    void bumpModCount() noexcept { m_modCount = static_cast<int32_t>(static_cast<uint32_t>(m_modCount) + 1u); }

    int32_t m_modCount = 0;
    float m_loadFactor;
    int32_t m_size = 0;
    int32_t m_capacity = 0;
    int32_t m_threshold = 0;
    HashNode** m_table = nullptr;
    uint32_t m_generation = 0;
    DestroyNode m_destroy;
    const KeyOrder* m_order;
    // One slot per bucket, null until a chain first needs an index; a slot
    // is null for a chain without one.
    ChainIndex** m_indexes = nullptr;
};

// A fail-fast walk over a HashTable: buckets from the highest index down,
// each chain from its head (newest first). A structural change made other
// than through this cursor makes next() throw qv::Exception (without
// message), as does next() past the end. After the table's clear() the walk
// is over. The table must outlive the cursor.
class QV_EXPORT HashCursor {
public:
    explicit HashCursor(const HashTable& table) noexcept;

    // True while the scan has entries left, whether or not the table has
    // changed behind the cursor's back (next() reports that).
    bool hasNext() noexcept;
    HashNode* next();
    // Removes the entry next() returned last. IllegalStateException when
    // there is none (or it is already removed); qv::Exception when the
    // table has changed behind the cursor's back.
    void remove();

private:
    bool stale() const noexcept;

    HashTable* m_table;
    int32_t m_expectedModCount;
    uint32_t m_generation;
    int32_t m_index;
    HashNode* m_current = nullptr;
    HashNode* m_lastReturned = nullptr;
};

} // namespace collections
} // namespace qv

#endif
