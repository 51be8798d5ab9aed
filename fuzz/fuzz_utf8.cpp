// UTF-8 both ways: splits change nothing, strict UTF-8 round-trips byte
// for byte, and every instruction-set level the processor has converts
// (or rejects) the input exactly as the scalar level does.

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using qv::text::charset::getUtf8SimdLevel;
    using qv::text::charset::setUtf8SimdLevel;
    using qv::text::charset::SimdLevel;
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
    const SimdLevel initial = getUtf8SimdLevel();
    setUtf8SimdLevel(SimdLevel::Scalar);
    const auto decodedScalar = fuzz::decode(decoder, fuzz::asBytes(reader));
    const auto encodedScalar = fuzz::encode(encoder, fuzz::asUnits(reader));
    for (SimdLevel level : {SimdLevel::Sse2, SimdLevel::Avx2, SimdLevel::Avx512}) {
        if (setUtf8SimdLevel(level) == level) {
            fuzz::check(fuzz::decode(decoder, fuzz::asBytes(reader)) == decodedScalar, "decoding differs by level");
            fuzz::check(fuzz::encode(encoder, fuzz::asUnits(reader)) == encodedScalar, "encoding differs by level");
        }
    }
    setUtf8SimdLevel(initial);
    return 0;
}
