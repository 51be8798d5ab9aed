#ifndef QV_UTIL_ICHARBUFFER_H
#define QV_UTIL_ICHARBUFFER_H

#include <qv/core/Export.h>
#include <qv/core/TextSpelling.h>
#include <qv/util/IBuffer.h>

namespace qv {
namespace util {

// A growable run of UTF-16 code units lent out under read and write locks: the
// library's way of returning text of any length across component boundaries.
// The pointer-taking operations also exist for unsigned short, with identical
// behaviour.
class ICharBuffer : public IBuffer<char16_t> {
public:
    // IQVCharBuffer adds nothing and shares this layout, so asking for either
    // identifier yields the same pointer.
    static constexpr GUID iid = {0x1F2639A2, 0x1EBC, 0x4E20, {0x85, 0x60, 0x0A, 0xA5, 0x9F, 0x8A, 0xCB, 0x39}};

    using IBuffer<char16_t>::GetReadLock;
    using IBuffer<char16_t>::GetWriteLock;
    using IBuffer<char16_t>::EnsureCapacity;

    template <class T, IfUShortText<T> = 0>
    Result GetReadLock(const T** data) const
    {
        const char16_t* units = nullptr;
        Result r = GetReadLock(data ? &units : nullptr);
        if (data)
            *data = reinterpret_cast<const unsigned short*>(units);
        return r;
    }
    template <class T, IfUShortText<T> = 0>
    Result GetWriteLock(int32_t minCapacity, T** data)
    {
        char16_t* units = nullptr;
        Result r = GetWriteLock(minCapacity, data ? &units : nullptr);
        if (data)
            *data = reinterpret_cast<unsigned short*>(units);
        return r;
    }
    template <class T, IfUShortText<T> = 0>
    Result EnsureCapacity(int32_t minCapacity, T** data)
    {
        char16_t* units = nullptr;
        Result r = EnsureCapacity(minCapacity, data ? &units : nullptr);
        if (data)
            *data = reinterpret_cast<unsigned short*>(units);
        return r;
    }

protected:
    ~ICharBuffer() = default;
};

// What the buffer classes (and qv::String) implement.
class IQVCharBuffer : public ICharBuffer {
public:
    static constexpr GUID iid = {0x1F2639A2, 0x1EBC, 0x4E20, {0x85, 0x60, 0x0A, 0xA5, 0x9F, 0x8A, 0xCB, 0x39}};

protected:
    ~IQVCharBuffer() = default;
};

} // namespace util
} // namespace qv

extern "C" {
// Copies the whole text of source into target (its length becomes source's)
// and returns target's ReleaseWriteLock result. A failing lock operation is
// thrown as qv::ResultException carrying its code, and nothing is released on
// the way out: the caller gives back the lock it knows to be held. Null
// arguments give 0x80070057; copying a buffer onto itself does nothing.
QV_EXPORT qv::Result QVCopyCharBuffer(qv::util::ICharBuffer* target, qv::util::ICharBuffer* source);
}

#endif
