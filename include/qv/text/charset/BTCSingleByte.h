#ifndef QV_TEXT_CHARSET_BTCSINGLEBYTE_H
#define QV_TEXT_CHARSET_BTCSINGLEBYTE_H

#include <qv/text/charset/ByteToCharConverter.h>

namespace qv {
namespace text {
namespace charset {

namespace detail {
struct SingleByteCode;
}

// The table-driven single-byte decoders: BTCASCII, BTCISO8859_1, BTCCP437
// and BTCCP1252. A byte the code page leaves undefined is unmappable. The
// family is implemented in BTCSingleByte.cpp.
class QV_EXPORT BTCSingleByte : public ByteToCharConverter {
public:
    using ByteToCharConverter::convert;
    using ByteToCharConverter::flush;
    int32_t convert(const signed char* in, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(char16_t* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

protected:
    explicit BTCSingleByte(const detail::SingleByteCode& code);

private:
    const detail::SingleByteCode* m_code;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
