#include <qv/collections/qvcom/LinkedList.h>

#include "collections/qvcom/Elements.h"

#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <utility>

namespace qv {
namespace collections {
namespace qvcom {

LinkedList::LinkedList(const IQVComparator* comparator) : AbstractList(comparator), m_header{&m_header, &m_header} {}

LinkedList::LinkedList(const Collection& other, const IQVComparator* comparator)
    : AbstractList(comparator), m_header{&m_header, &m_header}
{
    appendAll(other);
}

LinkedList::LinkedList(const LinkedList& other) : AbstractList(other), m_header{&m_header, &m_header}
{
    appendAll(other.asCollection());
}

LinkedList::~LinkedList()
{
    clear();
}

void LinkedList::appendAll(const Collection& other)
{
    try {
        ElementWalk walk(other);
        while (walk.hasNext())
            addLast(walk.next().get());
    } catch (...) {
        clear();
        throw;
    }
}

void LinkedList::throwEmpty()
{
    throw IllegalStateException(QV_STR(u"the list is empty"));
}

void LinkedList::linkBefore(Link* at, IQVUnknown* element)
{
    Node* node = new Node(element);
    node->prev = at->prev;
    node->next = at;
    at->prev->next = node;
    at->prev = node;
    ++m_size;
    structuralChange();
}

Reference<IQVUnknown> LinkedList::unlink(Node* node)
{
    node->prev->next = node->next;
    node->next->prev = node->prev;
    --m_size;
    structuralChange();
    Reference<IQVUnknown> element(std::move(node->element));
    delete node;
    return element;
}

LinkedList::Node* LinkedList::nodeAt(int32_t index) const
{
    if (static_cast<uint32_t>(index) >= static_cast<uint32_t>(m_size))
        throwBadIndex(index, m_size);
    const Link* link = &m_header;
    if (index < m_size / 2) {
        for (int32_t i = 0; i <= index; ++i)
            link = link->next;
    } else {
        for (int32_t i = m_size; i > index; --i)
            link = link->prev;
    }
    return static_cast<Node*>(const_cast<Link*>(link));
}

void LinkedList::addFirst(IQVUnknown* element)
{
    linkBefore(m_header.next, element);
}

void LinkedList::addLast(IQVUnknown* element)
{
    linkBefore(&m_header, element);
}

Reference<IQVUnknown> LinkedList::getFirst() const
{
    if (m_size == 0)
        throwEmpty();
    return static_cast<const Node*>(m_header.next)->element;
}

Reference<IQVUnknown> LinkedList::getLast() const
{
    if (m_size == 0)
        throwEmpty();
    return static_cast<const Node*>(m_header.prev)->element;
}

Reference<IQVUnknown> LinkedList::removeFirst()
{
    if (m_size == 0)
        throwEmpty();
    return unlink(static_cast<Node*>(m_header.next));
}

Reference<IQVUnknown> LinkedList::removeLast()
{
    if (m_size == 0)
        throwEmpty();
    return unlink(static_cast<Node*>(m_header.prev));
}

bool LinkedList::add(IQVUnknown* element)
{
    addLast(element);
    return true;
}

Reference<IQVUnknown> LinkedList::get(int32_t index) const
{
    return nodeAt(index)->element;
}

Reference<IQVUnknown> LinkedList::set(int32_t index, IQVUnknown* element)
{
    Reference<IQVUnknown> previous(element);
    nodeAt(index)->element.swap(previous);
    return previous;
}

void LinkedList::insert(int32_t index, IQVUnknown* element)
{
    if (index == m_size)
        addLast(element);
    else if (index < 0 || index > m_size)
        throwBadPosition(index, m_size);
    else
        linkBefore(nodeAt(index), element);
}

Reference<IQVUnknown> LinkedList::removeAt(int32_t index)
{
    return unlink(nodeAt(index));
}

void LinkedList::clear()
{
    Link* link = m_header.next;
    m_header.next = &m_header;
    m_header.prev = &m_header;
    m_size = 0;
    structuralChange();
    while (link != &m_header) {
        Link* following = link->next;
        delete static_cast<Node*>(link);
        link = following;
    }
}

Reference<AbstractListIterator> LinkedList::createListIterator(int32_t index)
{
    return makeReference<LinkedListIterator>(this, index, false);
}

Reference<AbstractListIterator> LinkedList::createConstListIterator(int32_t index) const
{
    return makeReference<LinkedListIterator>(const_cast<LinkedList*>(this), index, true);
}

LinkedListIterator::LinkedListIterator(LinkedList* list, int32_t index, bool readOnly)
    : m_list(list), m_expectedModCount(list->getModCount()), m_next(&list->m_header), m_nextIndex(index),
      m_readOnly(readOnly)
{
    if (index < 0 || index > list->m_size)
        LinkedList::throwBadPosition(index, list->m_size);
    if (index < list->m_size)
        m_next = list->nodeAt(index);
}

LinkedListIterator::~LinkedListIterator() = default;

void LinkedListIterator::checkForChange() const
{
    if (m_expectedModCount != m_list->getModCount())
        LinkedList::throwConcurrentChange();
}

void LinkedListIterator::checkWritable() const
{
    if (m_readOnly)
        throw UnsupportedOperationException(QV_STR(u"this iterator cannot change the list"));
    checkForChange();
}

bool LinkedListIterator::hasPrevious()
{
    return m_expectedModCount != m_list->getModCount() || m_next->prev != &m_list->m_header;
}

Reference<IQVUnknown> LinkedListIterator::next()
{
    return Reference<IQVUnknown>(nextBorrowed());
}

void LinkedListIterator::throwCannotStep() const
{
    checkForChange();
    LinkedList::throwNoMoreElements();
}

Reference<IQVUnknown> LinkedListIterator::previous()
{
    checkForChange();
    if (m_next->prev == &m_list->m_header)
        LinkedList::throwNoMoreElements();
    m_next = m_next->prev;
    m_lastReturned = m_next;
    --m_nextIndex;
    return static_cast<LinkedList::Node*>(m_lastReturned)->element;
}

void LinkedListIterator::remove()
{
    checkWritable();
    if (!m_lastReturned)
        throwNothingToChange();
    if (m_lastReturned == m_next)
        m_next = m_next->next; // after previous(): the cursor keeps its position
    else
        --m_nextIndex;
    m_list->unlink(static_cast<LinkedList::Node*>(m_lastReturned));
    m_lastReturned = nullptr;
    m_expectedModCount = m_list->getModCount();
}

Reference<IQVUnknown> LinkedListIterator::set(IQVUnknown* element)
{
    checkWritable();
    if (!m_lastReturned)
        throwNothingToChange();
    Reference<IQVUnknown> previous(element);
    static_cast<LinkedList::Node*>(m_lastReturned)->element.swap(previous);
    return previous;
}

void LinkedListIterator::add(IQVUnknown* element)
{
    checkWritable();
    m_list->linkBefore(m_next, element);
    ++m_nextIndex;
    m_lastReturned = nullptr;
    m_expectedModCount = m_list->getModCount();
}

} // namespace qvcom
} // namespace collections
} // namespace qv
