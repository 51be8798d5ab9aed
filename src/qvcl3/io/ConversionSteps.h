#ifndef QVCL3_IO_CONVERSIONSTEPS_H
#define QVCL3_IO_CONVERSIONSTEPS_H

#include <qv/lang/String.h>
#include <qv/text/charset/CharsetExceptions.h>

#include <cstdint>

namespace qv {
namespace io {
namespace detail {

// The converter's exception again, of the same class, its message followed
// by " at <unit> offset <n>".
template <class E>
[[noreturn]] void rethrowAt(const E& fault, const char16_t* unit, int64_t offset)
{
    String message = fault.getDescription();
    message.append(u" at ").append(unit).append(u" offset ").append(String::valueOf(static_cast<long long>(offset)));
    throw E(message);
}

// Runs a converter over in[*inPos, inEnd) into out[*outPos, outEnd) like its
// convert(), but locates a rejected element: the converters leave both
// positions where the call began when they throw, so the elements before the
// rejected one are converted again one at a time. *inPos then stops exactly
// at the rejected element, whose offset (base + position) the rethrown
// exception names. With deliverFirst, a call that converted something before
// the rejected element returns normally instead; the next call meets the
// element first and throws.
template <class Converter, class In, class Out>
void convertLocating(Converter& converter, const In* in, int32_t* inPos, int32_t inEnd, Out* out, int32_t* outPos,
                     int32_t outEnd, int64_t base, const char16_t* unit, bool deliverFirst)
{
    using text::charset::InvalidCharacterException;
    using text::charset::UnmappableCharacterException;
    const int32_t startOut = *outPos;
    try {
        int32_t startIn = *inPos;
        converter.convert(in, inPos, inEnd, out, outPos, outEnd);
        // A converter that has converted something may stop just before an
        // element it rejects and throw on the next call.
        if (*inPos == startIn && *outPos == startOut && startIn < inEnd && startOut < outEnd)
            converter.convert(in, inPos, inEnd, out, outPos, outEnd);
        return;
    } catch (const InvalidCharacterException&) {
    } catch (const UnmappableCharacterException&) {
    }
    int32_t p = *inPos;
    try {
        while (p < inEnd && *outPos < outEnd) {
            int32_t q = p;
            converter.convert(in, &q, p + 1, out, outPos, outEnd);
            if (q == p)
                converter.convert(in, &q, p + 1, out, outPos, outEnd);
            if (q == p)
                break;
            p = q;
        }
    } catch (const InvalidCharacterException& fault) {
        *inPos = p;
        if (deliverFirst && *outPos > startOut)
            return;
        rethrowAt(fault, unit, base + p);
    } catch (const UnmappableCharacterException& fault) {
        *inPos = p;
        if (deliverFirst && *outPos > startOut)
            return;
        rethrowAt(fault, unit, base + p);
    }
    *inPos = p;
}

// Runs flush() of a converter, naming offset in what it throws.
template <class Converter, class Out>
int32_t flushLocating(Converter& converter, Out* out, int32_t* outPos, int32_t outEnd, int64_t offset,
                      const char16_t* unit)
{
    try {
        return converter.flush(out, outPos, outEnd);
    } catch (const text::charset::InvalidCharacterException& fault) {
        rethrowAt(fault, unit, offset);
    } catch (const text::charset::UnmappableCharacterException& fault) {
        rethrowAt(fault, unit, offset);
    }
}

} // namespace detail
} // namespace io
} // namespace qv

#endif
