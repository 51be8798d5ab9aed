#ifndef QVCL3_SHARED_UTFARITHMETIC_H
#define QVCL3_SHARED_UTFARITHMETIC_H

// The UTF-16 surrogate and UTF-8 byte arithmetic, written once for both
// libraries (the platform layer and the class library include it; it is
// not installed). Everything is inline and touches no state.

#include <cstdint>

namespace qvutf {

// Exact for any 32-bit value, not only for code units: a UTF-32 value such
// as 0xCD8D9 is not a surrogate although its low sixteen bits look like one.
inline bool isHighSurrogate(uint32_t c)
{
    return (c & 0xFFFFFC00u) == 0xD800u;
}
inline bool isLowSurrogate(uint32_t c)
{
    return (c & 0xFFFFFC00u) == 0xDC00u;
}
inline bool isSurrogate(uint32_t c)
{
    return (c & 0xFFFFF800u) == 0xD800u;
}
// A code point that UTF-8, UTF-16 and UTF-32 can all carry.
inline bool isScalarValue(uint32_t c)
{
    return c <= 0x10FFFFu && !isSurrogate(c);
}
inline uint32_t combineSurrogates(uint32_t high, uint32_t low)
{
    return 0x10000u + ((high - 0xD800u) << 10) + (low - 0xDC00u);
}
inline char16_t highSurrogateOf(uint32_t cp)
{
    return static_cast<char16_t>(0xD7C0u + (cp >> 10));
}
inline char16_t lowSurrogateOf(uint32_t cp)
{
    return static_cast<char16_t>(0xDC00u + (cp & 0x3FFu));
}

// Bytes of the UTF-8 form of a code point (at most U+10FFFF).
inline int utf8Length(uint32_t cp)
{
    return cp < 0x80 ? 1 : cp < 0x800 ? 2 : cp < 0x10000 ? 3 : 4;
}

// Writes the UTF-8 form of a code point (at most U+10FFFF) and returns its
// length. Byte is any one-byte type.
template <typename Byte>
int encodeUtf8(uint32_t cp, Byte* out)
{
    if (cp < 0x80) {
        out[0] = static_cast<Byte>(cp);
        return 1;
    }
    if (cp < 0x800) {
        out[0] = static_cast<Byte>(0xC0 | (cp >> 6));
        out[1] = static_cast<Byte>(0x80 | (cp & 0x3F));
        return 2;
    }
    if (cp < 0x10000) {
        out[0] = static_cast<Byte>(0xE0 | (cp >> 12));
        out[1] = static_cast<Byte>(0x80 | ((cp >> 6) & 0x3F));
        out[2] = static_cast<Byte>(0x80 | (cp & 0x3F));
        return 3;
    }
    out[0] = static_cast<Byte>(0xF0 | (cp >> 18));
    out[1] = static_cast<Byte>(0x80 | ((cp >> 12) & 0x3F));
    out[2] = static_cast<Byte>(0x80 | ((cp >> 6) & 0x3F));
    out[3] = static_cast<Byte>(0x80 | (cp & 0x3F));
    return 4;
}

} // namespace qvutf

#endif
