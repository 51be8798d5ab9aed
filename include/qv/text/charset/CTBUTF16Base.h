#ifndef QV_TEXT_CHARSET_CTBUTF16BASE_H
#define QV_TEXT_CHARSET_CTBUTF16BASE_H

#include <qv/text/charset/CharToByteConverter.h>

namespace qv {
namespace text {
namespace charset {

// The UTF-16 encoders: CTBUTF16LE, CTBUTF16BE and the byte-order-neutral
// CTBUTF16, which writes big-endian after a byte order mark (FE FF) placed
// before the first character. A lone surrogate throws
// InvalidCharacterException. The family is implemented in CTBUTF16Base.cpp.
class QV_EXPORT CTBUTF16Base : public CharToByteConverter
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
    CTBUTF16Base(bool bigEndian, bool byteOrderMark);

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
