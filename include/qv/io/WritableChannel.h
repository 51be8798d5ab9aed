#ifndef QV_IO_WRITABLECHANNEL_H
#define QV_IO_WRITABLECHANNEL_H

#include <qv/core/IQVUnknown.h>
#include <qv/util/IByteBuffer.h>

#include <cstdint>

namespace qv {
namespace io {

// A sink of bytes handed over in a byte buffer; the counterpart of
// ReadableChannel, with the same failure rules.
class WritableChannel : public IQVUnknown {
public:
    static constexpr GUID iid = {0x5B0C7E62, 0x2F4A, 0x4D3B, {0x9C, 0x1E, 0x77, 0x40, 0xA2, 0x18, 0xD5, 0x31}};

    // Writes all bytes the buffer holds (read under its read lock); returns
    // their number.
    virtual int32_t write(const util::IByteBuffer* buffer) = 0;
    virtual bool isOpen() const = 0;
    virtual void close() = 0;

protected:
    ~WritableChannel() = default;
};

} // namespace io
} // namespace qv

#endif
