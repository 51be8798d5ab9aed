#ifndef QV_TEXT_CHARSET_CTBAMP7_H
#define QV_TEXT_CHARSET_CTBAMP7_H

#include <qv/text/charset/CharToByteConverter.h>

namespace qv {
namespace text {
namespace charset {

// Encoder for AMP-7 (see BTCAMP7). A base64 run stays open across calls and
// is closed by the next printable character or by flush(), so the output is
// complete only after flush(). Lone surrogates throw
// InvalidCharacterException.
class QV_EXPORT CTBAMP7 : public CharToByteConverter {
public:
    CTBAMP7();

    using CharToByteConverter::convert;
    int32_t convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(signed char* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

private:
    struct State {
        bool inBase64;
        uint8_t bitCount; // bits not yet written as a base64 digit (fewer than 6)
        uint32_t bits;
        char16_t high; // high surrogate waiting for its low half
    };
    State m_state;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
