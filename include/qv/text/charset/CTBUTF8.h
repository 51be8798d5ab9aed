#ifndef QV_TEXT_CHARSET_CTBUTF8_H
#define QV_TEXT_CHARSET_CTBUTF8_H

#include <qv/text/charset/CharToByteConverter.h>

namespace qv {
namespace text {
namespace charset {

// UTF-8 encoder: a surrogate pair becomes one four-byte sequence, a lone
// surrogate throws InvalidCharacterException. No byte order mark is written.
class QV_EXPORT CTBUTF8 : public CharToByteConverter {
public:
    CTBUTF8();

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
        char16_t high; // high surrogate waiting for its low half, 0 when none
    };
    State m_state;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
