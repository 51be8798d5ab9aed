#ifndef QV_TEXT_CHARSET_CTBCODEPAGE_H
#define QV_TEXT_CHARSET_CTBCODEPAGE_H

#include <qv/text/charset/CharToByteConverter.h>

#include <memory>

namespace qv {
namespace text {
namespace charset {

namespace detail {
class Iconv;
struct CodePageInfo;
} // namespace detail

// Encoder for a legacy code page, converted by the C library's iconv; the
// code pages of BTCCodePage. A character the code page lacks (a surrogate
// pair counts as one) is unmappable, a lone surrogate malformed. A call that
// has already made progress stops just before either and the next call
// throws, so the exception always leaves positions and state where the
// call found them.
class QV_EXPORT CTBCodePage : public CharToByteConverter {
public:
    explicit CTBCodePage(uint32_t codePage);
    ~CTBCodePage() override;
    CTBCodePage(const CTBCodePage&) = delete;
    CTBCodePage& operator=(const CTBCodePage&) = delete;

    using CharToByteConverter::convert;
    int32_t convert(const char16_t* in, int32_t* inPos, int32_t inEnd, signed char* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(signed char* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    const char16_t* getEncodingName() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

    uint32_t getCodePage() const;

private:
    struct State {
        char16_t high; // high surrogate waiting for its low half
    };
    const detail::CodePageInfo* m_info;
    std::unique_ptr<detail::Iconv> m_iconv;
    State m_state;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
