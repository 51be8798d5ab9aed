#ifndef QV_TEXT_CHARSET_CTBUTF32BASE_H
#define QV_TEXT_CHARSET_CTBUTF32BASE_H

#include <qv/text/charset/CharToByteConverter.h>

namespace qv {
namespace text {
namespace charset {

// The UTF-32 encoders: CTBUTF32LE, CTBUTF32BE and the byte-order-neutral
// CTBUTF32, which writes big-endian after a byte order mark (00 00 FE FF)
// placed before the first character. A surrogate pair becomes one value; a
// lone surrogate throws InvalidCharacterException. The family is implemented
// in CTBUTF32Base.cpp.
class QV_EXPORT CTBUTF32Base : public CharToByteConverter
{
public:
    using CharToByteConverter::convert;
    int32_t convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(signed char* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    int getMaxBytesPerChar() const override;
    int getMaxCharsPerByte() const override;

protected:
    CTBUTF32Base(bool bigEndian, bool byteOrderMark);

private:
    struct State
    {
        bool markPending;   // the byte order mark is still to be written
        char16_t high;      // high surrogate waiting for its low half
    };
    bool m_bigEndian;
    bool m_byteOrderMark;
    State m_state;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
