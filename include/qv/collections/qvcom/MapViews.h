#ifndef QV_COLLECTIONS_QVCOM_MAPVIEWS_H
#define QV_COLLECTIONS_QVCOM_MAPVIEWS_H

#include <qv/collections/qvcom/AbstractMap.h>

namespace qv {
namespace collections {
namespace qvcom {

// Walks a map's keys or values through its entry iterator, for maps that
// have no walk of their own for them (AbstractMap::createViewIterator).
class QV_EXPORT MapViewIterator final : public AbstractIterator {
public:
    MapViewIterator(Reference<AbstractIterator> entries, int32_t kind);
    ~MapViewIterator() override;

    bool hasNext() override;
    Reference<IQVUnknown> next() override;
    void remove() override;

private:
    Reference<AbstractIterator> m_entries;
    int32_t m_kind;
};

// What the views below share: size, clear and the walks go to the map.
template <class Base, AbstractMap::ViewKind Kind>
class MapView : public Base {
public:
    int32_t getSize() const override { return m_map->getSize(); }
    void clear() override { m_map->clear(); }
    Reference<AbstractIterator> createIterator() override { return m_map->createViewIterator(Kind, false); }
    Reference<AbstractIterator> createConstIterator() const override { return m_map->createViewIterator(Kind, true); }

protected:
    MapView(AbstractMap* map, const IQVComparator* comparator) : Base(comparator), m_map(map) {}

    CollectionHold<AbstractMap> m_map;
};

// The live set of a map's keys (AbstractMap::keySet): contains and remove go
// to the map; the iterators walk the map in its own order and remove from
// it. Adding is refused with UnsupportedOperationException.
class QV_EXPORT MapKeySet final : public MapView<AbstractSet, AbstractMap::KEYS> {
public:
    explicit MapKeySet(AbstractMap* map);
    ~MapKeySet() override;

    bool contains(const IQVUnknown* element) const override;
    bool remove(const IQVUnknown* element) override;
};

// The live collection of a map's values (AbstractMap::values), one element
// per entry, in the map's order. remove(value) removes the first entry, in
// that order, whose value is equal. Adding is refused.
class QV_EXPORT MapValues final : public MapView<AbstractCollection, AbstractMap::VALUES> {
public:
    explicit MapValues(AbstractMap* map);
    ~MapValues() override;

    bool contains(const IQVUnknown* element) const override;
};

// The live set of a map's entries for maps without an entry set of their own
// (HashMap has HashMapEntrySet): contains asks the map for the entry's key
// and compares the values, remove removes the key, the iterators are the
// map's entry walk.
class QV_EXPORT MapEntrySet final : public MapView<AbstractSet, AbstractMap::ENTRIES> {
public:
    explicit MapEntrySet(AbstractMap* map);
    ~MapEntrySet() override;

    bool contains(const IQVUnknown* element) const override;
    bool remove(const IQVUnknown* element) override;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
