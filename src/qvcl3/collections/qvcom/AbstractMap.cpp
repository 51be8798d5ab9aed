#include <qv/collections/qvcom/AbstractMap.h>
#include <qv/collections/qvcom/MapViews.h>

#include "collections/qvcom/DefaultComparison.h"
#include "collections/qvcom/Elements.h"

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <utility>

namespace qv {
namespace collections {
namespace qvcom {

using ::qv::qvcom::guardBoundary;
using ::qv::qvcom::throwIfFailed;

QV_BEGIN_INTERFACE_MAP(AbstractMap)
QV_INTERFACE_ENTRY(AbstractMap, Map)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

AbstractMap::AbstractMap(const IQVComparator* keys, const IQVComparator* values)
    : m_keyComparator(keys ? keys : GetDefaultComparator()),
      m_valueComparator(values ? values : GetDefaultComparator()),
      m_defaultKeys(m_keyComparator.get() == GetDefaultComparator()),
      m_defaultValues(m_valueComparator.get() == GetDefaultComparator())
{}

AbstractMap::AbstractMap(const AbstractMap& other)
    : Object(), Map(), m_keyComparator(other.m_keyComparator), m_valueComparator(other.m_valueComparator),
      m_defaultKeys(other.m_defaultKeys), m_defaultValues(other.m_defaultValues)
{}

AbstractMap::~AbstractMap() = default;

uint32_t AbstractMap::getKeyHashCode(const IQVUnknown* key) const
{
    return hashUnder(m_keyComparator.get(), m_defaultKeys, key);
}

uint32_t AbstractMap::getValueHashCode(const IQVUnknown* value) const
{
    return hashUnder(m_valueComparator.get(), m_defaultValues, value);
}

bool AbstractMap::compareKeys(const IQVUnknown* a, const IQVUnknown* b) const
{
    bool equal = false;
    throwIfFailed(m_defaultKeys ? defaultEquals(a, b, &equal) : m_keyComparator->Equals(a, b, &equal));
    return equal;
}

bool AbstractMap::valuesEqual(const IQVUnknown* a, const IQVUnknown* b) const
{
    bool equal = false;
    throwIfFailed(m_defaultValues ? defaultEquals(a, b, &equal) : m_valueComparator->Equals(a, b, &equal));
    return equal;
}

void AbstractMap::putAll(const Map& other)
{
    EntryWalk walk(other);
    Reference<IQVUnknown> key;
    Reference<IQVUnknown> value;
    while (walk.next(key, value))
        put(key.get(), value.get());
}

bool AbstractMap::equals(const Object& other) const
{
    if (&other == this)
        return true;
    const Map* map = dynamic_cast<const Map*>(&other);
    if (!map || sizeOf(*map) != getSize())
        return false;
    CycleGuard guard(CycleGuard::EQUALS, this, &other);
    if (guard.isRepeat())
        return true;
    EntryWalk walk(*this);
    Reference<IQVUnknown> key;
    Reference<IQVUnknown> value;
    while (walk.next(key, value)) {
        Reference<IQVUnknown> theirs;
        const Result found = map->Get(key.get(), theirs.put());
        throwIfFailed(found);
        if (found != results::OK || !valuesEqual(value.get(), theirs.get()))
            return false;
    }
    return true;
}

uint32_t AbstractMap::hashCode() const
{
    CycleGuard guard(CycleGuard::HASH, this);
    if (guard.isRepeat())
        return 0;
    uint32_t hash = 0;
    EntryWalk walk(*this);
    Reference<IQVUnknown> key;
    Reference<IQVUnknown> value;
    while (walk.next(key, value))
        hash += getKeyHashCode(key.get()) ^ getValueHashCode(value.get());
    return hash;
}

int AbstractMap::compareTo(const Object& other) const
{
    return compareContainers<Map>(*this, other);
}

String AbstractMap::toString()
{
    CycleGuard guard(CycleGuard::TEXT, this);
    if (guard.isRepeat())
        return String(u"(this map)");
    String text(u"{");
    EntryWalk walk(*this);
    Reference<IQVUnknown> key;
    Reference<IQVUnknown> value;
    bool first = true;
    while (walk.next(key, value)) {
        if (!first)
            text += u", ";
        first = false;
        appendElementText(text, key.get());
        text += u'=';
        appendElementText(text, value.get());
    }
    text += u'}';
    return text;
}

Reference<AbstractSet> AbstractMap::keySet()
{
    return makeReference<MapKeySet>(this);
}

Reference<AbstractCollection> AbstractMap::values()
{
    return makeReference<MapValues>(this);
}

Reference<AbstractIterator> AbstractMap::createViewIterator(ViewKind kind, bool readOnly) const
{
    Reference<AbstractIterator> entries =
        readOnly ? createConstEntryIterator() : const_cast<AbstractMap*>(this)->createEntrySet()->createIterator();
    if (kind == ENTRIES)
        return entries;
    return makeReference<MapViewIterator>(std::move(entries), kind);
}

Result AbstractMap::GetSize(int32_t* size) const
{
    if (!size)
        return results::POINTER;
    *size = 0;
    return guardBoundary([&] { *size = getSize(); });
}

Result AbstractMap::ContainsKey(const IQVUnknown* key, bool* result) const
{
    if (!result)
        return results::POINTER;
    *result = false;
    return guardBoundary([&] { *result = containsKey(key); });
}

Result AbstractMap::ContainsValue(const IQVUnknown* value, bool* result) const
{
    if (!result)
        return results::POINTER;
    *result = false;
    return guardBoundary([&] { *result = containsValue(value); });
}

Result AbstractMap::Get(const IQVUnknown* key, IQVUnknown** value) const
{
    if (!value)
        return results::POINTER;
    *value = nullptr;
    return guardBoundary([&]() -> Result {
        Reference<IQVUnknown> found = get(key);
        if (!found && !containsKey(key))
            return results::FALSE_;
        *value = found.detach();
        return results::OK;
    });
}

Result AbstractMap::Put(IQVUnknown* key, IQVUnknown* value, IQVUnknown** previous)
{
    if (previous)
        *previous = nullptr;
    return guardBoundary([&] {
        Reference<IQVUnknown> old = put(key, value);
        if (previous)
            *previous = old.detach();
    });
}

Result AbstractMap::Remove(const IQVUnknown* key, IQVUnknown** removed)
{
    if (removed)
        *removed = nullptr;
    return guardBoundary([&]() -> Result {
        if (!containsKey(key))
            return results::FALSE_;
        Reference<IQVUnknown> old = remove(key);
        if (removed)
            *removed = old.detach();
        return results::OK;
    });
}

Result AbstractMap::Clear()
{
    return guardBoundary([&] { clear(); });
}

Result AbstractMap::PutAll(const Map* other)
{
    if (!other)
        return results::POINTER;
    return guardBoundary([&] { putAll(*other); });
}

Result AbstractMap::CreateEntrySet(Set** entries)
{
    if (!entries)
        return results::POINTER;
    *entries = nullptr;
    return guardBoundary([&] { *entries = createEntrySet().detach(); });
}

Result AbstractMap::CreateConstEntryIterator(ConstIterator** entries) const
{
    if (!entries)
        return results::POINTER;
    *entries = nullptr;
    return guardBoundary([&] { *entries = createConstEntryIterator().detach(); });
}

Result AbstractMap::CreateKeySet(Set** keys)
{
    if (!keys)
        return results::POINTER;
    *keys = nullptr;
    return guardBoundary([&] { *keys = keySet().detach(); });
}

Result AbstractMap::CreateValues(Collection** values)
{
    if (!values)
        return results::POINTER;
    *values = nullptr;
    return guardBoundary([&] { *values = this->values().detach(); });
}

} // namespace qvcom
} // namespace collections
} // namespace qv
