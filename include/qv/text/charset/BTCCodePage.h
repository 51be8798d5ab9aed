#ifndef QV_TEXT_CHARSET_BTCCODEPAGE_H
#define QV_TEXT_CHARSET_BTCCODEPAGE_H

#include <qv/text/charset/ByteToCharConverter.h>

#include <memory>

namespace qv {
namespace text {
namespace charset {

namespace detail {
class Iconv;
struct CodePageInfo;
} // namespace detail

// Decoder for a legacy code page, converted by the C library's iconv:
// 1250, 1251, 1253-1258, 737, 775, 850, 852, 855, 857, 858, 862, 866, 932
// and 20932 (EUC-JP). Any other number throws UnknownEncodingException.
//
// Bytes that start no character of the code page, and an incomplete
// character at the end of the input, are unmappable. With substitution off,
// a call that has already made progress stops just before such a byte and
// the next call throws, so the exception always leaves positions and state
// where the call found them.
class QV_EXPORT BTCCodePage : public ByteToCharConverter {
public:
    explicit BTCCodePage(uint32_t codePage);
    ~BTCCodePage() override;
    BTCCodePage(const BTCCodePage&) = delete;
    BTCCodePage& operator=(const BTCCodePage&) = delete;

    using ByteToCharConverter::convert;
    using ByteToCharConverter::flush;
    int32_t convert(const signed char* in, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(char16_t* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

    uint32_t getCodePage() const;

private:
    struct State {
        uint8_t pendingCount; // bytes of a character split across calls
        uint8_t pending[8];
    };
    const detail::CodePageInfo* m_info;
    std::unique_ptr<detail::Iconv> m_iconv;
    State m_state;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
