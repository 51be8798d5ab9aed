// The table-driven single-byte code pages under every substitution setting:
// splits change nothing, and without substitution what decodes re-encodes
// to the same bytes.

#include "FuzzSupport.h"

#include <memory>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    fuzz::Reader reader(data, size);
    const uint8_t options = reader.byte();
    std::unique_ptr<fuzz::ByteToCharConverter> decoder;
    std::unique_ptr<fuzz::CharToByteConverter> encoder;
    switch (options % 4) {
    case 0:
        decoder.reset(new fuzz::BTCASCII());
        encoder.reset(new fuzz::CTBASCII());
        break;
    case 1:
        decoder.reset(new fuzz::BTCISO8859_1());
        encoder.reset(new fuzz::CTBISO8859_1());
        break;
    case 2:
        decoder.reset(new fuzz::BTCCP437());
        encoder.reset(new fuzz::CTBCP437());
        break;
    default:
        decoder.reset(new fuzz::BTCCP1252());
        encoder.reset(new fuzz::CTBCP1252());
        break;
    }
    const bool substitute = (options & 0x04) != 0;
    const int count = (options >> 3) % 4;
    decoder->setSubstitutionMode(substitute);
    encoder->setSubstitutionMode(substitute);
    const char16_t chars[3] = {u'?', u'!', u'?'};
    const signed char bytes[3] = {'?', '!', '?'};
    decoder->setSubstitutionChars(chars, count);
    encoder->setSubstitutionBytes(bytes, count);

    fuzz::Result<char16_t> decoded;
    fuzz::Result<signed char> encoded;
    fuzz::checkSplits(*decoder, *encoder, reader, decoded, encoded);
    if (!substitute && decoded.ok) {
        const auto again = fuzz::encode(*encoder, decoded.output);
        fuzz::check(again.ok && fuzz::bytesOf(again) == fuzz::asBytes(reader), "bytes do not round-trip");
    }
    if (substitute) {
        fuzz::check(decoded.ok, "a decoder with substitution rejected input");
    }
    return 0;
}
