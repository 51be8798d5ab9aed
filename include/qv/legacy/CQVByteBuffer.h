#ifndef QV_LEGACY_CQVBYTEBUFFER_H
#define QV_LEGACY_CQVBYTEBUFFER_H

#include <qv/legacy/CQVAbstractByteBuffer.h>
#include <qv/util/RWByteBuffer.h>

#include <cstdint>

namespace qv {

// Kept for older callers: a growable run of bytes in the old spelling. The
// bytes live in a util::RWByteBuffer (GetBuffer()); as with all the CQV
// classes, operations are UpperCamel and report failure by result code,
// never by exception.
class QV_EXPORT CQVByteBuffer : public CQVAbstractByteBuffer {
public:
    CQVByteBuffer();
    CQVByteBuffer(const void* data, int32_t length);
    CQVByteBuffer(const CQVByteBuffer& other);
    CQVByteBuffer& operator=(const CQVByteBuffer& other);
    ~CQVByteBuffer() override;

    int32_t GetLength() const override;
    const signed char* GetData() const override;
    Result SetData(const void* data, int32_t length) override;
    Result Append(const void* data, int32_t length) override;
    Result Reserve(int32_t capacity) override;
    void Clear() override;

    util::RWByteBuffer& GetBuffer();

private:
    util::RWByteBuffer m_buffer;
};

} // namespace qv

// Older callers name it without the namespace.
using qv::CQVByteBuffer;

#endif
