#ifndef QV_IO_READABLECHANNEL_H
#define QV_IO_READABLECHANNEL_H

#include <qv/core/IQVUnknown.h>
#include <qv/util/IByteBuffer.h>

#include <cstdint>

namespace qv {
namespace io {

// A source of bytes that hands them over in a byte buffer. An interface of
// reference-counted objects (reached with Reference<ReadableChannel> or by
// its identifier), but with the throwing member functions of the class
// library: failures are IoException, and every operation of a closed channel
// but isOpen() and close() throws ResultException(0x80004007)
// "channel not open".
class ReadableChannel : public IQVUnknown {
public:
    static constexpr GUID iid = {0x5B0C7E61, 0x2F4A, 0x4D3B, {0x9C, 0x1E, 0x77, 0x40, 0xA2, 0x18, 0xD5, 0x31}};

    // Appends at most max bytes to the buffer, after its current length:
    // the number appended, 0 when max < 1, -1 at the end.
    virtual int32_t read(util::IByteBuffer* buffer, int32_t max) = 0;
    virtual bool isOpen() const = 0;
    // A second close does nothing.
    virtual void close() = 0;

protected:
    ~ReadableChannel() = default;
};

} // namespace io
} // namespace qv

#endif
