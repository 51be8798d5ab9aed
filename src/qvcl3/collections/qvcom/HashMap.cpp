#include <qv/collections/qvcom/HashMap.h>

#include "collections/qvcom/DefaultComparison.h"
#include "collections/qvcom/Elements.h"
#include "core/ObjectCast.h"

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>

#include <typeinfo>

namespace qv {
namespace collections {
namespace qvcom {

using ::qv::qvcom::ComparableFace;

QV_BEGIN_INTERFACE_MAP(HashMapEntry)
QV_INTERFACE_ENTRY(HashMapEntry, MapEntry)
QV_END_INTERFACE_MAP()

HashMapEntry::HashMapEntry(IQVUnknown* key, IQVUnknown* value, uint32_t keyHash) noexcept : m_key(key), m_value(value)
{
    hash = keyHash;
}

HashMapEntry::~HashMapEntry() = default;

Reference<IQVUnknown> HashMapEntry::setValue(IQVUnknown* value) noexcept
{
    Reference<IQVUnknown> previous(value);
    m_value.swap(previous);
    return previous;
}

Result HashMapEntry::GetKey(IQVUnknown** key) const
{
    if (!key)
        return results::POINTER;
    *key = Reference<IQVUnknown>(m_key).detach();
    return results::OK;
}

Result HashMapEntry::GetValue(IQVUnknown** value) const
{
    if (!value)
        return results::POINTER;
    *value = Reference<IQVUnknown>(m_value).detach();
    return results::OK;
}

Result HashMapEntry::SetValue(IQVUnknown* value, IQVUnknown** previous)
{
    Reference<IQVUnknown> old = setValue(value);
    if (previous)
        *previous = old.detach();
    return results::OK;
}

HashMap::HashMap(int32_t capacity, float load) : HashMap(nullptr, nullptr, capacity, load) {}

HashMap::HashMap(const IQVComparator* keys, const IQVComparator* values, int32_t capacity, float load)
    : AbstractMap(keys, values), m_table(capacity, load, &destroyEntry, keyOrderFor(getKeyComparator()))
{}

HashMap::HashMap(const Map& other, float load) : HashMap(other, nullptr, nullptr, load) {}

HashMap::HashMap(const Map& other, const IQVComparator* keys, const IQVComparator* values, float load)
    : AbstractMap(keys, values),
      m_table(calcCapacity(sizeOf(other)), load, &destroyEntry, keyOrderFor(getKeyComparator()))
{
    copyEntries(other);
}

HashMap::HashMap(const HashMap& other)
    : AbstractMap(other),
      m_table(calcCapacity(other.getSize()), other.getLoadFactor(), &destroyEntry, keyOrderFor(getKeyComparator()))
{
    copyEntries(other);
}

HashMap::~HashMap() = default;

void HashMap::destroyEntry(HashNode* node) noexcept
{
    entryOf(node)->Release();
}

namespace {

// The default comparator's equality is CompareTo == 0, so CompareTo orders
// a chain's index soundly where it is a total order: between two objects of
// one class, as IQVComparable asks of it. Keys of different classes (whose
// CompareTo may not expect each other), null keys, keys without
// IQVComparable and failing comparisons are not ordered, and the table then
// walks the chain by Equals, as it would without an index.
int compareComparable(const IQVUnknown* a, const IQVUnknown* b) noexcept
{
    if (!a || !b || typeid(*a) != typeid(*b))
        return HashTable::KeyOrder::UNORDERED;
    try {
        ComparableFace comparable(a);
        if (!comparable)
            return HashTable::KeyOrder::UNORDERED;
        int order = 0;
        if (comparable->CompareTo(b, &order) < 0)
            return HashTable::KeyOrder::UNORDERED;
        return order < 0 ? -1 : (order > 0 ? 1 : 0);
    } catch (...) {
        return HashTable::KeyOrder::UNORDERED;
    }
}

// Objects have no digest that equal keys share but their hash, which the
// keys of a long chain have in common anyway: CompareTo decides alone.
uint64_t noDigestOfEntry(const HashNode*) noexcept
{
    return 0;
}

uint64_t noDigestOfKey(const void*) noexcept
{
    return 0;
}

} // namespace

const HashTable::KeyOrder* HashMap::keyOrderFor(const IQVComparator* keys) noexcept
{
    static const HashTable::KeyOrder order{&compareEntries, &compareKeyToEntry, &noDigestOfEntry, &noDigestOfKey};
    return keys == GetDefaultComparator() ? &order : nullptr;
}

int HashMap::compareEntries(const HashNode* a, const HashNode* b) noexcept
{
    return compareComparable(static_cast<const HashMapEntry*>(a)->m_key.get(),
                             static_cast<const HashMapEntry*>(b)->m_key.get());
}

int HashMap::compareKeyToEntry(const void* key, const HashNode* node) noexcept
{
    return compareComparable(static_cast<const IQVUnknown*>(key), static_cast<const HashMapEntry*>(node)->m_key.get());
}

void HashMap::copyEntries(const Map& other)
{
    EntryWalk walk(other);
    Reference<IQVUnknown> key;
    Reference<IQVUnknown> value;
    while (walk.next(key, value))
        put(key.get(), value.get());
}

HashMapEntry* HashMap::findEntry(const IQVUnknown* key, uint32_t hash) const
{
    HashNode* node =
        m_table.find(hash, key, [&](HashNode* candidate) { return keysEqual(key, entryOf(candidate)->m_key.get()); });
    return node ? entryOf(node) : nullptr;
}

int32_t HashMap::getSize() const
{
    return m_table.getSize();
}

// Hashed and found here, in one frame, rather than through getKeyHashCode
// and findEntry: a lookup is a chain of dependent cache misses that the
// processor overlaps with the lookups after it, and this path holds fewer
// stores and loads in flight. get() keeps the two calls: the same code
// taken into it made hits slower in every paired run.
bool HashMap::containsKey(const IQVUnknown* key) const
{
    const uint32_t hash = hashUnder(getKeyComparator(), hasDefaultKeys(), key);
    return m_table.find(hash, key, [&](HashNode* candidate) {
        return keysEqual(key, entryOf(candidate)->m_key.get());
    }) != nullptr;
}

bool HashMap::containsValue(const IQVUnknown* value) const
{
    for (int32_t i = m_table.getCapacity() - 1; i >= 0; --i) {
        for (HashNode* node = m_table.getBucket(i); node; node = node->next) {
            if (valuesEqual(value, entryOf(node)->m_value.get()))
                return true;
        }
    }
    return false;
}

Reference<IQVUnknown> HashMap::get(const IQVUnknown* key) const
{
    HashMapEntry* entry = findEntry(key, getKeyHashCode(key));
    return entry ? entry->m_value : Reference<IQVUnknown>();
}

Reference<IQVUnknown> HashMap::put(IQVUnknown* key, IQVUnknown* value)
{
    const uint32_t hash = getKeyHashCode(key);
    if (HashMapEntry* entry = findEntry(key, hash))
        return entry->setValue(value);
    Reference<HashMapEntry> entry(new HashMapEntry(key, value, hash));
    m_table.insert(entry.get());
    entry.detach();
    return nullptr;
}

Reference<IQVUnknown> HashMap::remove(const IQVUnknown* key)
{
    HashNode* node = m_table.detach(
        getKeyHashCode(key), key, [&](HashNode* candidate) { return keysEqual(key, entryOf(candidate)->m_key.get()); });
    if (!node)
        return nullptr;
    Reference<HashMapEntry> entry;
    entry.attach(entryOf(node));
    return entry->m_value;
}

void HashMap::clear()
{
    m_table.clear();
}

bool HashMap::containsEntry(const IQVUnknown* element) const
{
    Reference<IQVUnknown> key;
    Reference<IQVUnknown> value;
    if (!readEntry(element, key, value))
        return false;
    HashMapEntry* entry = findEntry(key.get(), getKeyHashCode(key.get()));
    return entry && valuesEqual(value.get(), entry->m_value.get());
}

Reference<AbstractSet> HashMap::createEntrySet()
{
    return makeReference<HashMapEntrySet>(this);
}

Reference<AbstractIterator> HashMap::createConstEntryIterator() const
{
    return makeReference<HashMapIterator>(const_cast<HashMap*>(this), HashMapIterator::ENTRIES, true);
}

Reference<AbstractIterator> HashMap::createViewIterator(ViewKind kind, bool readOnly) const
{
    return makeReference<HashMapIterator>(const_cast<HashMap*>(this), kind, readOnly);
}

Reference<HashMapIterator> HashMap::createKeyIterator()
{
    return makeReference<HashMapIterator>(this, HashMapIterator::KEYS);
}

Reference<HashMapIterator> HashMap::createValueIterator()
{
    return makeReference<HashMapIterator>(this, HashMapIterator::VALUES);
}

Reference<HashMapIterator> HashMap::createEntryIterator()
{
    return makeReference<HashMapIterator>(this, HashMapIterator::ENTRIES);
}

HashMapIterator::HashMapIterator(HashMap* map, int32_t kind, bool readOnly)
    : m_map(map), m_kind(kind), m_readOnly(readOnly), m_cursor(map->m_table)
{}

HashMapIterator::~HashMapIterator() = default;

bool HashMapIterator::hasNext()
{
    return m_cursor.hasNext();
}

HashMapEntry* HashMapIterator::nextEntry()
{
    return HashMap::entryOf(m_cursor.next());
}

Reference<IQVUnknown> HashMapIterator::next()
{
    HashMapEntry* entry = nextEntry();
    switch (m_kind) {
    case KEYS: return entry->m_key;
    case VALUES: return entry->m_value;
    default: return Reference<IQVUnknown>(entry->GetUnknown());
    }
}

void HashMapIterator::remove()
{
    if (m_readOnly)
        AbstractIterator::remove();
    m_cursor.remove();
}

HashMapEntrySet::HashMapEntrySet(HashMap* map) : m_map(map) {}

HashMapEntrySet::~HashMapEntrySet() = default;

int32_t HashMapEntrySet::getSize() const
{
    return m_map->getSize();
}

bool HashMapEntrySet::contains(const IQVUnknown* element) const
{
    return m_map->containsEntry(element);
}

bool HashMapEntrySet::remove(const IQVUnknown* element)
{
    if (!m_map->containsEntry(element))
        return false;
    Reference<IQVUnknown> key;
    Reference<IQVUnknown> value;
    readEntry(element, key, value);
    m_map->remove(key.get());
    return true;
}

void HashMapEntrySet::clear()
{
    m_map->clear();
}

uint32_t HashMapEntrySet::hashCode() const
{
    return m_map->hashCode();
}

Reference<AbstractIterator> HashMapEntrySet::createIterator()
{
    return makeReference<HashMapIterator>(m_map.get(), HashMapIterator::ENTRIES);
}

Reference<AbstractIterator> HashMapEntrySet::createConstIterator() const
{
    return makeReference<HashMapIterator>(m_map.get(), HashMapIterator::ENTRIES, true);
}

} // namespace qvcom
} // namespace collections
} // namespace qv
