#ifndef QVCORE3_SRC_UTF_H
#define QVCORE3_SRC_UTF_H

#include <qvcore3/qvcore3.h>

#include <cstddef>

namespace qvcore3 {

// What NextCodePoint gives for an unpaired surrogate: beyond Unicode, so that
// each caller picks its own stand-in.
constexpr char32_t kUnpairedSurrogate = 0x110000;

// The value of a digit of any radix up to 36 ('0'-'9', 'a'-'z', 'A'-'Z'),
// 99 for anything else.
int DigitValue(char16_t unit) noexcept;

// Reads one code point from UTF-16 and advances *position (at most to end).
char32_t NextCodePoint(const char16_t* text, size_t end, size_t* position) noexcept;

// Bytes that UTF-8 needs for count units of text (no NUL); unpaired
// surrogates become U+FFFD.
size_t Utf8Length(const char16_t* text, size_t count) noexcept;
// Writes the UTF-8 form (exactly Utf8Length bytes, no NUL); returns the end.
char* WriteUtf8(const char16_t* text, size_t count, char* out) noexcept;

// A NUL-terminated UTF-8 copy of UTF-16 text in memory from QVMemAlloc: paths,
// arguments and names handed to the system, which takes file names as UTF-8.
class Utf8String {
public:
    Utf8String() noexcept = default;
    ~Utf8String();
    Utf8String(const Utf8String&) = delete;
    Utf8String& operator=(const Utf8String&) = delete;

    // Null text gives a null c_str().
    QVRESULT assign(const char16_t* text) noexcept;
    const char* c_str() const noexcept { return m_text; }

private:
    char* m_text = nullptr;
};

// Several UTF-8 strings in one block, as a null-terminated char* array
// (argv, envp). first, when not null, is put in front unchanged.
class Utf8Array {
public:
    Utf8Array() noexcept = default;
    ~Utf8Array();
    Utf8Array(const Utf8Array&) = delete;
    Utf8Array& operator=(const Utf8Array&) = delete;

    QVRESULT assign(const char* first, const char16_t* const* strings, size_t count) noexcept;
    char** data() const noexcept { return static_cast<char**>(m_block); }

private:
    void* m_block = nullptr;
};

} // namespace qvcore3

#endif
