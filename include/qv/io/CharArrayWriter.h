#ifndef QV_IO_CHARARRAYWRITER_H
#define QV_IO_CHARARRAYWRITER_H

#include <qv/core/TextSpelling.h>
#include <qv/io/Writer.h>
#include <qv/lang/String.h>

namespace qv {
namespace io {

// Keeps everything written in memory. When a write does not fit, the block
// grows to a quarter more than is needed, as the byte array output stream
// does. After close() writes throw "stream closed", but the text stays
// readable (toString, getChars, writeTo).
class QV_EXPORT CharArrayWriter : public Writer {
public:
    explicit CharArrayWriter(int32_t initialCapacity = 32);
    ~CharArrayWriter() override;
    CharArrayWriter(const CharArrayWriter&) = delete;
    CharArrayWriter& operator=(const CharArrayWriter&) = delete;

    using Writer::write;
    void write(const char16_t* text, int32_t count) override;
    void write(char16_t unit) override;
    void flush() override;
    void close() override;

    // Units held.
    int32_t size() const noexcept { return m_count; }
    // Forgets the text, keeping the block.
    void reset() noexcept { m_count = 0; }
    // Copies min(max, size()) units and returns that number.
    int32_t getChars(char16_t* destination, int32_t max) const;
    template <class T, IfUShortText<T> = 0>
    int32_t getChars(T* destination, int32_t max) const
    {
        return getChars(reinterpret_cast<char16_t*>(destination), max);
    }
    // Writes the text held to another writer.
    void writeTo(Writer* out) const;
    using Object::toString;
    // The text held.
    String toString() override;

private:
    void ensureOpen() const;
    char16_t* room(int32_t count);

    char16_t* m_data = nullptr;
    int32_t m_count = 0;
    int32_t m_capacity = 0;
    bool m_closed = false;
};

} // namespace io
} // namespace qv

#endif
