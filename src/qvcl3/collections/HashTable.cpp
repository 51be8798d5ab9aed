#include <qv/collections/HashTable.h>

#include <qv/core/Exception.h>
#include <qv/core/Result.h>
#include <qv/lang/String.h>
#include <qvcore3/qvcore3.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>
#include <set>
#include <unordered_map>

namespace qv {
namespace collections {

namespace {

// Beyond this the doubling would overflow the 32-bit capacity; the table
// then stops growing and the chains get longer instead.
constexpr int32_t MAX_GROWABLE_CAPACITY = (INT32_MAX - 1) / 2;

int32_t thresholdFor(float load, int32_t capacity) noexcept
{
    const float product = load * static_cast<float>(capacity);
    if (!(product < 2147483648.0f))
        return INT32_MAX;
    return static_cast<int32_t>(product);
}

HashNode** newTable(int32_t capacity)
{
    const size_t bytes = static_cast<size_t>(capacity) * sizeof(HashNode*);
    void* block = QVMemAlloc(bytes);
    if (!block)
        throw OutOfMemoryException();
    std::memset(block, 0, bytes);
    return static_cast<HashNode**>(block);
}

// A chain gets its index once it is longer than this: below it a walk is as
// fast as a tree lookup, and ordinary tables never get there.
constexpr int32_t INDEX_FROM_LENGTH = 8;

// A key being looked up.
struct KeyProbe {
    uint32_t hash;
    uint64_t digest;
    const void* key;
};

// An entry of a chain's index: what orders it, without reading the key.
struct IndexedNode {
    uint32_t hash;
    uint64_t digest;
    HashNode* node;
};

// Hash, then digest, then the keys themselves, which are only read when
// two digests are equal.
struct ChainOrder {
    using is_transparent = void;
    const HashTable::KeyOrder* keys;

    template <class KeysBefore>
    static bool before(uint32_t hashA, uint64_t digestA, uint32_t hashB, uint64_t digestB,
                       const KeysBefore& keysBefore) noexcept
    {
        if (hashA != hashB)
            return hashA < hashB;
        if (digestA != digestB)
            return digestA < digestB;
        return keysBefore();
    }
    bool operator()(const IndexedNode& a, const IndexedNode& b) const noexcept
    {
        return before(a.hash, a.digest, b.hash, b.digest, [&] { return keys->compareNodes(a.node, b.node) < 0; });
    }
    bool operator()(const KeyProbe& a, const IndexedNode& b) const noexcept
    {
        return before(a.hash, a.digest, b.hash, b.digest, [&] { return keys->compareKey(a.key, b.node) < 0; });
    }
    bool operator()(const IndexedNode& a, const KeyProbe& b) const noexcept
    {
        return before(a.hash, a.digest, b.hash, b.digest, [&] { return keys->compareKey(b.key, a.node) > 0; });
    }
};

// Differs from process to process with the address space layout; computed
// on each use, so that it is the same before and after static
// initialisation (start-up fills tables early).
inline uint64_t digestSeed() noexcept
{
    return 0x9E3779B97F4A7C15ull ^ reinterpret_cast<uintptr_t>(&MAX_GROWABLE_CAPACITY);
}

} // namespace

// The entries of one chain in key order, and for each entry its place in
// that order and the entry before it in the chain (null for the head), so
// that unlinking needs neither a walk nor a key comparison.
struct HashTable::ChainIndex {
    typedef std::set<IndexedNode, ChainOrder> Order;
    struct Place {
        Order::iterator at;
        HashNode* previous;
    };

    explicit ChainIndex(const KeyOrder* keys) : order(ChainOrder{keys}) {}

    // node is the new head of the chain. Throws when memory runs out, with
    // the index as it was.
    void addHead(HashNode* node)
    {
        auto added = order.insert(IndexedNode{node->hash, order.key_comp().keys->digestNode(node), node}).first;
        try {
            places.emplace(node, Place{added, nullptr});
        } catch (...) {
            order.erase(added);
            throw;
        }
        if (node->next)
            places.find(node->next)->second.previous = node;
    }

    // Sets every entry's predecessor from the chain as it now stands.
    void relink(HashNode* head) noexcept
    {
        HashNode* previous = nullptr;
        for (HashNode* node = head; node; previous = node, node = node->next)
            places.find(node)->second.previous = previous;
    }

