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
    throw ResultException(results::INVALIDARG, u"AlphaNum alphabet must have exactly 32 characters");
}

} // namespace

void loadAlphabet(const char16_t* alphabet, char16_t (&characters)[32])
{
    if (!alphabet)
        alphabet = AlphaNumOutputStream::DEFAULT_ALPHABET;
    int length = 0;
    for (; alphabet[length] != 0; ++length) {
        if (length == 32)
            refuse();
        characters[length] = alphabet[length];
    }
    if (length != 32)
        refuse();
}

} // namespace detail
} // namespace io
} // namespace qv
