#ifndef QV_IO_READER_H
#define QV_IO_READER_H

#include <qv/core/Export.h>
#include <qv/core/Object.h>
#include <qv/core/TextSpelling.h>

#include <cstdint>

namespace qv {
namespace io {

// A source of UTF-16 text, read one run of code units at a time.
//
// Counts are int32_t; -1 means the end of the text. Failures are thrown as
// IoException (or the converter exceptions of a decoding reader); once a
// reader is closed every operation but close() throws IoException
// "stream closed". One reader is used by one thread at a time.
class QV_EXPORT Reader : public Object {
public:
    Reader() noexcept = default;
    ~Reader() override;

    // Up to count units into buffer: the number read, 0 when count < 1, -1 at
    // the end. Blocks until at least one unit is in hand.
    virtual int32_t read(char16_t* buffer, int32_t count) = 0;
    template <class T, IfUShortText<T> = 0>
    int32_t read(T* buffer, int32_t count)
    {
        return read(reinterpret_cast<char16_t*>(buffer), count);
    }
    // One unit as 0..0xFFFF, or -1 at the end.
    virtual int32_t read();
    // Reads and drops up to count units; returns how many were dropped (0 for
    // count < 1 and at the end).
    virtual int32_t skip(int32_t count);
    // True when the next read will not block. The base answers false.
    virtual bool ready();
    // Releases what the reader holds; a second close does nothing.
    virtual void close();
    virtual bool markSupported() const;
    // Remembers the position so that reset() returns to it while at most
    // readLimit units have been read past it. The base does nothing.
    virtual void mark(int32_t readLimit);
    // The base throws IoException "mark/reset not supported".
    virtual void reset();
};

} // namespace io
} // namespace qv

#endif
