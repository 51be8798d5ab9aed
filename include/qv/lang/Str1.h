#ifndef QV_LANG_STR1_H
#define QV_LANG_STR1_H

#include <qv/core/Export.h>
#include <qv/core/Result.h>
#include <qv/core/TextSpelling.h>

#include <cstdint>

namespace qv {

// A small UTF-16 string value: the text and its length, nothing shared, no
// component object around it. Copies copy the text. The text is always
// NUL-terminated. Lengths count UTF-16 units; a text length of -1 means
// NUL-terminated, and a null text pointer is the empty text.
//
// Two failure channels, kept apart on purpose: operations that return a
// Result never throw (0x80004009 when a value does not fit a fixed buffer,
// 0x8007000E when memory runs out, 0x80070057 for a length below -1) and
// leave the string unchanged on failure; constructors and operators, which
// cannot return a code, throw ResultException with the same code
// (OutOfMemoryException for lack of memory).
//
// Case-insensitive comparison and hashing fold each unit with QVToLowerW.
class QV_EXPORT Str1 {
public:
    Str1() noexcept;
    Str1(const char16_t* text, int32_t length = -1);
    template <class T, IfUShortText<T> = 0>
    Str1(const T* text, int32_t length = -1) : Str1(reinterpret_cast<const char16_t*>(text), length)
    {}
    Str1(const Str1& other);
    // Takes over other's memory when other owns it; copies from a fixed buffer.
    Str1(Str1&& other);
    Str1& operator=(const Str1& other);
    Str1& operator=(Str1&& other);
    Str1& operator=(const char16_t* text);
    ~Str1();

    int32_t getLength() const noexcept { return m_length; }
    bool isEmpty() const noexcept { return m_length == 0; }
    // The NUL-terminated units.
    const char16_t* getData() const noexcept { return m_data; }
    // Units of text that fit without another allocation (a fixed buffer's size).
    int32_t getCapacity() const noexcept { return m_capacity; }
    // False for a StrBuf1, whose storage cannot grow.
    bool canGrow() const noexcept { return !m_fixed; }

    // <0, 0, >0, unit by unit as unsigned 16-bit numbers; a proper prefix
    // comes first.
    int32_t compare(const Str1& other, bool ignoreCase = false) const noexcept;
    int32_t compare(const char16_t* text, int32_t length, bool ignoreCase = false) const noexcept;
    bool equals(const Str1& other, bool ignoreCase = false) const noexcept;
    bool equals(const char16_t* text, bool ignoreCase = false) const noexcept;
    bool equals(const char16_t* text, int32_t length, bool ignoreCase) const noexcept;
    // h = 31 * h + unit over the (folded) units, from 0.
    uint32_t hashCode(bool ignoreCase = false) const noexcept;
    static uint32_t hashOf(const char16_t* text, int32_t length, bool ignoreCase) noexcept;

    Str1& toLower() noexcept;
    Str1& toUpper() noexcept;
    void clear() noexcept;

    Result assign(const Str1& other) noexcept;
    Result assign(const char16_t* text, int32_t length = -1) noexcept;
    template <class T, IfUShortText<T> = 0>
    Result assign(const T* text, int32_t length = -1) noexcept
    {
        return assign(reinterpret_cast<const char16_t*>(text), length);
    }
    Result append(const Str1& other) noexcept;
    Result append(const char16_t* text, int32_t length = -1) noexcept;
    template <class T, IfUShortText<T> = 0>
    Result append(const T* text, int32_t length = -1) noexcept
    {
        return append(reinterpret_cast<const char16_t*>(text), length);
    }
    Result append(char16_t unit) noexcept;
    // Room for capacity units; 0x80004009 for a fixed buffer that is smaller.
    Result reserve(int32_t capacity) noexcept;

protected:
    // Over storage of capacity + 1 units that the derived class owns; the
    // derived constructor writes the terminator.
    Str1(char16_t* storage, int32_t capacity) noexcept;

    // Throws for a failing code: OutOfMemoryException for 0x8007000E,
    // ResultException otherwise.
    static void check(Result code);

private:
    Result replaceRange(int32_t start, const char16_t* text, int32_t length) noexcept;

    char16_t* m_data;
    int32_t m_length;
    int32_t m_capacity;
    bool m_fixed;
};

inline bool operator==(const Str1& a, const Str1& b) noexcept
{
    return a.equals(b);
}
inline bool operator!=(const Str1& a, const Str1& b) noexcept
{
    return !a.equals(b);
}
inline bool operator<(const Str1& a, const Str1& b) noexcept
{
    return a.compare(b) < 0;
}

// A Str1 in N units of storage of its own (plus the NUL), never allocating:
// an operation whose result would be longer reports 0x80004009 and changes
// nothing; a constructor or assignment operator throws ResultException
// 0x80004009.
template <int32_t N>
class StrBuf1 : public Str1 {
    static_assert(N > 0, "a StrBuf1 needs room for at least one unit");

public:
    StrBuf1() noexcept : Str1(m_storage, N) { m_storage[0] = 0; }
    StrBuf1(const char16_t* text, int32_t length = -1) : StrBuf1() { check(assign(text, length)); }
    StrBuf1(const StrBuf1& other) noexcept : StrBuf1() { assign(other); }
    explicit StrBuf1(const Str1& other) : StrBuf1() { check(assign(other)); }
    StrBuf1& operator=(const StrBuf1& other) noexcept
    {
        assign(other);
        return *this;
    }
    StrBuf1& operator=(const Str1& other)
    {
        check(assign(other));
        return *this;
    }
    StrBuf1& operator=(const char16_t* text)
    {
        check(assign(text));
        return *this;
    }

private:
    char16_t m_storage[N + 1];
};

} // namespace qv

#endif
