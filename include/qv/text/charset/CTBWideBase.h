#ifndef QV_TEXT_CHARSET_CTBWIDEBASE_H
#define QV_TEXT_CHARSET_CTBWIDEBASE_H

#include <qv/text/charset/CharToByteConverter.h>

namespace qv {
namespace text {
namespace charset {

// The one implementation of the UTF-16 (Width 2) and UTF-32 (Width 4)
// encoders, which differ only in the width of a unit: CTBUTF16Base and
// CTBUTF32Base derive from it. Either byte order, and an optional byte order
// mark written with the first character. Implemented in CTBWideBase.cpp.
template <int Width>
class CTBWideBase : public CharToByteConverter {
public:
    using CharToByteConverter::convert;
    int32_t convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(signed char* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

protected:
    CTBWideBase(bool bigEndian, bool byteOrderMark);

private:
    struct State {
        bool markPending; // the byte order mark is still to be written
        char16_t high;    // high surrogate waiting for its low half
    };
    bool m_bigEndian;
    bool m_byteOrderMark;
    State m_state;
};

extern template class QV_EXPORT CTBWideBase<2>;
extern template class QV_EXPORT CTBWideBase<4>;

} // namespace charset
} // namespace text
} // namespace qv

#endif
