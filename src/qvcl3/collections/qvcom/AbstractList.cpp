#include <qv/collections/qvcom/AbstractList.h>
#include <qv/collections/qvcom/SubList.h>

#include "collections/qvcom/Elements.h"

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>

namespace qv {
namespace collections {
namespace qvcom {

using ::qv::qvcom::guardBoundary;

QV_BEGIN_INTERFACE_MAP(AbstractList)
QV_INTERFACE_ENTRY(AbstractList, List)
QV_INTERFACE_CHAIN(AbstractCollection)
QV_END_INTERFACE_MAP()

AbstractList::~AbstractList() = default;

void AbstractList::throwBadIndex(int32_t index, int32_t size)
{
    String message;
    message.format(u"list index {0} outside [0, {1})", -1, String::valueOf(index), String::valueOf(size));
    throw RangeErrorException(message);
}

void AbstractList::throwBadPosition(int32_t index, int32_t size)
{
    String message;
    message.format(u"list position {0} outside [0, {1}]", -1, String::valueOf(index), String::valueOf(size));
    throw RangeErrorException(message);
}

void AbstractList::throwConcurrentChange()
{
    throw IllegalStateException(QV_STR(u"the list changed during iteration"));
}

void AbstractList::throwNoMoreElements()
{
    throw IllegalStateException(QV_STR(u"no more elements"));
}

Reference<AbstractListIterator> AbstractList::createListIterator(int32_t index)
{
    return makeReference<IndexedListIterator>(this, index, false);
}

Reference<AbstractListIterator> AbstractList::createConstListIterator(int32_t index) const
{
    return makeReference<IndexedListIterator>(const_cast<AbstractList*>(this), index, true);
}

Reference<AbstractIterator> AbstractList::createIterator()
{
    return createListIterator(0);
}

Reference<AbstractIterator> AbstractList::createConstIterator() const
{
    return createConstListIterator(0);
}

Reference<AbstractList> AbstractList::subList(int32_t from, int32_t to)
{
    return makeReference<SubList>(this, from, to);
}

bool AbstractList::add(IQVUnknown* element)
{
    insert(getSize(), element);
    return true;
}

bool AbstractList::contains(const IQVUnknown* element) const
{
    return indexOf(element) >= 0;
}

int32_t AbstractList::indexOf(const IQVUnknown* element) const
{
    Reference<AbstractIterator> it = createConstIterator();
    for (int32_t index = 0; it->hasNext(); ++index) {
        if (elementsEqual(element, it->next().get()))
            return index;
    }
    return -1;
}

int32_t AbstractList::lastIndexOf(const IQVUnknown* element) const
{
    int32_t found = -1;
    Reference<AbstractIterator> it = createConstIterator();
    for (int32_t index = 0; it->hasNext(); ++index) {
        if (elementsEqual(element, it->next().get()))
            found = index;
    }
    return found;
}

bool AbstractList::equals(const Object& other) const
{
    if (&other == this)
        return true;
    const List* list = dynamic_cast<const List*>(&other);
    if (!list || sizeOf(*list) != getSize())
        return false;
    CycleGuard guard(CycleGuard::EQUALS, this, &other);
    if (guard.isRepeat())
        return true;
    Reference<AbstractIterator> mine = createConstIterator();
    ElementWalk theirs(*list);
    while (mine->hasNext() && theirs.hasNext()) {
        if (!elementsEqual(mine->next().get(), theirs.next().get()))
            return false;
    }
    return !mine->hasNext() && !theirs.hasNext();
}

uint32_t AbstractList::hashCode() const
{
    CycleGuard guard(CycleGuard::HASH, this);
    if (guard.isRepeat())
        return 0;
    uint32_t hash = 1;
    Reference<AbstractIterator> it = createConstIterator();
    while (it->hasNext())
        hash = 31u * hash + elementHash(it->next().get());
    return hash;
}

int AbstractList::compareTo(const Object& other) const
{
    if (&other == this)
        return 0;
    const List* list = dynamic_cast<const List*>(&other);
    if (!list)
        return Object::compareTo(other);
    CycleGuard guard(CycleGuard::ORDER, this, &other);
    if (guard.isRepeat())
        return 0;
    Reference<AbstractIterator> mine = createConstIterator();
    ElementWalk theirs(*list);
    while (mine->hasNext() && theirs.hasNext()) {
        Reference<IQVUnknown> a = mine->next();
        Reference<IQVUnknown> b = theirs.next();
        if (!elementsEqual(a.get(), b.get()))
            return orderOf(a.get(), b.get());
    }
    if (mine->hasNext())
        return 1;
    return theirs.hasNext() ? -1 : 0;
}

Result AbstractList::GetAt(int32_t index, IQVUnknown** element) const
{
    if (!element)
        return results::POINTER;
    *element = nullptr;
    return guardBoundary([&] { *element = get(index).detach(); });
}

Result AbstractList::SetAt(int32_t index, IQVUnknown* element, IQVUnknown** previous)
{
    if (previous)
        *previous = nullptr;
    return guardBoundary([&] {
        Reference<IQVUnknown> old = set(index, element);
        if (previous)
            *previous = old.detach();
    });
}

Result AbstractList::InsertAt(int32_t index, IQVUnknown* element)
{
    return guardBoundary([&] { insert(index, element); });
}

Result AbstractList::RemoveAt(int32_t index, IQVUnknown** removed)
{
    if (removed)
        *removed = nullptr;
    return guardBoundary([&] {
        Reference<IQVUnknown> old = removeAt(index);
        if (removed)
            *removed = old.detach();
    });
}

Result AbstractList::IndexOf(const IQVUnknown* element, int32_t* index) const
{
    if (!index)
        return results::POINTER;
    *index = -1;
    return guardBoundary([&] { *index = indexOf(element); });
}

Result AbstractList::LastIndexOf(const IQVUnknown* element, int32_t* index) const
{
    if (!index)
        return results::POINTER;
    *index = -1;
    return guardBoundary([&] { *index = lastIndexOf(element); });
}

Result AbstractList::CreateListIterator(int32_t index, ListIterator** iterator)
{
    if (!iterator)
        return results::POINTER;
    *iterator = nullptr;
    return guardBoundary([&] { *iterator = createListIterator(index).detach(); });
}

Result AbstractList::CreateSubList(int32_t from, int32_t to, List** view)
{
    if (!view)
        return results::POINTER;
    *view = nullptr;
    return guardBoundary([&] { *view = subList(from, to).detach(); });
}

} // namespace qvcom
} // namespace collections
} // namespace qv
