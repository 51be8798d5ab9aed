#ifndef QV_TEXT_CHARSET_BTCUTF32BASE_H
#define QV_TEXT_CHARSET_BTCUTF32BASE_H

#include <qv/text/charset/ByteToCharConverter.h>

namespace qv {
namespace text {
namespace charset {

// The UTF-32 decoders: BTCUTF32LE, BTCUTF32BE and the byte-order-neutral
// BTCUTF32. Values above U+10FFFF, surrogate code points and a partial unit
// at the end of the input throw InvalidCharacterException. The family is
// implemented in BTCUTF32Base.cpp.
class QV_EXPORT BTCUTF32Base : public ByteToCharConverter {
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
    explicit BTCUTF32Base(ByteOrder order);

private:
    struct State {
        ByteOrder order;
        uint8_t byteCount; // bytes of a unit split across calls
        uint8_t bytes[4];
    };
    ByteOrder m_initialOrder;
    State m_state;
};

} // namespace charset
} // namespace text
} // namespace qv

#endif
