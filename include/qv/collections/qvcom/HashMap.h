#ifndef QV_COLLECTIONS_QVCOM_HASHMAP_H
#define QV_COLLECTIONS_QVCOM_HASHMAP_H

#include <qv/collections/HashTable.h>
#include <qv/collections/qvcom/AbstractMap.h>
#include <qv/collections/qvcom/AbstractSet.h>

namespace qv {
namespace collections {
namespace qvcom {

class HashMap;

// One key and value of a HashMap, with the key's hash code cached when the
// entry was made. The map holds one reference; an entry handed out by an
// entry iterator stays valid after the map lets it go.
class QV_EXPORT HashMapEntry final : public ComObject, public MapEntry, private HashNode {
    QV_DECLARE_INTERFACE_MAP()

public:
    HashMapEntry(IQVUnknown* key, IQVUnknown* value, uint32_t hash) noexcept;

    const Reference<IQVUnknown>& getKey() const noexcept { return m_key; }
    const Reference<IQVUnknown>& getValue() const noexcept { return m_value; }
    // Replaces the value in place (not a structural change); returns the old one.
    Reference<IQVUnknown> setValue(IQVUnknown* value) noexcept;
    uint32_t getHash() const noexcept { return hash; }

    Result GetKey(IQVUnknown** key) const override;
    Result GetValue(IQVUnknown** value) const override;
    Result SetValue(IQVUnknown* value, IQVUnknown** previous) override;

private:
    friend class HashMap;
    friend class HashMapIterator;

    ~HashMapEntry() override;

    Reference<IQVUnknown> m_key;
    Reference<IQVUnknown> m_value;
};

// Walks a HashMap's keys, values or entries: buckets from the highest down,
// each chain newest first. Fail-fast: after a structural change made other
// than through this iterator, next() throws qv::Exception without message,
// as it does past the end. After the map's clear() the walk is over.
class QV_EXPORT HashMapIterator final : public AbstractIterator {
public:
    enum Kind { KEYS = 0, VALUES = 1, ENTRIES = 2 };

    // kind 0: keys, 1: values, anything else: entries.
    HashMapIterator(HashMap* map, int32_t kind, bool readOnly = false);
    ~HashMapIterator() override;

    // Whether the scan has entries left; a change behind the iterator's
    // back is reported by next(), not here.
    bool hasNext() override;
    Reference<IQVUnknown> next() override;
    void remove() override;
    // The next entry without taking a reference: valid until the map changes.
    HashMapEntry* nextEntry();
    int32_t getKind() const noexcept { return m_kind; }

private:
    CollectionHold<HashMap> m_map;
    int32_t m_kind;
    bool m_readOnly;
    HashCursor m_cursor;
};

// The live set of a HashMap's entries: size, contains and remove go to the
// map; adding is refused with UnsupportedOperationException.
class QV_EXPORT HashMapEntrySet final : public AbstractSet {
public:
    explicit HashMapEntrySet(HashMap* map);
    ~HashMapEntrySet() override;

    int32_t getSize() const override;
    // True for a MapEntry whose key is in the map with an equal value.
    bool contains(const IQVUnknown* element) const override;
    bool remove(const IQVUnknown* element) override;
    void clear() override;
    // The map's hash code, so that equal entry sets hash alike.
    uint32_t hashCode() const override;
    Reference<AbstractIterator> createIterator() override;
    Reference<AbstractIterator> createConstIterator() const override;

private:
    CollectionHold<HashMap> m_map;
};

// The separately chained hash map of component objects. Hashing and equality
// of keys come from the key comparator, of values from the value comparator.
// Table rules (sizes 101, 203, 407, ...; threshold; iteration order; clear()
// keeping size and modCount) are HashTable's. A comparator failure is thrown
// as ResultException and leaves the map unchanged, as does a failed
// allocation in put.
class QV_EXPORT HashMap : public AbstractMap {
public:
    static constexpr int32_t DEFAULT_CAPACITY = HashTable::DEFAULT_CAPACITY;
    static constexpr float DEFAULT_LOAD = HashTable::DEFAULT_LOAD;

    explicit HashMap(int32_t capacity = DEFAULT_CAPACITY, float load = DEFAULT_LOAD);
    // Null comparators mean the default comparator.
    HashMap(const IQVComparator* keys, const IQVComparator* values, int32_t capacity = DEFAULT_CAPACITY,
            float load = DEFAULT_LOAD);
    // calcCapacity(other's size) buckets, then putAll(other).
    explicit HashMap(const Map& other, float load = DEFAULT_LOAD);
    HashMap(const Map& other, const IQVComparator* keys, const IQVComparator* values, float load = DEFAULT_LOAD);
    // Same comparators and load factor; calcCapacity(other's size) buckets.
    HashMap(const HashMap& other);
    HashMap& operator=(const HashMap&) = delete;
    ~HashMap() override;

    // 2n if n > 5, otherwise 11.
    static int32_t calcCapacity(int32_t n) noexcept { return HashTable::calcCapacity(n); }

    int32_t getSize() const override;
    bool containsKey(const IQVUnknown* key) const override;
    bool containsValue(const IQVUnknown* value) const override;
    Reference<IQVUnknown> get(const IQVUnknown* key) const override;
    // Replacing the value of a key already present is not a structural change.
    Reference<IQVUnknown> put(IQVUnknown* key, IQVUnknown* value) override;
    Reference<IQVUnknown> remove(const IQVUnknown* key) override;
    // Frees the entries; size and modCount stay as they were (see HashTable::clear).
    void clear() override;
    Reference<AbstractSet> createEntrySet() override;
    Reference<AbstractIterator> createConstEntryIterator() const override;
    Reference<AbstractIterator> createViewIterator(ViewKind kind, bool readOnly) const override;

    Reference<HashMapIterator> createKeyIterator();
    Reference<HashMapIterator> createValueIterator();
    Reference<HashMapIterator> createEntryIterator();

    int32_t getCapacity() const noexcept { return m_table.getCapacity(); }
    int32_t getThreshold() const noexcept { return m_table.getThreshold(); }
    float getLoadFactor() const noexcept { return m_table.getLoadFactor(); }

private:
    friend class HashMapIterator;
    friend class HashMapEntrySet;

    static void destroyEntry(HashNode* node) noexcept;
    // The order of a chain's index: by CompareTo, for keys of one class
    // that have it, when the keys' comparator is the default one.
    static const HashTable::KeyOrder* keyOrderFor(const IQVComparator* keys) noexcept;
    static int compareEntries(const HashNode* a, const HashNode* b) noexcept;
    static int compareKeyToEntry(const void* key, const HashNode* node) noexcept;
    static HashMapEntry* entryOf(HashNode* node) noexcept { return static_cast<HashMapEntry*>(node); }
    HashMapEntry* findEntry(const IQVUnknown* key, uint32_t hash) const;
    // True when element is a MapEntry whose key maps to an equal value here.
    bool containsEntry(const IQVUnknown* element) const;
    void copyEntries(const Map& other);

    HashTable m_table;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
