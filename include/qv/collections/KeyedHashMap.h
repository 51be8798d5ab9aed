#ifndef QV_COLLECTIONS_KEYEDHASHMAP_H
#define QV_COLLECTIONS_KEYEDHASHMAP_H

#include <qv/collections/HashTable.h>
#include <qv/collections/qvcom/IQVComparator.h>
#include <qv/core/Boundary.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>

#include <memory>
#include <utility>

namespace qv {
namespace collections {

// The maps whose keys are plain values (a String, an int32_t, a Str1) rather
// than component objects: StringHashMap, IntegerHashMap, Str1HashMap and
// Str1HashMapLC. Values are component objects held by reference count, and
// the table is the HashTable of every other hash map, with the same
// constants, growth, order and clear() rules.
//
// Traits supplies, for keys k and stored keys s:
//   static uint32_t hash(const Key& k);
//   static bool equal(const Key& s, const Key& k);
//   static Key store(const Key& k);      // the form kept in the table
//   static int compare(const Key& a, const Key& b);  // 0 exactly when equal
//   static uint64_t digest(const Key& k);  // of the whole key, equal for equal keys
template <class Key, class Traits>
class KeyedHashMap : public Object {
public:
    static constexpr int32_t DEFAULT_CAPACITY = HashTable::DEFAULT_CAPACITY;
    static constexpr float DEFAULT_LOAD = HashTable::DEFAULT_LOAD;

    class Entry : private HashNode {
    public:
        const Key& getKey() const noexcept { return m_key; }
        const Reference<IQVUnknown>& getValue() const noexcept { return m_value; }
        // Replaces the value in the map (not a structural change); returns
        // the old one.
        Reference<IQVUnknown> setValue(IQVUnknown* value) noexcept
        {
            Reference<IQVUnknown> previous(value);
            m_value.swap(previous);
            return previous;
        }

    private:
        friend class KeyedHashMap;
        Entry(Key key, IQVUnknown* value, uint32_t keyHash) : m_key(std::move(key)), m_value(value) { hash = keyHash; }
        Key m_key;
        Reference<IQVUnknown> m_value;
    };

    // A fail-fast walk in table order (buckets from the highest down, each
    // chain newest first): after a structural change made other than
    // through it, next() throws qv::Exception, as it does past the end;
    // after clear() the walk is over. The map must outlive it.
    class Iterator {
    public:
        explicit Iterator(KeyedHashMap& map) noexcept : m_cursor(map.m_table) {}
        bool hasNext() noexcept { return m_cursor.hasNext(); }
        // Valid until the map changes.
        const Entry& next() { return *static_cast<const Entry*>(m_cursor.next()); }
        void remove() { m_cursor.remove(); }

    private:
        HashCursor m_cursor;
    };

    // Live views of the keys, the values and the entries (keySet(),
    // values(), entrySet()). They walk the map in its own order with the
    // fail-fast cursor of Iterator, and what is removed through them or
    // their iterators is removed from the map; Entry::setValue on an entry
    // of the entry walk writes through. The map must outlive them. Each view
    // has getSize, clear, createIterator (hasNext, next, remove) and, where
    // it means something, contains and remove.
    // The walk of the views: the fail-fast cursor of Iterator, handing out
    // what Part takes from each entry (valid until the map changes).
    template <class Part>
    class ViewIterator {
    public:
        explicit ViewIterator(KeyedHashMap& map) noexcept : m_cursor(map.m_table) {}
        bool hasNext() noexcept { return m_cursor.hasNext(); }
        decltype(auto) next() { return Part::of(*entryOf(m_cursor.next())); }
        void remove() { m_cursor.remove(); }

    private:
        HashCursor m_cursor;
    };
    struct KeyPart {
        static const Key& of(Entry& entry) noexcept { return entry.getKey(); }
    };
    struct ValuePart {
        static const Reference<IQVUnknown>& of(Entry& entry) noexcept { return entry.getValue(); }
    };
    struct EntryPart {
        static Entry& of(Entry& entry) noexcept { return entry; }
    };

    template <class Part>
    class View {
    public:
        typedef ViewIterator<Part> Iterator;

        explicit View(KeyedHashMap& map) noexcept : m_map(&map) {}
        int32_t getSize() const noexcept { return m_map->getSize(); }
        void clear() { m_map->clear(); }
        Iterator createIterator() const noexcept { return Iterator(*m_map); }

    protected:
        KeyedHashMap* m_map;
    };

    class KeySet : public View<KeyPart> {
    public:
        using View<KeyPart>::View;
        bool contains(const Key& key) const { return this->m_map->containsKey(key); }
        bool remove(const Key& key)
        {
            if (!this->m_map->containsKey(key))
                return false;
            this->m_map->remove(key);
            return true;
        }
    };

    class Values : public View<ValuePart> {
    public:
        using View<ValuePart>::View;
        bool contains(const IQVUnknown* value) const { return this->m_map->containsValue(value); }
        // Removes the first entry, in the map's order, whose value is equal
        // (default comparator).
        bool remove(const IQVUnknown* value)
        {
            for (typename View<ValuePart>::Iterator it(*this->m_map); it.hasNext();) {
                if (valuesEqual(value, it.next().get())) {
                    it.remove();
                    return true;
                }
            }
            return false;
        }
    };

    typedef View<EntryPart> EntrySet;

