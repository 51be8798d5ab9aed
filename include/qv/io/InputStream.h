#ifndef QV_IO_INPUTSTREAM_H
#define QV_IO_INPUTSTREAM_H

#include <qv/core/Object.h>

#include <cstdint>

namespace qv {
namespace io {

// A source of bytes read in sequence. A subclass overrides
// read(signed char*, int32_t); every other operation has a working default
// built on it. Counts are 32-bit; -1 marks the end of the stream. A stream is
// used by one thread at a time.
class QV_EXPORT InputStream : public Object {
public:
    InputStream() noexcept = default;
    InputStream(const InputStream&) = delete;
    InputStream& operator=(const InputStream&) = delete;
    ~InputStream() override;

    // Both forward to read(signed char*, int32_t).
    virtual int32_t read(char* buffer, int32_t count);
    virtual int32_t read(unsigned char* buffer, int32_t count);
    // Bytes read: 0 when count < 1, -1 at the end of the stream.
    virtual int32_t read(signed char* buffer, int32_t count) = 0;
    // One byte as 0..255, or -1 at the end.
    virtual int read();
    // Reads and drops up to count bytes (256 at a time); returns how many
    // were dropped, 0 for count <= 0.
    virtual int32_t skip(int32_t count);
    // Bytes that can be read without blocking; 0 here.
    virtual int32_t available();
    virtual void close();
    virtual bool markSupported();
    virtual void mark(int32_t readLimit);
    // Throws IoException "mark/reset not supported" here.
    virtual void reset();
};

} // namespace io
} // namespace qv

#endif
