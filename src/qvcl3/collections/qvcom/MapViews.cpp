#include <qv/collections/qvcom/MapViews.h>

#include "collections/qvcom/Elements.h"

#include <qv/core/Boundary.h>

#include <utility>

namespace qv {
namespace collections {
namespace qvcom {

MapViewIterator::MapViewIterator(Reference<AbstractIterator> entries, int32_t kind)
    : m_entries(std::move(entries)), m_kind(kind)
{}

MapViewIterator::~MapViewIterator() = default;

bool MapViewIterator::hasNext()
{
    return m_entries->hasNext();
}

Reference<IQVUnknown> MapViewIterator::next()
{
    Reference<IQVUnknown> entry = m_entries->next();
    Reference<IQVUnknown> key;
    Reference<IQVUnknown> value;
    readWalkedEntry(entry.get(), key, value);
    return m_kind == AbstractMap::KEYS ? key : value;
}

void MapViewIterator::remove()
{
    m_entries->remove();
}

MapKeySet::MapKeySet(AbstractMap* map) : MapView(map, map->getKeyComparator()) {}

MapKeySet::~MapKeySet() = default;

bool MapKeySet::contains(const IQVUnknown* element) const
{
    return m_map->containsKey(element);
}

bool MapKeySet::remove(const IQVUnknown* element)
{
    if (!m_map->containsKey(element))
        return false;
    m_map->remove(element);
    return true;
}

MapValues::MapValues(AbstractMap* map) : MapView(map, map->getValueComparator()) {}

MapValues::~MapValues() = default;

bool MapValues::contains(const IQVUnknown* element) const
{
    return m_map->containsValue(element);
}

MapEntrySet::MapEntrySet(AbstractMap* map) : MapView(map, nullptr) {}

MapEntrySet::~MapEntrySet() = default;

bool MapEntrySet::contains(const IQVUnknown* element) const
{
    Reference<IQVUnknown> key;
    Reference<IQVUnknown> value;
    if (!readEntry(element, key, value) || !m_map->containsKey(key.get()))
        return false;
    bool equal = false;
    ::qv::qvcom::throwIfFailed(m_map->getValueComparator()->Equals(value.get(), m_map->get(key.get()).get(), &equal));
    return equal;
}

bool MapEntrySet::remove(const IQVUnknown* element)
{
    if (!contains(element))
        return false;
    Reference<IQVUnknown> key;
    Reference<IQVUnknown> value;
    readEntry(element, key, value);
    m_map->remove(key.get());
    return true;
}

} // namespace qvcom
} // namespace collections
} // namespace qv
