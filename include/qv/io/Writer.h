#ifndef QV_IO_WRITER_H
#define QV_IO_WRITER_H

#include <qv/core/Export.h>
#include <qv/core/Object.h>
#include <qv/core/TextSpelling.h>

#include <cstdint>

namespace qv {

class String;

namespace io {

// A sink of UTF-16 text that can be flushed.
//
// A failure of the sink is thrown from the write or flush that meets it, as
// IoException (or the converter exceptions of an encoding writer); once a
// writer is closed every operation but close() throws IoException
// "stream closed". One writer is used by one thread at a time.
class QV_EXPORT Writer : public Object {
public:
    Writer() noexcept = default;
    ~Writer() override;

    // count units of text; a negative count writes up to the text's NUL. A
    // null text with a positive count throws ResultException(0x80070057).
    virtual void write(const char16_t* text, int32_t count) = 0;
    template <class T, IfUShortText<T> = 0>
    void write(const T* text, int32_t count)
    {
        write(reinterpret_cast<const char16_t*>(text), count);
    }
    // All units of text, NULs included. The base calls the form above.
    virtual void write(const String& text);
    // The base calls write(&unit, 1).
    virtual void write(char16_t unit);
    // Passes held text on towards the sink. The base does nothing.
    virtual void flush();
    // Flushes and releases the sink; a second close does nothing. The base
    // does nothing.
    virtual void close();

protected:
    // The unit count a write(text, count) stands for (see write above).
    static int32_t measure(const char16_t* text, int32_t count);
};

} // namespace io
} // namespace qv

#endif
