#ifndef QV_IO_STRINGREADER_H
#define QV_IO_STRINGREADER_H

#include <qv/io/Reader.h>
#include <qv/lang/String.h>

namespace qv {
namespace io {

// Reads the units of a String (sharing its buffer, not copying it). Always
// ready; mark and reset work without a limit.
class QV_EXPORT StringReader : public Reader {
public:
    explicit StringReader(const String& text);
    ~StringReader() override;

    using Reader::read;
    int32_t read(char16_t* buffer, int32_t count) override;
    int32_t read() override;
    int32_t skip(int32_t count) override;
    bool ready() override;
    void close() override;
    bool markSupported() const override;
    void mark(int32_t readLimit) override;
    void reset() override;

private:
    void ensureOpen() const;

    String m_text;
    int32_t m_pos = 0;
    int32_t m_mark = 0;
    bool m_closed = false;
};

} // namespace io
} // namespace qv

#endif
