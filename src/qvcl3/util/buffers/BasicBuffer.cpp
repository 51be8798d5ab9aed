#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>
#include <qv/util/BasicBuffer.h>

#include <cstring>
#include <limits>

namespace qv {
namespace util {

template <class E>
QV_BEGIN_INTERFACE_MAP(BasicAbstractBuffer<E>)
QV_INTERFACE_ENTRY(BasicAbstractBuffer, InterfaceType) QV_INTERFACE_CHAIN(Object) QV_END_INTERFACE_MAP()

    template <class E>
    int32_t BasicAbstractBuffer<E>::GetLength() const
{
    Result r = qvcom::guardBoundary([&] { return getLength(); });
    return r < 0 ? 0 : r;
}

template <class E>
const E* BasicAbstractBuffer<E>::GetData() const
{
    const E* data = nullptr;
    qvcom::guardBoundary([&] { data = getData(); });
    return data;
}

template <class E>
Result BasicAbstractBuffer<E>::GetReadLock(const E** data) const
{
    if (!data)
        return results::POINTER;
    *data = nullptr;
    return qvcom::guardBoundary([&] { *data = getReadLock(); });
}

template <class E>
Result BasicAbstractBuffer<E>::ReleaseReadLock() const
{
    return qvcom::guardBoundary([&] { releaseReadLock(); });
}

template <class E>
int16_t BasicAbstractBuffer<E>::IsWritable() const
{
    bool writable = false;
    qvcom::guardBoundary([&] { writable = isWritable(); });
    return writable ? 1 : 0;
}

template <class E>
Result BasicAbstractBuffer<E>::GetWriteLock(int32_t minCapacity, E** data)
{
    if (!data)
        return results::POINTER;
    *data = nullptr;
    return qvcom::guardBoundary([&] { *data = getWriteLock(minCapacity); });
}

template <class E>
Result BasicAbstractBuffer<E>::EnsureCapacity(int32_t minCapacity, E** data)
{
    if (!data)
        return results::POINTER;
    *data = nullptr;
    return qvcom::guardBoundary([&] { *data = ensureCapacity(minCapacity); });
}

template <class E>
Result BasicAbstractBuffer<E>::ReleaseWriteLock(int32_t newLength)
{
    return qvcom::guardBoundary([&] { releaseWriteLock(newLength); });
}

template <class E>
Result BasicAbstractBuffer<E>::FreeExtra()
{
    return qvcom::guardBoundary([&] { freeExtra(); });
}

template <class E>
BasicROBuffer<E>::BasicROBuffer() noexcept : m_data(nullptr), m_length(0)
{}

template <class E>
BasicROBuffer<E>::BasicROBuffer(const E* data, int32_t length, int32_t)
    : m_data(data), m_length(length < 0 ? 0 : length)
{
    if (!data && length > 0)
        throw ResultException(results::INVALIDARG);
}

template <class E>
BasicROBuffer<E>::BasicROBuffer(const BasicROBuffer& other) noexcept
    : BasicAbstractBuffer<E>(other), m_data(other.m_data), m_length(other.m_length)
{}

template <class E>
BasicROBuffer<E>& BasicROBuffer<E>::operator=(const BasicROBuffer& other) noexcept
{
    m_data = other.m_data;
    m_length = other.m_length;
    return *this;
}

template <class E>
BasicROBuffer<E>::~BasicROBuffer() = default;

template <class E>
int32_t BasicROBuffer<E>::getLength() const
{
    return m_length;
}

template <class E>
const E* BasicROBuffer<E>::getData() const
{
    return m_data;
}

template <class E>
const E* BasicROBuffer<E>::getReadLock() const
{
    return m_data;
}

template <class E>
void BasicROBuffer<E>::releaseReadLock() const
{}

template <class E>
bool BasicROBuffer<E>::isWritable() const
{
    return false;
}

template <class E>
E* BasicROBuffer<E>::getWriteLock(int32_t)
{
    throw ReadOnlyException();
}

template <class E>
E* BasicROBuffer<E>::ensureCapacity(int32_t)
{
    throw ReadOnlyException();
}

template <class E>
void BasicROBuffer<E>::releaseWriteLock(int32_t)
{
    throw ReadOnlyException();
}

template <class E>
void BasicROBuffer<E>::freeExtra()
{}

template <class E>
int32_t BasicROBuffer<E>::GetLength() const
{
    return m_length;
}

template <class E>
const E* BasicROBuffer<E>::GetData() const
{
    return m_data;
}

template <class E>
Result BasicROBuffer<E>::GetReadLock(const E** data) const
{
    if (!data)
        return results::POINTER;
    *data = m_data;
    return results::OK;
}

template <class E>
Result BasicROBuffer<E>::ReleaseReadLock() const
{
    return results::OK;
}

template <class E>
int16_t BasicROBuffer<E>::IsWritable() const
{
    return 0;
}

template <class E>
Result BasicROBuffer<E>::GetWriteLock(int32_t, E** data)
{
    if (data)
        *data = nullptr;
    return results::NOTIMPL;
}

template <class E>
Result BasicROBuffer<E>::EnsureCapacity(int32_t, E** data)
{
    if (data)
        *data = nullptr;
    return results::NOTIMPL;
}

template <class E>
Result BasicROBuffer<E>::ReleaseWriteLock(int32_t)
{
    return results::NOTIMPL;
}

template <class E>
Result BasicROBuffer<E>::FreeExtra()
{
    return results::OK;
}

template <class E>
BasicRWBuffer<E>::BasicRWBuffer() noexcept : m_data(nullptr), m_capacity(0), m_length(0), m_embedded(false)
{}

template <class E>
BasicRWBuffer<E>::BasicRWBuffer(const E* data, int32_t length, int32_t capacity)
    : m_data(nullptr), m_capacity(0), m_length(0), m_embedded(false)
{
    if (!data && length > 0)
        throw ResultException(results::INVALIDARG);
    allocBuffer(length > capacity ? length : capacity);
    // Null data with a length already threw; testing it again keeps the
    // optimizer from warning about the nullptr_t constructor inlined here.
    if (data && length >= 1) {
        std::memcpy(m_data, data, static_cast<size_t>(length) * sizeof(E));
        m_length = length;
    }
}

template <class E>
BasicRWBuffer<E>::BasicRWBuffer(int32_t capacity) : m_data(nullptr), m_capacity(0), m_length(0), m_embedded(false)
{
    allocBuffer(capacity);
}

template <class E>
BasicRWBuffer<E>::BasicRWBuffer(const BasicRWBuffer& other)
    : BasicAbstractBuffer<E>(other), m_data(nullptr), m_capacity(0), m_length(0), m_embedded(false)
{
    allocBuffer(other.m_capacity);
    copyFrom(other);
}

template <class E>
BasicRWBuffer<E>& BasicRWBuffer<E>::operator=(const BasicRWBuffer& other)
{
    if (this != &other) {
        // Through the virtual write lock, so the thread-safe variant locks.
        E* data = this->getWriteLock(other.m_capacity);
        if (other.m_length > 0)
            std::memcpy(data, other.m_data, static_cast<size_t>(other.m_length) * sizeof(E));
        this->releaseWriteLock(other.m_length);
    }
    return *this;
}

template <class E>
BasicRWBuffer<E>::~BasicRWBuffer()
{
    if (!m_embedded)
        QVMemFree(m_data);
}

template <class E>
void BasicRWBuffer<E>::copyFrom(const BasicRWBuffer& other)
{
    if (other.m_length > 0) {
        std::memcpy(m_data, other.m_data, static_cast<size_t>(other.m_length) * sizeof(E));
        m_length = other.m_length;
    }
}

template <class E>
int32_t BasicRWBuffer<E>::adjustCapacity(int32_t n)
{
    // The rounding must not overflow; such a size could never be allocated.
    if (n > std::numeric_limits<int32_t>::max() - 15)
        throw OutOfMemoryException();
    return (n + 15) & ~15;
}

template <class E>
void BasicRWBuffer<E>::allocBuffer(int32_t n)
{
    if (n <= 0)
        return;
    int32_t c = adjustCapacity(n);
    void* block = QVMemAlloc(static_cast<size_t>(c) * sizeof(E));
    if (!block)
        throw OutOfMemoryException();
    m_data = static_cast<E*>(block);
    m_capacity = c;
}

template <class E>
void BasicRWBuffer<E>::reallocBuffer(int32_t n)
{
    if (n <= 0) {
        if (m_data) {
            if (!m_embedded)
                QVMemFree(m_data);
            m_data = nullptr;
            m_capacity = 0;
            m_length = 0;
            m_embedded = false;
        }
        return;
    }
    int32_t c = adjustCapacity(n);
    if (c == m_capacity)
        return;
    if (m_embedded) {
        // Embedded storage can't be resized: a shrink only lowers the
        // capacity reported, growth moves the elements to a block of their
        // own (the embedded room stays with the object, unused).
        if (c < m_capacity) {
            m_capacity = c;
            return;
        }
        void* block = QVMemAlloc(static_cast<size_t>(c) * sizeof(E));
        if (!block)
            throw OutOfMemoryException();
        // The whole room, not only the length: a writer holding the write
        // lock may have filled units it has not committed yet, and a
        // reallocation would have kept them too.
        std::memcpy(block, m_data, static_cast<size_t>(m_capacity) * sizeof(E));
        m_data = static_cast<E*>(block);
        m_capacity = c;
        m_embedded = false;
        return;
    }
    void* block = QVMemRealloc(m_data, static_cast<size_t>(c) * sizeof(E));
    if (!block)
        throw OutOfMemoryException();
    m_data = static_cast<E*>(block);
    m_capacity = c;
}

template <class E>
void BasicRWBuffer<E>::refuseLength()
{
    throw ResultException(results::INVALIDARG);
}

template <class E>
int32_t BasicRWBuffer<E>::getLength() const
{
    return m_length;
}

template <class E>
const E* BasicRWBuffer<E>::getData() const
{
    return m_data;
}

template <class E>
const E* BasicRWBuffer<E>::getReadLock() const
{
    return m_data;
}

template <class E>
void BasicRWBuffer<E>::releaseReadLock() const
{}

template <class E>
bool BasicRWBuffer<E>::isWritable() const
{
    return true;
}

template <class E>
E* BasicRWBuffer<E>::getWriteLock(int32_t minCapacity)
{
    return ensureCapacity(minCapacity);
}

template <class E>
E* BasicRWBuffer<E>::ensureCapacity(int32_t minCapacity)
{
    if (m_capacity < minCapacity)
        reallocBuffer(minCapacity);
    return m_data;
}

template <class E>
void BasicRWBuffer<E>::freeExtra()
{
    reallocBuffer(m_length);
}

template <class E>
BasicMTBuffer<E>::BasicMTBuffer() : m_lock(nullptr, 0)
{}

template <class E>
BasicMTBuffer<E>::BasicMTBuffer(const E* data, int32_t length, int32_t capacity)
    : BasicRWBuffer<E>(data, length, capacity), m_lock(nullptr, 0)
{}

template <class E>
BasicMTBuffer<E>::BasicMTBuffer(int32_t capacity) : BasicRWBuffer<E>(capacity), m_lock(nullptr, 0)
{}

template <class E>
BasicMTBuffer<E>::BasicMTBuffer(const BasicMTBuffer& other) : BasicRWBuffer<E>(other), m_lock(nullptr, 0)
{}

template <class E>
BasicMTBuffer<E>& BasicMTBuffer<E>::operator=(const BasicMTBuffer& other)
{
    BasicRWBuffer<E>::operator=(other);
    return *this;
}

template <class E>
BasicMTBuffer<E>::~BasicMTBuffer() = default;

template <class E>
const E* BasicMTBuffer<E>::getReadLock() const
{
    m_lock.waitShared();
    return this->GetData();
}

template <class E>
void BasicMTBuffer<E>::releaseReadLock() const
{
    m_lock.signal();
}

template <class E>
E* BasicMTBuffer<E>::getWriteLock(int32_t minCapacity)
{
    m_lock.wait();
    try {
        return this->ensureCapacity(minCapacity);
    } catch (...) {
        // Keeping the lock would leave every later reader and writer hanging.
        m_lock.signal();
        throw;
    }
}

template <class E>
void BasicMTBuffer<E>::releaseWriteLock(int32_t newLength)
{
    try {
        this->setLength(newLength);
    } catch (...) {
        m_lock.signal();
        throw;
    }
    m_lock.signal();
}

template <class E>
void BasicMTBuffer<E>::freeExtra()
{
    m_lock.wait();
    try {
        this->reallocBuffer(this->GetLength());
    } catch (...) {
        m_lock.signal();
        throw;
    }
    m_lock.signal();
}

template class BasicAbstractBuffer<signed char>;
template class BasicAbstractBuffer<char16_t>;
template class BasicROBuffer<signed char>;
template class BasicROBuffer<char16_t>;
template class BasicRWBuffer<signed char>;
template class BasicRWBuffer<char16_t>;
template class BasicMTBuffer<signed char>;
template class BasicMTBuffer<char16_t>;

} // namespace util
} // namespace qv
