#ifndef QV_IO_NULLOUTPUTSTREAM_H
#define QV_IO_NULLOUTPUTSTREAM_H

#include <qv/io/OutputStream.h>

namespace qv {
namespace io {

// Discards everything written to it (the arguments are still checked).
class QV_EXPORT NullOutputStream : public OutputStream {
public:
    NullOutputStream() noexcept;
    ~NullOutputStream() override;

    using OutputStream::write;
    void write(const signed char* buffer, int32_t count) override;
    void write(signed char byte) override;
};

} // namespace io
} // namespace qv

#endif
