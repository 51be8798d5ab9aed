#ifndef QV_IO_FILTERINPUTSTREAM_H
#define QV_IO_FILTERINPUTSTREAM_H

#include <qv/core/Reference.h>
#include <qv/io/InputStream.h>

namespace qv {
namespace io {

// Holds another input stream and forwards every operation to it; the base
// of the streams that transform or buffer what they read. Closing the filter
// closes the wrapped stream.
class QV_EXPORT FilterInputStream : public InputStream {
public:
    // A null stream throws ResultException(0x80070057).
    explicit FilterInputStream(InputStream* in);
    ~FilterInputStream() override;

    using InputStream::read;
    int32_t read(signed char* buffer, int32_t count) override;
    int read() override;
    int32_t skip(int32_t count) override;
    int32_t available() override;
    void close() override;
    bool markSupported() override;
    void mark(int32_t readLimit) override;
    void reset() override;

protected:
    Reference<InputStream> m_in;
};

} // namespace io
} // namespace qv

#endif
