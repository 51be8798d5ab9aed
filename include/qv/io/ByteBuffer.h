#ifndef QV_IO_BYTEBUFFER_H
#define QV_IO_BYTEBUFFER_H

#include <qv/core/Object.h>

#include <cstdint>

namespace qv {
namespace io {

// A growable run of bytes with a write cursor and a read cursor, shared by
// reference between the streams over it (a pipe within one thread).
//  - Bytes are written at the write cursor and read from the read cursor;
//    0 <= read cursor <= write cursor <= capacity, and the unread bytes are
//    those between the cursors.
//  - Bytes once read are gone: when the read cursor catches up with the
//    write cursor both go back to 0, and a write that does not fit first
//    moves the unread bytes to the front. Only when they still do not fit
//    does the block grow, to at least half as much again, so a buffer used
//    as a pipe stays as large as its largest backlog.
// Not thread-safe, as streams are not.
class QV_EXPORT ByteBuffer : public Object {
public:
    explicit ByteBuffer(int32_t initialCapacity = 0);
    // Starts with a copy of the bytes, all unread.
    ByteBuffer(const signed char* data, int32_t length);
    ByteBuffer(const ByteBuffer&) = delete;
    ByteBuffer& operator=(const ByteBuffer&) = delete;
    ~ByteBuffer() override;

    // Appends count bytes. A negative count, or a null pointer with a
    // positive count, throws ResultException(0x80070057).
    void write(const signed char* data, int32_t count);
    void write(const char* data, int32_t count) { write(reinterpret_cast<const signed char*>(data), count); }
    void write(const unsigned char* data, int32_t count) { write(reinterpret_cast<const signed char*>(data), count); }
    // Takes up to count unread bytes; returns how many (0 when none).
    int32_t read(signed char* data, int32_t count);
    int32_t read(char* data, int32_t count) { return read(reinterpret_cast<signed char*>(data), count); }
    int32_t read(unsigned char* data, int32_t count) { return read(reinterpret_cast<signed char*>(data), count); }
    // Drops up to count unread bytes; returns how many.
    int32_t skip(int32_t count);

    // The unread bytes.
    int32_t getLength() const noexcept { return m_write - m_read; }
    bool isEmpty() const noexcept { return m_write == m_read; }
    const signed char* getData() const noexcept { return m_data + m_read; }
    int32_t getReadPosition() const noexcept { return m_read; }
    int32_t getWritePosition() const noexcept { return m_write; }
    int32_t getCapacity() const noexcept { return m_capacity; }
    // Room for count more bytes without a later allocation.
    void ensureWritable(int32_t count);
    // Drops every unread byte; the block is kept.
    void clear() noexcept { m_read = m_write = 0; }

private:
    signed char* m_data = nullptr;
    int32_t m_capacity = 0;
    int32_t m_read = 0;
    int32_t m_write = 0;
};

} // namespace io
} // namespace qv

#endif
