#include <qv/collections/qvcom/AbstractList.h>
#include <qv/collections/qvcom/AbstractListIterator.h>

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>

namespace qv {
namespace collections {
namespace qvcom {

using ::qv::qvcom::guardBoundary;

QV_BEGIN_INTERFACE_MAP(AbstractListIterator)
QV_INTERFACE_ENTRY(AbstractListIterator, ListIterator)
QV_INTERFACE_CHAIN(AbstractIterator)
QV_END_INTERFACE_MAP()

AbstractListIterator::~AbstractListIterator() = default;

void AbstractListIterator::throwNothingToChange()
{
    throw IllegalStateException(QV_STR(u"no element to change: next or previous first"));
}

Result AbstractListIterator::HasPrevious(bool* result)
{
    if (!result)
        return results::POINTER;
    *result = false;
    return guardBoundary([&] { *result = hasPrevious(); });
}

Result AbstractListIterator::Previous(IQVUnknown** element)
{
    if (!element)
        return results::POINTER;
    *element = nullptr;
    return guardBoundary([&] { *element = previous().detach(); });
}

Result AbstractListIterator::NextIndex(int32_t* index)
{
    if (!index)
        return results::POINTER;
    *index = nextIndex();
    return results::OK;
}

Result AbstractListIterator::PreviousIndex(int32_t* index)
{
    if (!index)
        return results::POINTER;
    *index = previousIndex();
    return results::OK;
}

Result AbstractListIterator::Set(IQVUnknown* element, IQVUnknown** previous)
{
    if (previous)
        *previous = nullptr;
    return guardBoundary([&] {
        Reference<IQVUnknown> old = set(element);
        if (previous)
            *previous = old.detach();
    });
}

Result AbstractListIterator::Add(IQVUnknown* element)
{
    return guardBoundary([&] { add(element); });
}

IndexedListIterator::IndexedListIterator(AbstractList* list, int32_t index, bool readOnly)
    : m_list(list), m_expectedModCount(list->getModCount()), m_cursor(index), m_readOnly(readOnly)
{
    const int32_t size = list->getSize();
    if (index < 0 || index > size)
        AbstractList::throwBadPosition(index, size);
}

IndexedListIterator::~IndexedListIterator() = default;

void IndexedListIterator::checkForChange() const
{
    if (m_expectedModCount != m_list->getModCount())
        AbstractList::throwConcurrentChange();
}

void IndexedListIterator::checkWritable() const
{
    if (m_readOnly)
        throw UnsupportedOperationException(QV_STR(u"this iterator cannot change the list"));
    checkForChange();
}

bool IndexedListIterator::hasNext()
{
    return m_expectedModCount != m_list->getModCount() || m_cursor < m_list->getSize();
}

bool IndexedListIterator::hasPrevious()
{
    return m_expectedModCount != m_list->getModCount() || m_cursor > 0;
}

Reference<IQVUnknown> IndexedListIterator::next()
{
    checkForChange();
    if (m_cursor >= m_list->getSize())
        AbstractList::throwNoMoreElements();
    Reference<IQVUnknown> element = m_list->get(m_cursor);
    m_lastReturned = m_cursor++;
    return element;
}

Reference<IQVUnknown> IndexedListIterator::previous()
{
    checkForChange();
    if (m_cursor <= 0)
        AbstractList::throwNoMoreElements();
    Reference<IQVUnknown> element = m_list->get(m_cursor - 1);
    m_lastReturned = --m_cursor;
    return element;
}

void IndexedListIterator::remove()
{
    checkWritable();
    if (m_lastReturned < 0)
        throwNothingToChange();
    m_list->removeAt(m_lastReturned);
    if (m_lastReturned < m_cursor)
        --m_cursor;
    m_lastReturned = -1;
    m_expectedModCount = m_list->getModCount();
}

Reference<IQVUnknown> IndexedListIterator::set(IQVUnknown* element)
{
    checkWritable();
    if (m_lastReturned < 0)
        throwNothingToChange();
    return m_list->set(m_lastReturned, element);
}

void IndexedListIterator::add(IQVUnknown* element)
{
    checkWritable();
    m_list->insert(m_cursor, element);
    ++m_cursor;
    m_lastReturned = -1;
    m_expectedModCount = m_list->getModCount();
}

} // namespace qvcom
} // namespace collections
} // namespace qv
