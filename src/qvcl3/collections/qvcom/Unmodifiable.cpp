#include <qv/collections/qvcom/MapViews.h>
#include <qv/collections/qvcom/Unmodifiable.h>

#include "collections/qvcom/Elements.h"

#include <qv/core/Boundary.h>

#include <utility>

namespace qv {
namespace collections {
namespace qvcom {

namespace {

// A copy of an entry of the shown map, handed out by the read-only entry
// walk so that SetValue cannot reach the map.
class ReadOnlyEntry final : public ComObject, public MapEntry {
    QV_DECLARE_INTERFACE_MAP()

public:
    ReadOnlyEntry(Reference<IQVUnknown> key, Reference<IQVUnknown> value) noexcept
        : m_key(std::move(key)), m_value(std::move(value))
    {}

    Result GetKey(IQVUnknown** key) const override
    {
        if (!key)
            return results::POINTER;
        *key = Reference<IQVUnknown>(m_key).detach();
        return results::OK;
    }
    Result GetValue(IQVUnknown** value) const override
    {
        if (!value)
            return results::POINTER;
        *value = Reference<IQVUnknown>(m_value).detach();
        return results::OK;
    }
    Result SetValue(IQVUnknown*, IQVUnknown** previous) override
    {
        if (previous)
            *previous = nullptr;
        return ::qv::qvcom::guardBoundary([] { Collections::throwUnmodifiable(); });
    }

private:
    ~ReadOnlyEntry() override = default;

    Reference<IQVUnknown> m_key;
    Reference<IQVUnknown> m_value;
};

QV_BEGIN_INTERFACE_MAP(ReadOnlyEntry)
QV_INTERFACE_ENTRY(ReadOnlyEntry, MapEntry)
QV_END_INTERFACE_MAP()

class ReadOnlyEntryIterator final : public AbstractIterator {
public:
    explicit ReadOnlyEntryIterator(Reference<AbstractIterator> entries) noexcept : m_entries(std::move(entries)) {}

    bool hasNext() override { return m_entries->hasNext(); }
    Reference<IQVUnknown> next() override
    {
        Reference<IQVUnknown> entry = m_entries->next();
        Reference<IQVUnknown> key;
        Reference<IQVUnknown> value;
        readWalkedEntry(entry.get(), key, value);
        Reference<ReadOnlyEntry> copy(new ReadOnlyEntry(std::move(key), std::move(value)));
        return Reference<IQVUnknown>(copy->GetUnknown());
    }

private:
    Reference<AbstractIterator> m_entries;
};

} // namespace

UnmodifiableCollection::~UnmodifiableCollection() = default;

UnmodifiableSet::~UnmodifiableSet() = default;

UnmodifiableList::~UnmodifiableList() = default;

Reference<AbstractListIterator> UnmodifiableList::createListIterator(int32_t index)
{
    return m_shown->createConstListIterator(index);
}

Reference<AbstractListIterator> UnmodifiableList::createConstListIterator(int32_t index) const
{
    return m_shown->createConstListIterator(index);
}

Reference<AbstractList> UnmodifiableList::subList(int32_t from, int32_t to)
{
    Reference<AbstractList> view = m_shown->subList(from, to);
    return Collections::unmodifiableList(*view);
}

UnmodifiableMap::UnmodifiableMap(AbstractMap* map)
    : AbstractMap(map->getKeyComparator(), map->getValueComparator()), m_shown(map)
{}

UnmodifiableMap::~UnmodifiableMap() = default;

Reference<AbstractSet> UnmodifiableMap::createEntrySet()
{
    return makeReference<MapEntrySet>(this);
}

Reference<AbstractIterator> UnmodifiableMap::createConstEntryIterator() const
{
    return createViewIterator(ENTRIES, true);
}

Reference<AbstractIterator> UnmodifiableMap::createViewIterator(ViewKind kind, bool) const
{
    Reference<AbstractIterator> shown = m_shown->createViewIterator(kind, true);
    if (kind != ENTRIES)
        return shown;
    return makeReference<ReadOnlyEntryIterator>(std::move(shown));
}

} // namespace qvcom
} // namespace collections
} // namespace qv
