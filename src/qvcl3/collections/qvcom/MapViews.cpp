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

MapKeySet::MapKeySet(AbstractMap* map) : AbstractSet(map->getKeyComparator()), m_map(map) {}

MapKeySet::~MapKeySet() = default;

int32_t MapKeySet::getSize() const
{
    return m_map->getSize();
}

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

void MapKeySet::clear()
{
    m_map->clear();
}

Reference<AbstractIterator> MapKeySet::createIterator()
{
    return m_map->createViewIterator(AbstractMap::KEYS, false);
}

Reference<AbstractIterator> MapKeySet::createConstIterator() const
{
    return m_map->createViewIterator(AbstractMap::KEYS, true);
}

MapValues::MapValues(AbstractMap* map) : AbstractCollection(map->getValueComparator()), m_map(map) {}

MapValues::~MapValues() = default;

int32_t MapValues::getSize() const
{
    return m_map->getSize();
}

bool MapValues::contains(const IQVUnknown* element) const
{
    return m_map->containsValue(element);
}

void MapValues::clear()
{
    m_map->clear();
}

Reference<AbstractIterator> MapValues::createIterator()
{
    return m_map->createViewIterator(AbstractMap::VALUES, false);
}

Reference<AbstractIterator> MapValues::createConstIterator() const
{
    return m_map->createViewIterator(AbstractMap::VALUES, true);
}

MapEntrySet::MapEntrySet(AbstractMap* map) : m_map(map) {}

MapEntrySet::~MapEntrySet() = default;

int32_t MapEntrySet::getSize() const
{
    return m_map->getSize();
}

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

void MapEntrySet::clear()
{
    m_map->clear();
}

Reference<AbstractIterator> MapEntrySet::createIterator()
{
    return m_map->createViewIterator(AbstractMap::ENTRIES, false);
}

Reference<AbstractIterator> MapEntrySet::createConstIterator() const
{
    return m_map->createViewIterator(AbstractMap::ENTRIES, true);
}

} // namespace qvcom
} // namespace collections
} // namespace qv
