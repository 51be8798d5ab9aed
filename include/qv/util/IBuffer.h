#ifndef QV_UTIL_IBUFFER_H
#define QV_UTIL_IBUFFER_H

#include <qv/core/IQVUnknown.h>

#include <cstdint>

namespace qv {
namespace util {

// The operations shared by the byte and the character buffer interfaces; E is
// the element (signed char or char16_t). Lengths and capacities count
// elements. Every operation returns a result code unless it says otherwise and
// never throws.
//
// Writers: GetWriteLock(n, &p) gives room for at least n elements whose first
// GetLength() are the old contents; write; ReleaseWriteLock(newLength), or a
// negative length to keep the old one. Readers: GetReadLock(&p), read
// GetLength() elements, ReleaseReadLock().
template <class E>
class IBuffer : public IQVUnknown {
public:
    typedef E Element;

    virtual int32_t GetLength() const = 0;
    // The elements without any lock.
    virtual const E* GetData() const = 0;
    virtual Result GetReadLock(const E** data) const = 0;
    virtual Result ReleaseReadLock() const = 0;
    // 1 or 0.
    virtual int16_t IsWritable() const = 0;
    virtual Result GetWriteLock(int32_t minCapacity, E** data) = 0;
    // Grows the block without taking the write lock.
    virtual Result EnsureCapacity(int32_t minCapacity, E** data) = 0;
    virtual Result ReleaseWriteLock(int32_t newLength) = 0;
    // Gives back the room past the length.
    virtual Result FreeExtra() = 0;

protected:
    ~IBuffer() = default;
};

} // namespace util
} // namespace qv

#endif
