#ifndef QV_UTIL_BASICBUFFER_H
#define QV_UTIL_BASICBUFFER_H

#include <qv/core/Object.h>
#include <qv/sync/ReaderWriterLock.h>
#include <qv/util/IByteBuffer.h>
#include <qv/util/ICharBuffer.h>

#include <cstddef>
#include <cstdint>

namespace qv {
namespace util {

// The byte and the character buffers are one design over two element types.
// The templates below are instantiated (and exported) by the library for
// signed char and char16_t only; the named classes (RWByteBuffer,
// ROCharBuffer, ...) are those instantiations.
template <class E>
struct BufferTraits;

template <>
struct BufferTraits<signed char> {
    typedef IQVByteBuffer Interface;
    // The other spelling accepted by the pointer-taking constructors.
    typedef char Alternate;
};

template <>
struct BufferTraits<char16_t> {
    typedef IQVCharBuffer Interface;
    typedef unsigned short Alternate;
};

// The interface operations, implemented over the class's own virtual
// operations: each sets its out-pointer to null, calls the class operation
// and turns what it throws into a result code. A null out-pointer gives
// 0x80004003.
template <class E>
class BasicAbstractBuffer : public Object, public BufferTraits<E>::Interface {
    QV_DECLARE_INTERFACE_MAP()

public:
    typedef E Element;
    typedef typename BufferTraits<E>::Interface InterfaceType;

    BasicAbstractBuffer() noexcept = default;
    // A copy is a new object: it starts unreferenced whatever its source's
    // count, and assignment never touches the count.
    BasicAbstractBuffer(const BasicAbstractBuffer&) noexcept : Object() {}
    BasicAbstractBuffer& operator=(const BasicAbstractBuffer&) noexcept { return *this; }
    ~BasicAbstractBuffer() override = default;

    virtual int32_t getLength() const = 0;
    virtual const E* getData() const = 0;
    virtual const E* getReadLock() const = 0;
    virtual void releaseReadLock() const = 0;
    virtual bool isWritable() const = 0;
    virtual E* getWriteLock(int32_t minCapacity) = 0;
    virtual E* ensureCapacity(int32_t minCapacity) = 0;
    virtual void releaseWriteLock(int32_t newLength) = 0;
    virtual void freeExtra() = 0;

    bool isEmpty() const { return getLength() == 0; }

    using InterfaceType::EnsureCapacity;
    using InterfaceType::GetReadLock;
    using InterfaceType::GetWriteLock;

    int32_t GetLength() const override;
    const E* GetData() const override;
    Result GetReadLock(const E** data) const override;
    Result ReleaseReadLock() const override;
    int16_t IsWritable() const override;
    Result GetWriteLock(int32_t minCapacity, E** data) override;
    Result EnsureCapacity(int32_t minCapacity, E** data) override;
    Result ReleaseWriteLock(int32_t newLength) override;
    Result FreeExtra() override;
};

// Read-only view of memory the caller owns: never copied, never freed. Write
// operations throw ReadOnlyException; through the interface they answer
// 0x80004001 directly.
template <class E>
class BasicROBuffer : public BasicAbstractBuffer<E> {
public:
    typedef typename BufferTraits<E>::Alternate Alternate;

    BasicROBuffer() noexcept;
    // The capacity is ignored. Null data with a positive length is refused
    // with ResultException(0x80070057).
    BasicROBuffer(const E* data, int32_t length, int32_t capacity = 0);
    BasicROBuffer(const Alternate* data, int32_t length, int32_t capacity = 0)
        : BasicROBuffer(reinterpret_cast<const E*>(data), length, capacity)
    {}
    // A null pointer literal would match both spellings.
    BasicROBuffer(std::nullptr_t, int32_t length, int32_t capacity = 0)
        : BasicROBuffer(static_cast<const E*>(nullptr), length, capacity)
    {}
    // Shallow: the copy points at the same memory.
    BasicROBuffer(const BasicROBuffer& other) noexcept;
    BasicROBuffer& operator=(const BasicROBuffer& other) noexcept;
    ~BasicROBuffer() override;

    int32_t getLength() const override;
    const E* getData() const override;
    const E* getReadLock() const override;
    void releaseReadLock() const override;
    bool isWritable() const override;
    E* getWriteLock(int32_t minCapacity) override;
    E* ensureCapacity(int32_t minCapacity) override;
    void releaseWriteLock(int32_t newLength) override;
    void freeExtra() override;

    using BasicAbstractBuffer<E>::GetReadLock;
    using BasicAbstractBuffer<E>::GetWriteLock;
    using BasicAbstractBuffer<E>::EnsureCapacity;

    int32_t GetLength() const override;
    const E* GetData() const override;
    Result GetReadLock(const E** data) const override;
    Result ReleaseReadLock() const override;
    int16_t IsWritable() const override;
    Result GetWriteLock(int32_t minCapacity, E** data) override;
    Result EnsureCapacity(int32_t minCapacity, E** data) override;
    Result ReleaseWriteLock(int32_t newLength) override;
    Result FreeExtra() override;

private:
    const E* m_data;
    int32_t m_length;
};

// An owned heap block for one thread at a time. Capacities are multiples of
// 16 elements, grown to exactly what is asked for (no geometric growth); a
// failed allocation throws OutOfMemoryException (a std::bad_alloc saying "bad
// allocation") and leaves data, capacity and length as they were.
//
// A derived class may hand over storage that lives in its own allocation
// (see the protected constructor): the buffer then never frees it, and moves
// the elements to a block of their own the first time it must grow.
template <class E>
class BasicRWBuffer : public BasicAbstractBuffer<E> {
public:
    typedef typename BufferTraits<E>::Alternate Alternate;

