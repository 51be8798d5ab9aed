#include <qv/text/charset/CharToByteConverter.h>

#include "ConverterSupport.h"

namespace qv {
namespace text {
namespace charset {

CharToByteConverter::CharToByteConverter()
    : substitutionMode(true), substitutionBytes{0x3F, 0, 0, 0, 0, 0, 0}, substitutionCount(1)
{}

CharToByteConverter::CharToByteConverter(const CharToByteConverter& other) = default;

CharToByteConverter& CharToByteConverter::operator=(const CharToByteConverter& other) = default;

CharToByteConverter::~CharToByteConverter() = default;

bool CharToByteConverter::getSubstitutionMode()
{
    return substitutionMode;
}

void CharToByteConverter::setSubstitutionMode(bool on)
{
    substitutionMode = on;
}

int CharToByteConverter::getSubstitutionBytes(signed char* dest, int max)
{
    if (dest == nullptr) {
        return substitutionCount;
    }
    const int n = max < 0 ? 0 : (max < substitutionCount ? max : substitutionCount);
    for (int i = 0; i < n; ++i) {
        dest[i] = substitutionBytes[i];
    }
    return n;
}

void CharToByteConverter::setSubstitutionBytes(const signed char* bytes, int count)
{
    if (count < 0 || count > MAX_SUBSTITUTION_BYTES) {
        detail::throwRangeError("setSubstitutionBytes: count must be 0 to 7");
    }
    if (bytes == nullptr && count > 0) {
        detail::throwRangeError("setSubstitutionBytes: null bytes");
    }
    for (int i = 0; i < count; ++i) {
        substitutionBytes[i] = bytes[i];
    }
    substitutionCount = count;
}

const char16_t* CharToByteConverter::getEncodingName() const
{
    return const_cast<CharToByteConverter*>(this)->getEncodingName();
}

int CharToByteConverter::getMaxBytesPerChar() const
{
    return const_cast<CharToByteConverter*>(this)->getMaxBytesPerChar();
}

int CharToByteConverter::getMaxCharsPerByte() const
{
    return const_cast<CharToByteConverter*>(this)->getMaxCharsPerByte();
}

bool CharToByteConverter::getSubstitutionMode() const
{
    return const_cast<CharToByteConverter*>(this)->getSubstitutionMode();
}

int CharToByteConverter::getSubstitutionBytes(signed char* dest, int max) const
{
    return const_cast<CharToByteConverter*>(this)->getSubstitutionBytes(dest, max);
}

} // namespace charset
} // namespace text
} // namespace qv
