#include "collections/qvcom/Elements.h"
#include "core/ObjectCast.h"

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <functional>

namespace qv {
namespace collections {
namespace qvcom {

using ::qv::qvcom::ComparableFace;

using ::qv::qvcom::throwIfFailed;

ElementWalk::ElementWalk(const Collection& collection)
{
    if (const AbstractCollection* own = dynamic_cast<const AbstractCollection*>(&collection)) {
        m_own = own->createConstIterator();
    } else {
        throwIfFailed(collection.CreateConstIterator(m_foreign.put()));
        if (!m_foreign)
            throw ResultException(results::POINTER);
    }
}

bool ElementWalk::hasNext()
{
    if (m_own)
        return m_own->hasNext();
    bool result = false;
    throwIfFailed(m_foreign->HasNext(&result));
    return result;
}

Reference<IQVUnknown> ElementWalk::next()
{
    if (m_own)
        return m_own->next();
    Reference<IQVUnknown> element;
    throwIfFailed(m_foreign->Next(element.put()));
    return element;
}

int32_t sizeOf(const Collection& collection)
{
    if (const AbstractCollection* own = dynamic_cast<const AbstractCollection*>(&collection))
        return own->getSize();
    int32_t size = 0;
    throwIfFailed(collection.GetSize(&size));
    return size;
}

int32_t sizeOf(const Map& map)
{
    if (const AbstractMap* own = dynamic_cast<const AbstractMap*>(&map))
        return own->getSize();
    int32_t size = 0;
    throwIfFailed(map.GetSize(&size));
    return size;
}

EntryWalk::EntryWalk(const Map& map)
{
    if (const AbstractMap* own = dynamic_cast<const AbstractMap*>(&map)) {
        m_own = own->createConstEntryIterator();
    } else {
        throwIfFailed(map.CreateConstEntryIterator(m_foreign.put()));
        if (!m_foreign)
            throw ResultException(results::POINTER);
    }
}

bool EntryWalk::next(Reference<IQVUnknown>& key, Reference<IQVUnknown>& value)
{
    Reference<IQVUnknown> element;
    if (m_own) {
        if (!m_own->hasNext())
            return false;
        element = m_own->next();
    } else {
        bool more = false;
        throwIfFailed(m_foreign->HasNext(&more));
        if (!more)
            return false;
        throwIfFailed(m_foreign->Next(element.put()));
    }
    readWalkedEntry(element.get(), key, value);
    return true;
}

void readWalkedEntry(const IQVUnknown* element, Reference<IQVUnknown>& key, Reference<IQVUnknown>& value)
{
    if (!readEntry(element, key, value))
        throw ResultException(results::NOINTERFACE,
                              QV_STR(u"a map's entry walk gave an element that is not a map entry"));
}

bool readEntry(const IQVUnknown* element, Reference<IQVUnknown>& key, Reference<IQVUnknown>& value)
{
    if (!element)
        return false;
    Reference<MapEntry> entry;
    if (const_cast<IQVUnknown*>(element)->QueryInterface(MapEntry::iid, entry.putVoid()) < 0 || !entry)
        return false;
    throwIfFailed(entry->GetKey(key.put()));
    throwIfFailed(entry->GetValue(value.put()));
    return true;
}

namespace {
thread_local CycleGuard* t_innermostGuard = nullptr;
} // namespace

CycleGuard::CycleGuard(Work work, const void* object, const void* other) noexcept
    : m_work(work), m_object(object), m_other(other), m_outer(t_innermostGuard)
{
    for (const CycleGuard* guard = m_outer; guard; guard = guard->m_outer) {
        if (guard->m_work == work && guard->m_object == object && guard->m_other == other) {
            m_repeat = true;
            break;
        }
    }
    t_innermostGuard = this;
}

CycleGuard::~CycleGuard()
{
    t_innermostGuard = m_outer;
}

void appendElementText(String& text, const IQVUnknown* element)
{
    if (!element) {
        text += u"null";
        return;
    }
    if (const Object* object = dynamic_cast<const Object*>(element)) {
        text += object->toString();
        return;
    }
    static const char16_t digits[] = u"0123456789abcdef";
    uint32_t address = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(element));
    char16_t hex[8];
    int n = 0;
    do {
        hex[n++] = digits[address & 0xF];
        address >>= 4;
    } while (address != 0);
    text += u"IQVUnknown@";
    while (n > 0)
        text += hex[--n];
}

int orderOfAddresses(const void* a, const void* b) noexcept
{
    if (a == b)
        return 0;
    return std::less<const void*>()(a, b) ? -1 : 1;
}

int orderOf(const IQVUnknown* a, const IQVUnknown* b)
{
    if (!a || !b)
        return orderOfAddresses(a, b);
    ComparableFace comparable(a);
    if (comparable) {
        int order = 0;
        throwIfFailed(comparable->CompareTo(b, &order));
        if (order != 0)
            return order < 0 ? -1 : 1;
    }
    Reference<IQVUnknown> left;
    Reference<IQVUnknown> right;
    const_cast<IQVUnknown*>(a)->QueryInterface(IQVUnknown::iid, left.putVoid());
    const_cast<IQVUnknown*>(b)->QueryInterface(IQVUnknown::iid, right.putVoid());
    return orderOfAddresses(left.get(), right.get());
}

} // namespace qvcom
} // namespace collections
} // namespace qv
