#ifndef QV_TEXT_CHARSET_BTCUTF16BASE_H
#define QV_TEXT_CHARSET_BTCUTF16BASE_H

#include <qv/text/charset/ByteToCharConverter.h>

namespace qv {
namespace text {
namespace charset {

// The UTF-16 decoders: BTCUTF16LE, BTCUTF16BE and the byte-order-neutral
// BTCUTF16. A lone surrogate and an odd byte at the end of the input throw
// InvalidCharacterException. The family is implemented in BTCUTF16Base.cpp.
class QV_EXPORT BTCUTF16Base : public ByteToCharConverter {
public:
    using ByteToCharConverter::convert;
    using ByteToCharConverter::flush;
    int32_t convert(const signed char* in, int32_t* inPos, int32_t inEnd, char16_t* out, int32_t* outPos,
                    int32_t outEnd) override;
    int32_t flush(char16_t* out, int32_t* outPos, int32_t outEnd) override;
    void reset() override;
    int getMaxBytesPerChar() override;
    int getMaxCharsPerByte() override;

protected:
    // Detect: a leading byte order mark chooses the order and is dropped;
    // without one the input is big-endian.
    enum class ByteOrder : uint8_t { Detect, Big, Little };
    explicit BTCUTF16Base(ByteOrder order);

private:
    struct State {
        ByteOrder order;
        bool hasByte; // first byte of a unit split across calls
        uint8_t byte;
        char16_t high; // high surrogate waiting for its low half
    };
    ByteOrder m_initialOrder;
    State m_state;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
