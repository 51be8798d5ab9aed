#include "io/AlphaNumAlphabet.h"

#include <qv/core/Exception.h>
#include <qv/io/AlphaNumOutputStream.h>

namespace qv {
namespace io {

const char16_t AlphaNumOutputStream::DEFAULT_ALPHABET[33] = u"ABCDEFGHJKLMNPQRSTUVWXYZ23456789";

namespace detail {

namespace {

[[noreturn]] void refuse()
{
    throw ResultException(results::INVALIDARG,
                          u"AlphaNum alphabet must be 32 distinct characters from U+0001 to U+00FF");
}

} // namespace

void loadAlphabet(const char16_t* alphabet, signed char (&characters)[32])
{
    if (!alphabet)
        alphabet = AlphaNumOutputStream::DEFAULT_ALPHABET;
    bool seen[256] = {};
    int length = 0;
    for (; alphabet[length] != 0; ++length) {
        const char16_t c = alphabet[length];
        if (length == 32 || c > 0xFF || seen[c])
            refuse();
        seen[c] = true;
        characters[length] = static_cast<signed char>(c);
    }
    if (length != 32)
        refuse();
}

} // namespace detail
} // namespace io
} // namespace qv
