#ifndef QV_TEXT_CHARSET_QVCOM_CONVERTERCOMPONENT_H
#define QV_TEXT_CHARSET_QVCOM_CONVERTERCOMPONENT_H

#include <qv/core/IQVUnknown.h>

#include <cstdint>

namespace qv {
namespace text {
namespace charset {
namespace qvcom {

// The interfaces an external converter implements. A module registers a
// component class under the ProgID "Velmara.CharCodec." + encoding name;
// ByteToCharConverter::getConverter asks a new object for
// IQVByteToCharConverter (and CharToByteConverter::getConverter for
// IQVCharToByteConverter) when the built-in registry lacks the name, and
// wraps it in BTCCom / CTBCom. One class usually implements both.
//
// Convert and Flush follow the converters' contract: read in[*inPos, inEnd),
// write out[*outPos, outEnd), stop when the input is used up or the output is
// full, and leave both positions at the first element not consumed or not
// written. Results:
//   0           success (also when the output filled up first);
//   0x8BB34101  malformed input;
//   0x8BB34102  unmappable input with substitution off;
//   0x80070057  bad positions or a null pointer;
//   other       any failure; the adapter throws ResultException with it.
// On a failure *inPos and *outPos hold what they held when the call began.
// With substitution on, a substitution of exactly one element replaces what
// cannot be mapped; any other count drops it.
class IQVByteToCharConverter : public IQVUnknown {
public:
    static constexpr GUID iid = {0x00A10C37, 0x015B, 0x4E49, {0x93, 0xFF, 0x4B, 0xB0, 0xAF, 0x4E, 0x53, 0x5E}};

    virtual Result Convert(const signed char* in, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                           int32_t outEnd) = 0;
    virtual Result Flush(char16_t* out, int32_t* outPos, int32_t outEnd) = 0;
    virtual Result Reset() = 0;
    // The canonical name, owned by the object and valid while it lives.
    virtual Result GetEncodingName(const char16_t** name) const = 0;
    virtual Result GetMaxBytesPerChar(int32_t* count) const = 0;
    virtual Result GetMaxCharsPerByte(int32_t* count) const = 0;
    // mode: 0 off, 1 on; chars: count code units (at most 3).
    virtual Result SetSubstitution(int32_t mode, const char16_t* chars, int32_t count) = 0;

protected:
    ~IQVByteToCharConverter() = default;
};

class IQVCharToByteConverter : public IQVUnknown {
public:
    static constexpr GUID iid = {0xE73C8A0C, 0xA735, 0x4530, {0x9C, 0x88, 0x07, 0xB3, 0x47, 0x3E, 0x76, 0xD3}};

    virtual Result Convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                           int32_t outEnd) = 0;
    virtual Result Flush(signed char* out, int32_t* outPos, int32_t outEnd) = 0;
    virtual Result Reset() = 0;
    virtual Result GetEncodingName(const char16_t** name) const = 0;
    virtual Result GetMaxBytesPerChar(int32_t* count) const = 0;
    virtual Result GetMaxCharsPerByte(int32_t* count) const = 0;
    // mode: 0 off, 1 on; bytes: count bytes (at most 7).
    virtual Result SetSubstitution(int32_t mode, const signed char* bytes, int32_t count) = 0;

protected:
    ~IQVCharToByteConverter() = default;
};

} // namespace qvcom
} // namespace charset
} // namespace text
} // namespace qv

#endif
