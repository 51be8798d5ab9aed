#include <qv/collections/qvcom/ArrayList.h>

#include "collections/qvcom/Elements.h"

#include <qv/core/Exception.h>
#include <qv/lang/String.h>
#include <qvcore3/qvcore3.h>

#include <climits>
#include <utility>

namespace qv {
namespace collections {
namespace qvcom {

ArrayList::ArrayList(int32_t capacity, const IQVComparator* comparator) : AbstractList(comparator)
{
    if (capacity < 0)
        throw ResultException(results::INVALIDARG, QV_STR(u"list capacity must not be negative"));
    if (capacity > 0)
        reallocate(capacity);
}

ArrayList::ArrayList(const Collection& other, const IQVComparator* comparator) : AbstractList(comparator)
{
    appendAll(other);
}

ArrayList::ArrayList(const ArrayList& other) : AbstractList(other)
{
    appendAll(other.asCollection());
}

ArrayList::~ArrayList()
{
    releaseAll();
}

void ArrayList::appendAll(const Collection& other)
{
    try {
        ensureCapacity(sizeOf(other));
        ElementWalk walk(other);
        while (walk.hasNext())
            add(walk.next().get());
    } catch (...) {
        releaseAll();
        throw;
    }
}

void ArrayList::releaseAll() noexcept
{
    for (int32_t i = 0; i < m_size; ++i)
        m_data[i].~Reference();
    QVMemFree(m_data);
    m_data = nullptr;
    m_size = 0;
    m_capacity = 0;
}

void ArrayList::reallocate(int32_t capacity)
{
    void* block = QVMemAlloc(static_cast<size_t>(capacity) * sizeof(Reference<IQVUnknown>));
    if (!block)
        throw OutOfMemoryException();
    Reference<IQVUnknown>* data = static_cast<Reference<IQVUnknown>*>(block);
    for (int32_t i = 0; i < m_size; ++i) {
        new (data + i) Reference<IQVUnknown>(std::move(m_data[i]));
        m_data[i].~Reference();
    }
    QVMemFree(m_data);
    m_data = data;
    m_capacity = capacity;
}

void ArrayList::grow(int32_t minCapacity)
{
    if (minCapacity < 0 || m_size == INT32_MAX)
        throw OutOfMemoryException();
    int64_t capacity = static_cast<int64_t>(m_capacity) * 2;
    if (capacity < 8)
        capacity = 8;
    if (capacity < minCapacity)
        capacity = minCapacity;
    if (capacity > INT32_MAX)
        capacity = INT32_MAX;
    reallocate(static_cast<int32_t>(capacity));
}

void ArrayList::ensureCapacity(int32_t capacity)
{
    if (capacity > m_capacity)
        reallocate(capacity);
}

void ArrayList::trimToSize()
{
    if (m_size == m_capacity)
        return;
    if (m_size == 0) {
        QVMemFree(m_data);
        m_data = nullptr;
        m_capacity = 0;
        return;
    }
    reallocate(m_size);
}

Reference<IQVUnknown> ArrayList::get(int32_t index) const
{
    return elementAt(index);
}

Reference<IQVUnknown> ArrayList::set(int32_t index, IQVUnknown* element)
{
    if (static_cast<uint32_t>(index) >= static_cast<uint32_t>(m_size))
        throwBadIndex(index, m_size);
    Reference<IQVUnknown> previous(element);
    m_data[index].swap(previous);
    return previous;
}

void ArrayList::insert(int32_t index, IQVUnknown* element)
{
    if (index < 0 || index > m_size)
        throwBadPosition(index, m_size);
    if (m_size == m_capacity)
        grow(m_size + 1);
    new (m_data + m_size) Reference<IQVUnknown>();
    for (int32_t i = m_size; i > index; --i)
        m_data[i] = std::move(m_data[i - 1]);
    m_data[index] = element;
    ++m_size;
    structuralChange();
}

Reference<IQVUnknown> ArrayList::removeAt(int32_t index)
{
    if (static_cast<uint32_t>(index) >= static_cast<uint32_t>(m_size))
        throwBadIndex(index, m_size);
    Reference<IQVUnknown> removed(std::move(m_data[index]));
    for (int32_t i = index + 1; i < m_size; ++i)
        m_data[i - 1] = std::move(m_data[i]);
    --m_size;
    m_data[m_size].~Reference();
    structuralChange();
    return removed;
}

void ArrayList::clear()
{
    const int32_t size = m_size;
    m_size = 0;
    structuralChange();
    for (int32_t i = 0; i < size; ++i)
        m_data[i].~Reference();
}

int32_t ArrayList::indexOf(const IQVUnknown* element) const
{
    for (int32_t i = 0; i < m_size; ++i) {
        if (elementsEqual(element, m_data[i].get()))
            return i;
    }
    return -1;
}

int32_t ArrayList::lastIndexOf(const IQVUnknown* element) const
{
    for (int32_t i = m_size - 1; i >= 0; --i) {
        if (elementsEqual(element, m_data[i].get()))
            return i;
    }
    return -1;
}

} // namespace qvcom
} // namespace collections
} // namespace qv
