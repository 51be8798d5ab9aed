#ifndef QVCL3_TEXT_CHARSET_CONVERTERSUPPORT_H
#define QVCL3_TEXT_CHARSET_CONVERTERSUPPORT_H

// Shared by the converter implementations; not installed.

#include <cstdint>

#include "UtfArithmetic.h"

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
void checkConvertArguments(const void* in, const int32_t* inPos, int32_t inEnd, const void* out, const int32_t* outPos,
                           int32_t outEnd);
void checkFlushArguments(const void* out, const int32_t* outPos, int32_t outEnd);

using qvutf::combineSurrogates;
using qvutf::encodeUtf8;
using qvutf::highSurrogateOf;
using qvutf::isHighSurrogate;
using qvutf::isLowSurrogate;
using qvutf::isSurrogate;
using qvutf::lowSurrogateOf;

// What one convert() call works on: a copy of the converter's state and the
// two positions. Only a call that returns commits them (runConversion), so
// a call that throws leaves the converter and the caller's positions as they
// were when it began; the elements it stored before throwing stay in out.
template <typename State>
struct Conversion {
    State state;
    int32_t ip;
    int32_t op;
};

// The state of a converter that keeps none between calls.
struct Stateless {};

// The one skeleton of every convert(): argument checks, work on a copy,
// commit on return. step(Conversion<State>&) does the converting.
template <typename State, typename In, typename Out, typename Step>
int32_t runConversion(State& state, const In* in, int32_t* inPos, int32_t inEnd, Out* out, int32_t* outPos,
                      int32_t outEnd, Step step)
{
    checkConvertArguments(in, inPos, inEnd, out, outPos, outEnd);
    Conversion<State> c{state, *inPos, *outPos};
    step(c);
    const int32_t written = c.op - *outPos;
    state = c.state;
    *inPos = c.ip;
    *outPos = c.op;
    return written;
}

// Writes elements[0, n) when all of them fit and moves op past them; false,
// with nothing written, when they do not: a character is never split over
// two calls.
template <typename Element>
bool putWhole(const Element* elements, int n, Element* out, int32_t& op, int32_t outEnd)
{
    if (n > outEnd - op) {
        return false;
    }
    for (int i = 0; i < n; ++i) {
        out[op + i] = elements[i];
    }
    op += n;
    return true;
}

// A decoded code point as one or two UTF-16 units; false, with nothing
// written, when they do not fit.
inline bool putCodePoint(uint32_t cp, char16_t* out, int32_t& op, int32_t outEnd)
{
    if (cp < 0x10000) {
        if (op == outEnd) {
            return false;
        }
        out[op++] = static_cast<char16_t>(cp);
        return true;
    }
    if (outEnd - op < 2) {
        return false;
    }
    out[op] = highSurrogateOf(cp);
    out[op + 1] = lowSurrogateOf(cp);
    op += 2;
    return true;
}

[[noreturn]] void throwLoneHighSurrogate();
[[noreturn]] void throwLoneLowSurrogate();
[[noreturn]] void throwHighSurrogateAtEnd();

} // namespace detail
} // namespace charset
} // namespace text
} // namespace qv

#endif
