#ifndef QV_IO_NULLWRITER_H
#define QV_IO_NULLWRITER_H

#include <qv/io/Writer.h>

namespace qv {
namespace io {

// Discards everything written (until closed, after which it throws
// "stream closed" like every writer).
class QV_EXPORT NullWriter : public Writer {
public:
    NullWriter() noexcept = default;
    ~NullWriter() override;

    using Writer::write;
    void write(const char16_t* text, int32_t count) override;
    void write(const String& text) override;
    void write(char16_t unit) override;
    void flush() override;
    void close() override;

private:
    bool m_closed = false;
};

} // namespace io
} // namespace qv

#endif
