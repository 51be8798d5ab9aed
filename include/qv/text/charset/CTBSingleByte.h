#ifndef QV_TEXT_CHARSET_CTBSINGLEBYTE_H
#define QV_TEXT_CHARSET_CTBSINGLEBYTE_H

#include <qv/text/charset/CharToByteConverter.h>

namespace qv {
namespace text {
namespace charset {

namespace detail {
struct SingleByteCode;
}

// The table-driven single-byte encoders: CTBASCII, CTBISO8859_1, CTBCP437
// and CTBCP1252. A character outside the code page, including any surrogate
// pair, is one unmappable element; a lone surrogate is malformed. The family
// is implemented in CTBSingleByte.cpp.
class QV_EXPORT CTBSingleByte : public CharToByteConverter {
public:
    using CharToByteConverter::convert;
    int32_t convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(signed char* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

protected:
    explicit CTBSingleByte(const detail::SingleByteCode& code);

private:
    const detail::SingleByteCode* m_code;
    char16_t m_high; // high surrogate waiting for its low half
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
