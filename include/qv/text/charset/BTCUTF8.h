#ifndef QV_TEXT_CHARSET_BTCUTF8_H
#define QV_TEXT_CHARSET_BTCUTF8_H

#include <qv/text/charset/ByteToCharConverter.h>

namespace qv {
namespace text {
namespace charset {

// Strict UTF-8 decoder: overlong forms, encoded surrogates, values above
// U+10FFFF, stray continuation bytes and truncated sequences all throw
// InvalidCharacterException. A byte order mark is ordinary text (U+FEFF).
class QV_EXPORT BTCUTF8 : public ByteToCharConverter {
public:
    BTCUTF8();

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
        uint32_t bits; // value bits of a sequence split across calls
        uint8_t need;  // its continuation bytes still to come
        uint8_t low;   // allowed range of the next continuation byte
        uint8_t high;
    };
    State m_state;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
