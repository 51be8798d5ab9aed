#ifndef QV_TEXT_CHARSET_BTCAMP7_H
#define QV_TEXT_CHARSET_BTCAMP7_H

#include <qv/text/charset/ByteToCharConverter.h>

namespace qv {
namespace text {
namespace charset {

// Decoder for AMP-7, the modified UTF-7 of IMAP mailbox names (RFC 3501,
// 5.1.3): printable US-ASCII except "&" stands for itself, "&-" is "&", and
// anything else is UTF-16 in modified base64 ("," instead of "/") between
// "&" and "-". Non-canonical or broken forms throw InvalidCharacterException:
// raw bytes outside 0x20-0x7E, characters outside the base64 alphabet inside
// a run, leftover bits that are non-zero or make up a whole base64 digit,
// printable US-ASCII encoded in base64, lone surrogates and a run still open
// at the end of the input.
class QV_EXPORT BTCAMP7 : public ByteToCharConverter {
public:
    BTCAMP7();

    using ByteToCharConverter::convert;
    using ByteToCharConverter::flush;
    int32_t convert(const signed char* in, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(char16_t* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

private:
    struct State {
        bool inBase64;    // between "&" and "-"
        bool justShifted; // "&" seen and nothing after it yet
        uint8_t bitCount; // bits of a unit not yet complete
        uint32_t bits;
        char16_t high; // high surrogate waiting for its low half
    };
    State m_state;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
