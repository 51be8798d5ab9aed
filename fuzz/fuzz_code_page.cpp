// The iconv code pages: splits change nothing with or without
// substitution, and decoding with it never throws.

#include "FuzzSupport.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const uint32_t codePages[] = {1250, 1251, 1253, 1254, 1255, 1256, 1257, 1258, 737,  775,
                                         850,  852,  855,  857,  858,  862,  866,  932,  20932};
    fuzz::Reader reader(data, size);
    const uint8_t options = reader.byte();
    const uint32_t codePage = codePages[options % (sizeof codePages / sizeof codePages[0])];
    fuzz::BTCCodePage decoder(codePage);
    fuzz::CTBCodePage encoder(codePage);
    const bool substitute = (options & 0x80) == 0;
    decoder.setSubstitutionMode(substitute);
    encoder.setSubstitutionMode(substitute);
    fuzz::Result<char16_t> decoded;
    fuzz::Result<signed char> encoded;
    fuzz::checkSplits(decoder, encoder, reader, decoded, encoded);
    if (substitute) {
        fuzz::check(decoded.ok, "a decoder with substitution rejected input");
    }
    return 0;
}
