#ifndef QV_COLLECTIONS_QVCOM_ABSTRACTMAP_H
#define QV_COLLECTIONS_QVCOM_ABSTRACTMAP_H

#include <qv/collections/qvcom/AbstractIterator.h>
#include <qv/collections/qvcom/AbstractSet.h>
#include <qv/collections/qvcom/IQVComparator.h>
#include <qv/collections/qvcom/Map.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>

namespace qv {
namespace collections {
namespace qvcom {

// Base of the maps, holding the key and the value comparators. A derived
// class supplies the lookups and the entry walk; putAll, equality, hash
// code, order and text come from here. Class operations throw; interface
// operations answer by result code.
class QV_EXPORT AbstractMap : public Object, public Map {
    QV_DECLARE_INTERFACE_MAP()

public:
    ~AbstractMap() override;

    virtual int32_t getSize() const = 0;
    bool isEmpty() const { return getSize() == 0; }
    virtual bool containsKey(const IQVUnknown* key) const = 0;
    virtual bool containsValue(const IQVUnknown* value) const = 0;
    // Null when the key is absent.
    virtual Reference<IQVUnknown> get(const IQVUnknown* key) const = 0;
    // The value replaced, or null for a new key.
    virtual Reference<IQVUnknown> put(IQVUnknown* key, IQVUnknown* value) = 0;
    // The value removed, or null when the key was absent.
    virtual Reference<IQVUnknown> remove(const IQVUnknown* key) = 0;
    virtual void clear() = 0;
    virtual Reference<AbstractSet> createEntrySet() = 0;
    // Elements are MapEntry objects; remove() is refused.
    virtual Reference<AbstractIterator> createConstEntryIterator() const = 0;

    enum ViewKind { KEYS = 0, VALUES = 1, ENTRIES = 2 };

    // Live views: what is removed from them (or through their iterators) is
    // removed from the map, MapEntry::SetValue on an entry of entrySet()
    // writes through, and they walk the map in its own order. Adding to a
    // view is refused with UnsupportedOperationException.
    Reference<AbstractSet> keySet();
    Reference<AbstractCollection> values();
    Reference<AbstractSet> entrySet() { return createEntrySet(); }
    // The keys, values or entries in the map's order; remove() removes from
    // the map unless readOnly. By default a projection of the entry set's
    // iterator.
    virtual Reference<AbstractIterator> createViewIterator(ViewKind kind, bool readOnly) const;

    // Puts every entry of other, in other's order. other may be this map.
    virtual void putAll(const Map& other);

    const IQVComparator* getKeyComparator() const noexcept { return m_keyComparator.get(); }
    const IQVComparator* getValueComparator() const noexcept { return m_valueComparator.get(); }

    // Another Map of the same size holding, for every key of this map, a
    // value equal (by this map's value comparator) to this map's.
    bool equals(const Object& other) const override;
    // The sum over the entries of hash(key) ^ hash(value).
    uint32_t hashCode() const override;
    // Against another Map: 0 when equal, otherwise by size, then by hash
    // code, then by address. Anything else by address.
    int compareTo(const Object& other) const override;
    using Object::toString;
    // "{key=value, ...}"; where the map meets itself again among its keys or
    // values, directly or through other collections, it is written
    // "(this map)". Likewise a map met again while its own hash code is
    // worked out counts 0, and a pair met again while it is being compared
    // counts as equal.
    String toString() override;

    Result GetSize(int32_t* size) const override;
    Result ContainsKey(const IQVUnknown* key, bool* result) const override;
    Result ContainsValue(const IQVUnknown* value, bool* result) const override;
    Result Get(const IQVUnknown* key, IQVUnknown** value) const override;
    Result Put(IQVUnknown* key, IQVUnknown* value, IQVUnknown** previous) override;
    Result Remove(const IQVUnknown* key, IQVUnknown** removed) override;
    Result Clear() override;
    Result PutAll(const Map* other) override;
    Result CreateEntrySet(Set** entries) override;
    Result CreateConstEntryIterator(ConstIterator** entries) const override;
    Result CreateKeySet(Set** keys) override;
    Result CreateValues(Collection** values) override;

protected:
    // Null comparators mean the default comparator.
    AbstractMap(const IQVComparator* keys, const IQVComparator* values);
    // A copy is a new object: it starts unreferenced, with the source's comparators.
    AbstractMap(const AbstractMap& other);
    AbstractMap& operator=(const AbstractMap&) = delete;

    uint32_t getKeyHashCode(const IQVUnknown* key) const;
    // True when the keys hash and compare as the default comparator does,
    // which the map then does itself.
    bool hasDefaultKeys() const noexcept { return m_defaultKeys; }
    uint32_t getValueHashCode(const IQVUnknown* value) const;
    // One object is its own equal under the default comparator, which then
    // calls nothing: a lookup with the very key stored answers without a call.
    bool keysEqual(const IQVUnknown* a, const IQVUnknown* b) const
    {
        return (a == b && m_defaultKeys) || compareKeys(a, b);
    }
    bool valuesEqual(const IQVUnknown* a, const IQVUnknown* b) const;

private:
    bool compareKeys(const IQVUnknown* a, const IQVUnknown* b) const;

    Reference<const IQVComparator> m_keyComparator;
    Reference<const IQVComparator> m_valueComparator;
    // True for the default comparator, whose hashing and equality the map
    // then does itself, with the same calls on the elements.
    bool m_defaultKeys;
    bool m_defaultValues;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
