#ifndef QV_LEGACY_CQVABSTRACTBYTEBUFFER_H
#define QV_LEGACY_CQVABSTRACTBYTEBUFFER_H

#include <qv/core/Object.h>
#include <qv/core/Result.h>

#include <cstdint>

namespace qv {

// Kept for older callers: the operations every byte buffer of the old
// spelling offers, so that code written against the abstract class takes any
// of them. Failures are result codes, never exceptions.
class QV_EXPORT CQVAbstractByteBuffer : public Object {
public:
    ~CQVAbstractByteBuffer() override;

    virtual int32_t GetLength() const = 0;
    // Null while empty; valid until the next change.
    virtual const signed char* GetData() const = 0;
    // Replaces the bytes; 0x80070057 for null data with a positive length.
    virtual Result SetData(const void* data, int32_t length) = 0;
    virtual Result Append(const void* data, int32_t length) = 0;
    // Room for at least capacity bytes without another allocation.
    virtual Result Reserve(int32_t capacity) = 0;
    virtual void Clear() = 0;

protected:
    CQVAbstractByteBuffer() = default;
    CQVAbstractByteBuffer(const CQVAbstractByteBuffer&) : Object() {}
    CQVAbstractByteBuffer& operator=(const CQVAbstractByteBuffer&) { return *this; }
};

} // namespace qv

// Older callers name it without the namespace.
using qv::CQVAbstractByteBuffer;

#endif
