// UTF-16 and UTF-32 in both byte orders and byte-order-neutral: splits
// change nothing, and what decodes re-encodes to the same text.

#include "FuzzSupport.h"

#include <memory>

namespace {

template <typename D, typename E>
void exercise(fuzz::Reader& reader, bool exact)
{
    D decoder;
    E encoder;
    fuzz::Result<char16_t> decoded;
    fuzz::Result<signed char> encoded;
    fuzz::checkSplits(decoder, encoder, reader, decoded, encoded);
    if (decoded.ok) {
        const auto again = fuzz::encode(encoder, decoded.output);
        fuzz::check(again.ok, "decoded text does not encode");
        if (exact) {
            fuzz::check(fuzz::bytesOf(again) == fuzz::asBytes(reader), "bytes do not round-trip");
        }
        const auto back = fuzz::decode(decoder, fuzz::bytesOf(again));
        fuzz::check(back.ok && back.output == decoded.output, "text does not round-trip");
    }
    if (encoded.ok) {
        const auto back = fuzz::decode(decoder, fuzz::bytesOf(encoded));
        fuzz::check(back.ok && back.output == fuzz::asUnits(reader), "UTF-16 input does not round-trip");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Reader reader(data, size);
    switch (reader.byte() % 6) {
    case 0: exercise<fuzz::BTCUTF16LE, fuzz::CTBUTF16LE>(reader, true); break;
    case 1: exercise<fuzz::BTCUTF16BE, fuzz::CTBUTF16BE>(reader, true); break;
    case 2: exercise<fuzz::BTCUTF16, fuzz::CTBUTF16>(reader, false); break;
    case 3: exercise<fuzz::BTCUTF32LE, fuzz::CTBUTF32LE>(reader, true); break;
    case 4: exercise<fuzz::BTCUTF32BE, fuzz::CTBUTF32BE>(reader, true); break;
    default: exercise<fuzz::BTCUTF32, fuzz::CTBUTF32>(reader, false); break;
    }
    return 0;
}
