#include <qv/collections/qvcom/HashSet.h>

#include "collections/qvcom/Elements.h"

namespace qv {
namespace collections {
namespace qvcom {

namespace {

// The value stored with every element: any non-null object will do, so one
// is shared by all sets, made once and kept for the life of the process.
IQVUnknown* marker() noexcept
{
    alignas(ComObject) static unsigned char storage[sizeof(ComObject)];
    static ComObject* const object = [] {
        ComObject* made = new (storage) ComObject();
        made->AddRef();
        return made;
    }();
    return object;
}

} // namespace

HashSet::HashSet(int32_t capacity, float load) : HashSet(nullptr, capacity, load) {}

HashSet::HashSet(const IQVComparator* comparator, int32_t capacity, float load)
    : AbstractSet(comparator), m_map(makeReference<HashMap>(comparator, nullptr, capacity, load))
{}

HashSet::HashSet(const Collection& other, const IQVComparator* comparator)
    : AbstractSet(comparator), m_map(makeReference<HashMap>(comparator, nullptr, HashMap::calcCapacity(sizeOf(other))))
{
    addAll(other);
}

HashSet::HashSet(const HashSet& other)
    : AbstractSet(other),
      m_map(makeReference<HashMap>(other.getComparator(), nullptr, HashMap::calcCapacity(other.getSize()),
                                   other.m_map->getLoadFactor()))
{
    addAll(other.asCollection());
}

HashSet::~HashSet() = default;

int32_t HashSet::getSize() const
{
    return m_map->getSize();
}

bool HashSet::add(IQVUnknown* element)
{
    return !m_map->put(element, marker());
}

bool HashSet::remove(const IQVUnknown* element)
{
    return static_cast<bool>(m_map->remove(element));
}

bool HashSet::contains(const IQVUnknown* element) const
{
    return m_map->containsKey(element);
}

void HashSet::clear()
{
    m_map->clear();
}

Reference<AbstractIterator> HashSet::createIterator()
{
    return m_map->createKeyIterator();
}

Reference<AbstractIterator> HashSet::createConstIterator() const
{
    return makeReference<HashMapIterator>(m_map.get(), HashMapIterator::KEYS, true);
}

} // namespace qvcom
} // namespace collections
} // namespace qv
