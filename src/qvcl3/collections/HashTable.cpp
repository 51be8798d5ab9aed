#include <qv/collections/HashTable.h>

#include <qv/core/Exception.h>
#include <qv/core/Result.h>
#include <qv/lang/String.h>
#include <qvcore3/qvcore3.h>

#include <climits>
#include <cmath>
#include <cstring>

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

} // namespace

HashTable::HashTable(int32_t capacity, float load, DestroyNode destroy) : m_loadFactor(load), m_destroy(destroy)
{
    if (capacity < 1)
        throw ResultException(results::INVALIDARG, QV_STR(u"hash table capacity must be at least 1"));
    if (!(load > 0.0f) || std::isinf(load))
        throw ResultException(results::INVALIDARG, QV_STR(u"hash table load factor must be a positive number"));
    allocTable(capacity);
}

HashTable::~HashTable()
{
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
    m_table = table;
    m_capacity = capacity;
    m_threshold = thresholdFor(m_loadFactor, capacity);
    QVMemFree(oldTable);
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
}

void HashTable::removeNode(HashNode* node) noexcept
{
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

HashCursor::HashCursor(const HashTable& table) noexcept
    : m_table(const_cast<HashTable*>(&table)),
      m_expectedModCount(table.m_modCount),
      m_generation(table.m_generation),
      m_index(table.m_capacity)
{
}

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
