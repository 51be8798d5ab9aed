#ifndef QV_IO_BYTEARRAYOUTPUTSTREAM_H
#define QV_IO_BYTEARRAYOUTPUTSTREAM_H

#include <qv/core/TextSpelling.h>
#include <qv/io/OutputStream.h>
#include <qv/lang/String.h>

namespace qv {
namespace io {

// Collects written bytes in an owned block that grows to a quarter more than
// needed whenever a write does not fit.
class QV_EXPORT ByteArrayOutputStream : public OutputStream {
public:
    static constexpr int32_t DEFAULT_CAPACITY = 32;

    // A negative capacity throws ResultException(0x80070057).
    explicit ByteArrayOutputStream(int32_t initialCapacity = DEFAULT_CAPACITY);
    ~ByteArrayOutputStream() override;

    using OutputStream::write;
    void write(const signed char* buffer, int32_t count) override;
    void write(signed char byte) override;

    // Grows the block to capacity * 5 / 4 bytes when it holds fewer than
    // capacity; the collected bytes are kept.
    void ensureCapacity(int32_t capacity);
    // Copies at most max collected bytes to dest; returns how many.
    int32_t getBytes(signed char* dest, int32_t max) const;
    // Writes every collected byte to out.
    void writeTo(OutputStream* out) const;
    using Object::toString;
    // The collected bytes decoded with the default encoding, or with the
    // named one (through the converters; an unknown name throws
    // UnknownEncodingException).
    String toString() override;
    String toString(const char16_t* encoding) const;
    template <class T, IfUShortText<T> = 0>
    String toString(const T* encoding) const
    {
        return toString(reinterpret_cast<const char16_t*>(encoding));
    }

    // Additions: the number of bytes collected, the size of the block, the
    // collected bytes in place (valid until the next write), and a way to
    // start again that keeps the block.
    int32_t size() const noexcept { return m_count; }
    int32_t getCapacity() const noexcept { return m_capacity; }
    const signed char* getData() const noexcept { return m_buf; }
    void clear() noexcept { m_count = 0; }

private:
    void grow(int64_t needed);

    signed char* m_buf = nullptr;
    int32_t m_count = 0;
    int32_t m_capacity = 0;
};

} // namespace io
} // namespace qv

#endif
