#ifndef QV_UTIL_IBYTEBUFFER_H
#define QV_UTIL_IBYTEBUFFER_H

#include <qv/util/IBuffer.h>

namespace qv {
namespace util {

// A growable run of bytes lent out under read and write locks.
class IByteBuffer : public IBuffer<signed char> {
public:
    // IQVByteBuffer adds nothing and shares this layout, so asking for either
    // identifier yields the same pointer.
    static constexpr GUID iid = {0xBD454BEB, 0xD847, 0x40F3, {0xAA, 0xBF, 0x30, 0x83, 0xAC, 0x2A, 0xC5, 0x4B}};

protected:
    ~IByteBuffer() = default;
};

// What the buffer classes implement.
class IQVByteBuffer : public IByteBuffer {
public:
    static constexpr GUID iid = {0xBD454BEB, 0xD847, 0x40F3, {0xAA, 0xBF, 0x30, 0x83, 0xAC, 0x2A, 0xC5, 0x4B}};

protected:
    ~IQVByteBuffer() = default;
};

} // namespace util
} // namespace qv

#endif
