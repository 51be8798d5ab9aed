#ifndef QV_IO_PRINTWRITER_H
#define QV_IO_PRINTWRITER_H

#include <qv/core/Reference.h>
#include <qv/core/TextSpelling.h>
#include <qv/io/Writer.h>

namespace qv {
namespace io {

// Prints strings, objects and numbers as text (numbers as String::valueOf
// writes them) to another writer. Unlike the print writers users may know,
// it does not swallow failures: a failing write or flush throws as any
// writer does. With autoFlush, every println flushes.
class QV_EXPORT PrintWriter : public Writer {
public:
    // A null writer throws ResultException(0x80070057).
    explicit PrintWriter(Writer* out, bool autoFlush = false);
    ~PrintWriter() override;

    using Writer::write;
    void write(const char16_t* text, int32_t count) override;
    void write(const String& text) override;
    void write(char16_t unit) override;
    void flush() override;
    void close() override;

    void print(const String& text);
    // NUL-terminated; null prints nothing.
    void print(const char16_t* text);
    template <class T, IfUShortText<T> = 0>
    void print(const T* text)
    {
        print(reinterpret_cast<const char16_t*>(text));
    }
    // Narrow text would otherwise print as a bool.
    void print(const char* text) = delete;
    // The object's toString().
    void print(const Object& object);
    void print(bool value);
    void print(char16_t value);
    void print(int value);
    void print(unsigned int value);
    void print(long value);
    void print(unsigned long value);
    void print(long long value);
    void print(unsigned long long value);
    void print(float value);
    void print(double value);

    // The line separator "\n".
    void println();
    template <class T>
    void println(const T& value)
    {
        print(value);
        println();
    }
    void println(const char16_t* text)
    {
        print(text);
        println();
    }
    template <class T, IfUShortText<T> = 0>
    void println(const T* text)
    {
        print(text);
        println();
    }
    void println(const char* text) = delete;

private:
    void ensureOpen() const;

    Reference<Writer> m_out;
    bool m_autoFlush;
};

} // namespace io
} // namespace qv

#endif
