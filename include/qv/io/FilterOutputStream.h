#ifndef QV_IO_FILTEROUTPUTSTREAM_H
#define QV_IO_FILTEROUTPUTSTREAM_H

#include <qv/core/Reference.h>
#include <qv/io/OutputStream.h>

namespace qv {
namespace io {

// Holds another output stream and forwards every operation to it; the base
// of the streams that transform or buffer what they write. Closing the
// filter closes the wrapped stream.
class QV_EXPORT FilterOutputStream : public OutputStream {
public:
    // A null stream throws ResultException(0x80070057).
    explicit FilterOutputStream(OutputStream* out);
    ~FilterOutputStream() override;

    using OutputStream::write;
    void write(const signed char* buffer, int32_t count) override;
    void write(signed char byte) override;
    void flush() override;
    void close() override;

protected:
    Reference<OutputStream> m_out;
};

} // namespace io
} // namespace qv

#endif
