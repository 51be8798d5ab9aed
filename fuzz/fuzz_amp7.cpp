// AMP-7 both ways: splits change nothing, and decoded text re-encodes to
// something that decodes to it again.

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Reader reader(data, size);
    fuzz::BTCAMP7 decoder;
    fuzz::CTBAMP7 encoder;
    fuzz::Result<char16_t> decoded;
    fuzz::Result<signed char> encoded;
    fuzz::checkSplits(decoder, encoder, reader, decoded, encoded);
    if (decoded.ok) {
        const auto again = fuzz::encode(encoder, decoded.output);
        fuzz::check(again.ok, "decoded text does not encode");
        const auto back = fuzz::decode(decoder, fuzz::bytesOf(again));
        fuzz::check(back.ok && back.output == decoded.output, "text does not round-trip");
    }
    if (encoded.ok) {
        const auto back = fuzz::decode(decoder, fuzz::bytesOf(encoded));
        fuzz::check(back.ok && back.output == fuzz::asUnits(reader), "encoder output is not canonical AMP-7");
    }
    return 0;
}
