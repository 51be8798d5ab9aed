#ifndef QV_IO_OUTPUTSTREAM_H
#define QV_IO_OUTPUTSTREAM_H

#include <qv/core/Object.h>

#include <cstdint>

namespace qv {
namespace io {

// A sink of bytes written in sequence. A subclass overrides
// write(const signed char*, int32_t); every other operation has a working
// default built on it. A stream is used by one thread at a time.
class QV_EXPORT OutputStream : public Object {
public:
    OutputStream() noexcept = default;
    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;
    ~OutputStream() override;

    // Both forward to write(const signed char*, int32_t).
    virtual void write(const char* buffer, int32_t count);
    virtual void write(const unsigned char* buffer, int32_t count);
    virtual void write(const signed char* buffer, int32_t count) = 0;
    // Writes one byte through write(const signed char*, int32_t).
    virtual void write(signed char byte);
    virtual void flush();
    virtual void close();
};

} // namespace io
} // namespace qv

#endif