    explicit KeyedHashMap(int32_t capacity = DEFAULT_CAPACITY, float load = DEFAULT_LOAD)
        : m_table(capacity, load, &destroyEntry, keyOrder())
    {}
    // A new object (unreferenced) with calcCapacity(other's size) buckets and
    // other's load factor.
    KeyedHashMap(const KeyedHashMap& other)
        : Object(), m_table(calcCapacity(other.getSize()), other.getLoadFactor(), &destroyEntry, keyOrder())
    {
        for (int32_t i = other.m_table.getCapacity() - 1; i >= 0; --i) {
            for (HashNode* node = other.m_table.getBucket(i); node; node = node->next)
                put(entryOf(node)->m_key, entryOf(node)->m_value.get());
        }
    }
    KeyedHashMap& operator=(const KeyedHashMap&) = delete;
    ~KeyedHashMap() override = default;

    // 2n if n > 5, otherwise 11.
    static int32_t calcCapacity(int32_t n) noexcept { return HashTable::calcCapacity(n); }

    int32_t getSize() const noexcept { return m_table.getSize(); }
    bool isEmpty() const noexcept { return m_table.getSize() == 0; }
    int32_t getCapacity() const noexcept { return m_table.getCapacity(); }
    int32_t getThreshold() const noexcept { return m_table.getThreshold(); }
    float getLoadFactor() const noexcept { return m_table.getLoadFactor(); }
    // How many chains carry an ordered index (see HashTable).
    int32_t getIndexedChainCount() const noexcept { return m_table.getIndexedChainCount(); }

    bool containsKey(const Key& key) const { return findEntry(key, Traits::hash(key)) != nullptr; }
    // By the default comparator.
    bool containsValue(const IQVUnknown* value) const
    {
        for (int32_t i = m_table.getCapacity() - 1; i >= 0; --i) {
            for (HashNode* node = m_table.getBucket(i); node; node = node->next) {
                if (valuesEqual(value, entryOf(node)->m_value.get()))
                    return true;
            }
        }
        return false;
    }
    // Null when the key is absent.
    Reference<IQVUnknown> get(const Key& key) const
    {
        const Entry* entry = findEntry(key, Traits::hash(key));
        return entry ? entry->m_value : Reference<IQVUnknown>();
    }
    // The value replaced, or null for a new key. Replacing a value is not a
    // structural change. A failed allocation leaves the map unchanged.
    Reference<IQVUnknown> put(const Key& key, IQVUnknown* value)
    {
        HashTable::Probe probe(Traits::hash(key), &key);
        if (HashNode* found = m_table.find(probe, matcher(key))) {
            Reference<IQVUnknown> previous(value);
            entryOf(found)->m_value.swap(previous);
            return previous;
        }
        std::unique_ptr<Entry> entry(new Entry(Traits::store(key), value, probe.getHash()));
        m_table.insert(entry.get(), probe);
        entry.release();
        return nullptr;
    }
    // The value removed, or null when the key was absent.
    Reference<IQVUnknown> remove(const Key& key)
    {
        HashNode* node = m_table.detach(Traits::hash(key), &key, matcher(key));
        if (!node)
            return nullptr;
        std::unique_ptr<Entry> entry(entryOf(node));
        return std::move(entry->m_value);
    }
    // Frees the entries; size and modCount stay as they were (see HashTable::clear).
    void clear() { m_table.clear(); }

    Iterator createIterator() noexcept { return Iterator(*this); }
    KeySet keySet() noexcept { return KeySet(*this); }
    Values values() noexcept { return Values(*this); }
    EntrySet entrySet() noexcept { return EntrySet(*this); }

private:
    static bool valuesEqual(const IQVUnknown* a, const IQVUnknown* b)
    {
        bool equal = false;
        ::qv::qvcom::throwIfFailed(qvcom::GetDefaultComparator()->Equals(a, b, &equal));
        return equal;
    }
    static Entry* entryOf(HashNode* node) noexcept { return static_cast<Entry*>(node); }
    static const Entry* entryOf(const HashNode* node) noexcept { return static_cast<const Entry*>(node); }
    static void destroyEntry(HashNode* node) noexcept { delete entryOf(node); }
    static int compareEntries(const HashNode* a, const HashNode* b) noexcept
    {
        return Traits::compare(entryOf(a)->m_key, entryOf(b)->m_key);
    }
    static int compareKey(const void* key, const HashNode* node) noexcept
    {
        return Traits::compare(*static_cast<const Key*>(key), entryOf(node)->m_key);
    }
    static uint64_t digestEntry(const HashNode* node) noexcept { return Traits::digest(entryOf(node)->m_key); }
    static uint64_t digestKey(const void* key) noexcept { return Traits::digest(*static_cast<const Key*>(key)); }
    static const HashTable::KeyOrder* keyOrder() noexcept
    {
        static const HashTable::KeyOrder order{&compareEntries, &compareKey, &digestEntry, &digestKey};
        return &order;
    }

    static auto matcher(const Key& key) noexcept
    {
        return [&key](HashNode* candidate) { return Traits::equal(entryOf(candidate)->m_key, key); };
    }
    Entry* findEntry(const Key& key, uint32_t hash) const
    {
        HashNode* node = m_table.find(hash, &key, matcher(key));
        return node ? entryOf(node) : nullptr;
    }

    HashTable m_table;
};

} // namespace collections
} // namespace qv

#endif
