// UTF-8 both ways: splits change nothing, and strict UTF-8 round-trips
// byte for byte.

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Reader reader(data, size);
    fuzz::BTCUTF8 decoder;
    fuzz::CTBUTF8 encoder;
    fuzz::Result<char16_t> decoded;
    fuzz::Result<signed char> encoded;
    fuzz::checkSplits(decoder, encoder, reader, decoded, encoded);
    if (decoded.ok) {
        const auto again = fuzz::encode(encoder, decoded.output);
        fuzz::check(again.ok && fuzz::bytesOf(again) == fuzz::asBytes(reader), "UTF-8 does not round-trip");
    }
    if (encoded.ok) {
        const auto back = fuzz::decode(decoder, fuzz::bytesOf(encoded));
        fuzz::check(back.ok && back.output == fuzz::asUnits(reader), "UTF-16 does not round-trip through UTF-8");
    }
    return 0;
}
