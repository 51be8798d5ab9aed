#include "ConverterSupport.h"

#include <qv/core/Exception.h>
#include <qv/lang/String.h>
#include <qv/text/charset/CharsetExceptions.h>

#include <string>

namespace qv {
namespace text {
namespace charset {
namespace detail {

namespace {

// The messages are ASCII.
String messageText(const char* message)
{
    std::u16string text;
    for (const char* c = message; *c != '\0'; ++c) {
        text += static_cast<char16_t>(static_cast<unsigned char>(*c));
    }
    return String(text);
}

} // namespace

void throwInvalidCharacter(const char* message)
{
    throw InvalidCharacterException(messageText(message));
}

void throwUnmappableCharacter(const char* message)
{
    throw UnmappableCharacterException(messageText(message));
}

void throwUnknownEncoding(const char* message)
{
    throw UnknownEncodingException(messageText(message));
}

void throwRangeError(const char* message)
{
    throw RangeErrorException(messageText(message));
}

void throwLoneHighSurrogate()
{
    throwInvalidCharacter("Invalid UTF-16: high surrogate not followed by a low surrogate");
}

void throwLoneLowSurrogate()
{
    throwInvalidCharacter("Invalid UTF-16: low surrogate without a high surrogate");
}

void throwHighSurrogateAtEnd()
{
    throwInvalidCharacter("Invalid UTF-16: high surrogate at end of input");
}

void checkConvertArguments(const void* in, const int32_t* inPos, int32_t inEnd, const void* out, const int32_t* outPos,
                           int32_t outEnd)
{
    if (inPos == nullptr || outPos == nullptr) {
        throwRangeError("convert: null position pointer");
    }
    if (*inPos < 0 || *inPos > inEnd) {
        throwRangeError("convert: input position outside [0, inEnd]");
    }
    if (*outPos < 0 || *outPos > outEnd) {
        throwRangeError("convert: output position outside [0, outEnd]");
    }
    if ((in == nullptr && *inPos < inEnd) || (out == nullptr && *outPos < outEnd)) {
        throwRangeError("convert: null buffer behind a non-empty range");
    }
}

void checkFlushArguments(const void* out, const int32_t* outPos, int32_t outEnd)
{
    if (outPos == nullptr) {
        throwRangeError("flush: null position pointer");
    }
    if (*outPos < 0 || *outPos > outEnd) {
        throwRangeError("flush: output position outside [0, outEnd]");
    }
    if (out == nullptr && *outPos < outEnd) {
        throwRangeError("flush: null buffer behind a non-empty range");
    }
}

} // namespace detail
} // namespace charset
} // namespace text
} // namespace qv
