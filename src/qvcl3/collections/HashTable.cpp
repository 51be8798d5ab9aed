#include <qv/collections/HashTable.h>

#include "ChainIndex.h"

#include <qv/core/Exception.h>
#include <qv/core/Result.h>
#include <qv/lang/String.h>
#include <qvcore3/qvcore3.h>

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <new>

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

// Differs from process to process with the address space layout; computed
// on each use, so that it is the same before and after static
// initialisation (start-up fills tables early).
inline uint64_t digestSeed() noexcept
{
    return 0x9E3779B97F4A7C15ull ^ reinterpret_cast<uintptr_t>(&MAX_GROWABLE_CAPACITY);
}

} // namespace

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
            const uint32_t bucket = node->hash % modulus;
            node->next = table[bucket];
            table[bucket] = node;
            if (carried && carried[bucket])
                carried[bucket]->noteMoved();
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

void HashTable::link(HashNode* node)
{
    if (m_size >= m_threshold && m_capacity <= MAX_GROWABLE_CAPACITY)
        rehash();
    bumpModCount();
    HashNode*& head = m_table[node->hash % static_cast<uint32_t>(m_capacity)];
    node->next = head;
    head = node;
    ++m_size;
}

void HashTable::insert(HashNode* node)
{
    link(node);
    // A chain of one needs no index, and most chains are that short.
    if (m_order && (m_indexes || node->next))
        indexAfterInsert(node, nullptr);
}

void HashTable::insert(HashNode* node, Probe& probe)
{
    link(node);
    if (m_order && (m_indexes || node->next))
        indexAfterInsert(node, &probe);
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

uint64_t HashTable::digestOf(Probe& probe) const noexcept
{
    if (!probe.m_digestKnown) {
        probe.m_digest = m_order->digestKey(probe.m_key);
        probe.m_digestKnown = true;
    }
    return probe.m_digest;
}

bool HashTable::findIndexed(Probe& probe, HashNode*& found) const noexcept
{
    return m_indexes[probe.m_hash % static_cast<uint32_t>(m_capacity)]->find(digestOf(probe), probe.m_key, found);
}

uint64_t HashTable::digestUnits(const char16_t* units, int32_t count, bool foldCase) noexcept
{
    // Four units per step, each step a multiply and a shift, then a
    // 64-bit finaliser. Only its spread matters: equal digests of unequal
    // keys cost a key comparison, never a wrong answer.
    uint64_t digest = digestSeed() ^ (static_cast<uint64_t>(count) * 0xC2B2AE3D27D4EB4Full);
    const auto step = [&digest](uint64_t word) {
        digest = (digest ^ word) * 0x9E3779B97F4A7C15ull;
        digest ^= digest >> 29;
    };
    int32_t i = 0;
    if (foldCase) {
        for (; i + 4 <= count; i += 4) {
            step(static_cast<uint64_t>(QVToLowerW(units[i])) | static_cast<uint64_t>(QVToLowerW(units[i + 1])) << 16 |
                 static_cast<uint64_t>(QVToLowerW(units[i + 2])) << 32 |
                 static_cast<uint64_t>(QVToLowerW(units[i + 3])) << 48);
        }
    } else {
        for (; i + 4 <= count; i += 4) {
            uint64_t word;
            std::memcpy(&word, units + i, sizeof word);
            step(word);
        }
    }
    if (i < count) {
        uint64_t word = 0;
        for (; i < count; ++i)
            word = word << 16 | (foldCase ? QVToLowerW(units[i]) : units[i]);
        step(word);
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
    HashNode* previous = index->previousOf(node);
    if (previous)
        previous->next = node->next;
    else
        m_table[bucket] = node->next;
    if (!index->remove(node) || index->getSize() == 0) {
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

void HashTable::indexAfterInsert(HashNode* node, Probe* probe) noexcept
{
    const uint32_t bucket = node->hash % static_cast<uint32_t>(m_capacity);
    if (m_indexes && m_indexes[bucket]) {
        const uint64_t digest = probe ? digestOf(*probe) : m_order->digestNode(node);
        if (!m_indexes[bucket]->addHead(node, digest)) {
            // Without room for the index the chain is walked, as any other.
            delete m_indexes[bucket];
            m_indexes[bucket] = nullptr;
        }
        return;
    }
    // A chain whose index was refused (keys without an order between them,
    // or no memory) is offered one again only as its length doubles, so
    // that the attempts cost no more than the walks.
    const int32_t length = chainLength(m_table[bucket], INT32_MAX);
    if (length == INDEX_FROM_LENGTH + 1 || (length > INDEX_FROM_LENGTH && (length & (length - 1)) == 0))
        buildIndex(bucket);
}

void HashTable::buildIndex(uint32_t bucket) noexcept
{
    if (!m_indexes) {
        m_indexes = new (std::nothrow) ChainIndex*[static_cast<size_t>(m_capacity)]();
        if (!m_indexes)
            return;
    }
    ChainIndex* index = ChainIndex::create(m_order);
    if (!index)
        return;
    for (HashNode* node = m_table[bucket]; node; node = node->next) {
        if (!index->add(node, m_order->digestNode(node))) {
            delete index;
            return;
        }
    }
    index->relink(m_table[bucket]);
    m_indexes[bucket] = index;
}

ChainIndex** HashTable::carryIndexes(int32_t capacity) noexcept
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
        // Entries of one hash (every flood) go to one bucket: no walk needed.
        for (const HashNode* node = m_table[bucket]; node && whole && !index->hasOneHash(); node = node->next)
            whole = node->hash % modulus == target;
        if (whole) {
            index->startMove();
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
            if (index->keptWhole()) {
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
    // After a change behind the cursor's back m_current may name a freed
    // entry: it is only tested, never read. The scan itself reads the live
    // bucket heads (the capacity never shrinks below m_index), and next()
    // reports the change.
    if (m_current)
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
