#ifndef QVCL3_TEXT_CHARSET_CONVERTERSUPPORT_H
#define QVCL3_TEXT_CHARSET_CONVERTERSUPPORT_H

// Shared by the converter implementations; not installed.

#include <cstdint>

namespace qv {
namespace text {
namespace charset {
namespace detail {

// The converters report errors only through these, so that the exception
// classes they throw are chosen in one place.
[[noreturn]] void throwInvalidCharacter(const char* message);
[[noreturn]] void throwUnmappableCharacter(const char* message);
[[noreturn]] void throwUnknownEncoding(const char* message);
[[noreturn]] void throwRangeError(const char* message);

// Rejects null position pointers, positions outside [0, end] and a null
// buffer behind a non-empty range before any element is touched.
void checkConvertArguments(const void* in, const int32_t* inPos, int32_t inEnd, const void* out,
                           const int32_t* outPos, int32_t outEnd);
void checkFlushArguments(const void* out, const int32_t* outPos, int32_t outEnd);

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

// Elements (bytes or units) of a character that did not fit into the output
// wait in a small array of the converter's state and are written first by the
// next call.
template <typename State, typename Element>
int32_t drainHeld(State& s, Element* out, int32_t op, int32_t outEnd)
{
    int i = 0;
    while (i < s.heldCount && op < outEnd) {
        out[op++] = s.held[i++];
    }
    for (int j = i; j < s.heldCount; ++j) {
        s.held[j - i] = s.held[j];
    }
    s.heldCount = static_cast<uint8_t>(s.heldCount - i);
    return op;
}

// Writes what fits of elements[0, n) and appends the rest to the held ones;
// the caller guarantees the held array has room for it.
template <typename State, typename Element>
int32_t putHeld(const Element* elements, int n, State& s, Element* out, int32_t op, int32_t outEnd)
{
    int i = 0;
    while (i < n && op < outEnd) {
        out[op++] = elements[i++];
    }
    for (; i < n; ++i) {
        s.held[s.heldCount++] = elements[i];
    }
    return op;
}

// A decoder that split a supplementary character over the end of the output
// keeps its low surrogate and writes it before anything else. False when
// there is no room for it, in which case the call has nothing to do.
template <typename State>
inline bool drainHeldChar(State& s, char16_t* out, int32_t& op, int32_t outEnd)
{
    if (s.held != 0) {
        if (op == outEnd) {
            return false;
        }
        out[op++] = s.held;
        s.held = 0;
    }
    return true;
}

// The part of a decoder's flush that follows its own end-of-input checks.
template <typename State>
inline int32_t flushHeldChar(State& s, char16_t* out, int32_t* outPos, int32_t outEnd)
{
    if (s.held != 0 && *outPos < outEnd) {
        out[(*outPos)++] = s.held;
        s.held = 0;
        return 1;
    }
    return 0;
}

[[noreturn]] void throwLoneHighSurrogate();
[[noreturn]] void throwLoneLowSurrogate();
[[noreturn]] void throwHighSurrogateAtEnd();

} // namespace detail
} // namespace charset
} // namespace text
} // namespace qv

#endif