    BasicRWBuffer() noexcept;
    // Room for max(length, capacity) elements; copies length elements. Null
    // data with a positive length is refused with ResultException(0x80070057).
    BasicRWBuffer(const E* data, int32_t length, int32_t capacity = 0);
    BasicRWBuffer(const Alternate* data, int32_t length, int32_t capacity = 0)
        : BasicRWBuffer(reinterpret_cast<const E*>(data), length, capacity)
    {}
    // A null pointer literal would match both spellings.
    BasicRWBuffer(std::nullptr_t, int32_t length, int32_t capacity = 0)
        : BasicRWBuffer(static_cast<const E*>(nullptr), length, capacity)
    {}
    explicit BasicRWBuffer(int32_t capacity);
    // Same capacity and contents; the source is read without its lock.
    BasicRWBuffer(const BasicRWBuffer& other);
    BasicRWBuffer& operator=(const BasicRWBuffer& other);
    ~BasicRWBuffer() override;

    // Elements allocated: 0 or a multiple of 16.
    int32_t getCapacity() const noexcept { return m_capacity; }

    int32_t getLength() const override;
    const E* getData() const override;
    const E* getReadLock() const override;
    void releaseReadLock() const override;
    bool isWritable() const override;
    E* getWriteLock(int32_t minCapacity) override;
    // Only ever grows.
    E* ensureCapacity(int32_t minCapacity) override;
    // A negative length keeps the old one; one beyond the capacity is refused
    // with ResultException(0x80070057).
    void releaseWriteLock(int32_t newLength) override { setLength(newLength); }
    // Shrinks to the length; at length 0 the block is freed.
    void freeExtra() override;

    // No lock, even in the thread-safe variant.
    int32_t GetLength() const override { return m_length; }
    const E* GetData() const override { return m_data; }

    // The next multiple of 16 at or above n.
    static int32_t adjustCapacity(int32_t n);

protected:
    // Tags the constructor below, so that (data, length) with writable data
    // reaches the public copying constructor rather than this one.
    struct EmbeddedStorage {};
    // Takes embedded storage for capacity elements (a multiple of 16) that
    // the derived object owns and outlives the buffer's use of it.
    BasicRWBuffer(EmbeddedStorage, E* embedded, int32_t capacity) noexcept
        : m_data(embedded), m_capacity(capacity), m_length(0), m_embedded(true)
    {}
    // True while the elements sit in the storage given to the constructor.
    bool isEmbedded() const noexcept { return m_embedded; }

    void allocBuffer(int32_t n);
    void reallocBuffer(int32_t n);
    void copyFrom(const BasicRWBuffer& other);
    void setLength(int32_t newLength)
    {
        if (newLength < 0)
            return;
        if (newLength > m_capacity)
            refuseLength();
        m_length = newLength;
    }
    [[noreturn]] static void refuseLength();

private:
    E* m_data;
    int32_t m_capacity;
    int32_t m_length;
    bool m_embedded;
};

// The owned block behind a reader-writer lock. The read lock is taken shared
// and given back through the lock's exclusive release (signal), which the
// lock accepts for a shared hold. GetLength, GetData and ensureCapacity
// called directly take no lock.
template <class E>
class BasicMTBuffer : public BasicRWBuffer<E> {
public:
    typedef typename BufferTraits<E>::Alternate Alternate;

    BasicMTBuffer();
    BasicMTBuffer(const E* data, int32_t length, int32_t capacity = 0);
    BasicMTBuffer(const Alternate* data, int32_t length, int32_t capacity = 0)
        : BasicMTBuffer(reinterpret_cast<const E*>(data), length, capacity)
    {}
    // A null pointer literal would match both spellings.
    BasicMTBuffer(std::nullptr_t, int32_t length, int32_t capacity = 0)
        : BasicMTBuffer(static_cast<const E*>(nullptr), length, capacity)
    {}
    explicit BasicMTBuffer(int32_t capacity);
    BasicMTBuffer(const BasicMTBuffer& other);
    BasicMTBuffer& operator=(const BasicMTBuffer& other);
    ~BasicMTBuffer() override;

    const E* getReadLock() const override;
    void releaseReadLock() const override;
    // When growing fails the lock is given back before the failure leaves.
    E* getWriteLock(int32_t minCapacity) override;
    void releaseWriteLock(int32_t newLength) override;
    void freeExtra() override;

private:
    mutable sync::ReaderWriterLock m_lock;
};

extern template class QV_EXPORT BasicAbstractBuffer<signed char>;
extern template class QV_EXPORT BasicAbstractBuffer<char16_t>;
extern template class QV_EXPORT BasicROBuffer<signed char>;
extern template class QV_EXPORT BasicROBuffer<char16_t>;
extern template class QV_EXPORT BasicRWBuffer<signed char>;
extern template class QV_EXPORT BasicRWBuffer<char16_t>;
extern template class QV_EXPORT BasicMTBuffer<signed char>;
extern template class QV_EXPORT BasicMTBuffer<char16_t>;

typedef BasicAbstractBuffer<signed char> AbstractByteBuffer;
typedef BasicAbstractBuffer<char16_t> AbstractCharBuffer;
typedef BasicROBuffer<signed char> ROByteBuffer;
typedef BasicROBuffer<char16_t> ROCharBuffer;
typedef BasicRWBuffer<signed char> RWByteBuffer;
typedef BasicRWBuffer<char16_t> RWCharBuffer;
typedef BasicMTBuffer<signed char> MTByteBuffer;
typedef BasicMTBuffer<char16_t> MTCharBuffer;

} // namespace util
} // namespace qv

#endif