    Order order;
    std::unordered_map<const HashNode*, Place> places;
};

HashTable::HashTable(int32_t capacity, float load, DestroyNode destroy, const KeyOrder* order)
    : m_loadFactor(load), m_destroy(destroy), m_order(order)
{
    if (capacity < 1)
        throw ResultException(results::INVALIDARG, QV_STR(u"hash table capacity must be at least 1"));
    if (!(load > 0.0f) || std::isinf(load))
        throw ResultException(results::INVALIDARG, QV_STR(u"hash table load factor must be a positive number"));
    allocTable(capacity);
}

HashTable::~HashTable()
{
    freeIndexes();
    freeNodes(m_table, m_capacity);
    QVMemFree(m_table);
}

int32_t HashTable::calcCapacity(int32_t n) noexcept
{
    if (n > 5)
        return n > INT32_MAX / 2 ? INT32_MAX : 2 * n;
    return 11;
}

void HashTable::allocTable(int32_t capacity)
{
    HashNode** table = newTable(capacity);
    QVMemFree(m_table);
    m_table = table;
    m_capacity = capacity;
    m_threshold = thresholdFor(m_loadFactor, capacity);
}

void HashTable::rehash()
{
    const int32_t oldCapacity = m_capacity;
    HashNode** oldTable = m_table;
    const int32_t capacity = oldCapacity * 2 + 1;
    HashNode** table = newTable(capacity);
    const uint32_t modulus = static_cast<uint32_t>(capacity);
    ChainIndex** carried = carryIndexes(capacity);
    for (int32_t i = oldCapacity - 1; i >= 0; --i) {
        HashNode* node = oldTable[i];
        while (node) {
            HashNode* following = node->next;
            HashNode*& head = table[node->hash % modulus];
            node->next = head;
            head = node;
            node = following;
        }
    }
    freeIndexes();
    m_indexes = carried;
    m_table = table;
    m_capacity = capacity;
    m_threshold = thresholdFor(m_loadFactor, capacity);
    QVMemFree(oldTable);
    buildIndexes();
}

void HashTable::insert(HashNode* node)
{
    if (m_size >= m_threshold && m_capacity <= MAX_GROWABLE_CAPACITY)
        rehash();
    bumpModCount();
    HashNode*& head = m_table[node->hash % static_cast<uint32_t>(m_capacity)];
    node->next = head;
    head = node;
    ++m_size;
    // A chain of one needs no index, and most chains are that short.
    if (m_order && (m_indexes || node->next))
        indexAfterInsert(node);
}

void HashTable::removeNode(HashNode* node) noexcept
{
    if (m_indexes && m_indexes[node->hash % static_cast<uint32_t>(m_capacity)]) {
        unlink(node);
        m_destroy(node);
        return;
    }
    HashNode** link = &m_table[node->hash % static_cast<uint32_t>(m_capacity)];
    while (*link && *link != node)
        link = &(*link)->next;
    if (!*link)
        return;
    *link = node->next;
    node->next = nullptr;
    --m_size;
    bumpModCount();
    m_destroy(node);
}

void HashTable::clear()
{
    HashNode** fresh = newTable(m_capacity);
    HashNode** old = m_table;
    freeIndexes();
    m_table = fresh;
    ++m_generation;
    freeNodes(old, m_capacity);
    QVMemFree(old);
}

void HashTable::freeNodes(HashNode** table, int32_t capacity) noexcept
{
    if (!table)
        return;
    for (int32_t i = 0; i < capacity; ++i) {
        HashNode* node = table[i];
        table[i] = nullptr;
        while (node) {
            HashNode* following = node->next;
            node->next = nullptr;
            m_destroy(node);
            node = following;
        }
    }
}

HashNode* HashTable::findIndexed(uint32_t hash, const void* key) const noexcept
{
    const ChainIndex* index = m_indexes[hash % static_cast<uint32_t>(m_capacity)];
    auto found = index->order.find(KeyProbe{hash, m_order->digestKey(key), key});
    return found == index->order.end() ? nullptr : found->node;
}

uint64_t HashTable::digestUnits(const char16_t* units, int32_t count, bool foldCase) noexcept
{
    // FNV-1a over the units, finished with a 64-bit mixer.
    uint64_t digest = digestSeed() ^ static_cast<uint64_t>(count);
    for (int32_t i = 0; i < count; ++i) {
        const char16_t unit = foldCase ? QVToLowerW(units[i]) : units[i];
        digest = (digest ^ unit) * 0x100000001B3ull;
    }
    digest ^= digest >> 33;
    digest *= 0xFF51AFD7ED558CCDull;
    digest ^= digest >> 33;
    return digest;
}

void HashTable::unlink(HashNode* node) noexcept
{
    const uint32_t bucket = node->hash % static_cast<uint32_t>(m_capacity);
    ChainIndex*& index = m_indexes[bucket];
    auto place = index->places.find(node);
    HashNode* previous = place->second.previous;
    if (previous)
        previous->next = node->next;
    else
        m_table[bucket] = node->next;
    if (node->next)
        index->places.find(node->next)->second.previous = previous;
    index->order.erase(place->second.at);
    index->places.erase(place);
    if (index->order.empty()) {
        delete index;
        index = nullptr;
    }
    node->next = nullptr;
    --m_size;
    bumpModCount();
}

namespace {

int32_t chainLength(const HashNode* node, int32_t atMost) noexcept
{
    int32_t length = 0;
    for (; node && length < atMost; node = node->next)
        ++length;
    return length;
}

} // namespace

void HashTable::indexAfterInsert(HashNode* node) noexcept
{
    const uint32_t bucket = node->hash % static_cast<uint32_t>(m_capacity);
    if (m_indexes && m_indexes[bucket]) {
        try {
            m_indexes[bucket]->addHead(node);
        } catch (...) {
            // Without room for the index the chain is walked, as any other.
            delete m_indexes[bucket];
            m_indexes[bucket] = nullptr;
        }
        return;
    }
    if (chainLength(m_table[bucket], INDEX_FROM_LENGTH + 1) > INDEX_FROM_LENGTH)
        buildIndex(bucket);
}

void HashTable::buildIndex(uint32_t bucket) noexcept
{
    if (!m_indexes) {
        m_indexes = new (std::nothrow) ChainIndex*[static_cast<size_t>(m_capacity)]();
        if (!m_indexes)
            return;
    }
    ChainIndex* index = new (std::nothrow) ChainIndex(m_order);
    if (!index)
        return;
    try {
        HashNode* previous = nullptr;
        for (HashNode* node = m_table[bucket]; node; previous = node, node = node->next) {
            auto added = index->order.insert(IndexedNode{node->hash, m_order->digestNode(node), node}).first;
            index->places.emplace(node, ChainIndex::Place{added, previous});
        }
    } catch (...) {
        delete index;
        return;
    }
    m_indexes[bucket] = index;
}

HashTable::ChainIndex** HashTable::carryIndexes(int32_t capacity) noexcept
{
    if (!m_indexes)
        return nullptr;
    ChainIndex** carried = new (std::nothrow) ChainIndex*[static_cast<size_t>(capacity)]();
    if (!carried)
        return nullptr;
    const uint32_t modulus = static_cast<uint32_t>(capacity);
    for (int32_t bucket = 0; bucket < m_capacity; ++bucket) {
        ChainIndex*& index = m_indexes[bucket];
        if (!index)
            continue;
        const uint32_t target = m_table[bucket]->hash % modulus;
        bool whole = !carried[target];
        for (const HashNode* node = m_table[bucket]; node && whole; node = node->next)
            whole = node->hash % modulus == target;
        if (whole) {
            carried[target] = index;
            index = nullptr;
        }
    }
    return carried;
}

void HashTable::buildIndexes() noexcept
{
    if (!m_order)
        return;
    for (int32_t bucket = 0; bucket < m_capacity; ++bucket) {
        HashNode* head = m_table[bucket];
        if (ChainIndex* index = m_indexes ? m_indexes[bucket] : nullptr) {
            // Carried over from the old table: still right when no other
            // entry joined the chain, which now runs in the other direction.
            if (chainLength(head, INT32_MAX) == static_cast<int32_t>(index->order.size())) {
                index->relink(head);
                continue;
            }
            delete index;
            m_indexes[bucket] = nullptr;
        }
        if (chainLength(head, INDEX_FROM_LENGTH + 1) > INDEX_FROM_LENGTH)
            buildIndex(static_cast<uint32_t>(bucket));
    }
}

void HashTable::freeIndexes() noexcept
{
    if (!m_indexes)
        return;
    for (int32_t bucket = 0; bucket < m_capacity; ++bucket)
        delete m_indexes[bucket];
    delete[] m_indexes;
    m_indexes = nullptr;
}

int32_t HashTable::getIndexedChainCount() const noexcept
{
    int32_t count = 0;
    for (int32_t bucket = 0; m_indexes && bucket < m_capacity; ++bucket)
        count += m_indexes[bucket] ? 1 : 0;
    return count;
}

HashCursor::HashCursor(const HashTable& table) noexcept
    : m_table(const_cast<HashTable*>(&table)), m_expectedModCount(table.m_modCount), m_generation(table.m_generation),
      m_index(table.m_capacity)
{}

bool HashCursor::stale() const noexcept
{
    return m_generation != m_table->m_generation;
}

bool HashCursor::hasNext() noexcept
{
    if (stale())
        return false;
    if (m_expectedModCount != m_table->m_modCount)
        return true;
    while (!m_current && m_index > 0)
        m_current = m_table->m_table[--m_index];
    return m_current != nullptr;
}

HashNode* HashCursor::next()
{
    if (m_expectedModCount != m_table->m_modCount || stale())
        throw Exception();
    while (!m_current && m_index > 0)
        m_current = m_table->m_table[--m_index];
    if (!m_current)
        throw Exception();
    HashNode* node = m_current;
    m_lastReturned = node;
    m_current = node->next;
    return node;
}

void HashCursor::remove()
{
    if (!m_lastReturned || stale())
        throw IllegalStateException(QV_STR(u"no element to remove"));
    if (m_expectedModCount != m_table->m_modCount)
        throw Exception();
    HashNode* node = m_lastReturned;
    m_lastReturned = nullptr;
    m_table->removeNode(node);
    m_expectedModCount = m_table->m_modCount;
}

} // namespace collections
} // namespace qv
