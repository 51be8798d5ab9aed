#include <qv/text/charset/ByteToCharConverter.h>

#include "ConverterSupport.h"

namespace qv {
namespace text {
namespace charset {

ByteToCharConverter::ByteToCharConverter()
    : substitutionMode(true), substitutionChars{u'\uFFFD', 0, 0}, substitutionCount(1)
{}

ByteToCharConverter::ByteToCharConverter(const ByteToCharConverter& other) = default;

ByteToCharConverter& ByteToCharConverter::operator=(const ByteToCharConverter& other) = default;

ByteToCharConverter::~ByteToCharConverter() = default;

bool ByteToCharConverter::getSubstitutionMode()
{
    return substitutionMode;
}

void ByteToCharConverter::setSubstitutionMode(bool on)
{
    substitutionMode = on;
}

int ByteToCharConverter::getSubstitutionChars(char16_t* dest, int max)
{
    if (dest == nullptr) {
        return substitutionCount;
    }
    const int n = max < 0 ? 0 : (max < substitutionCount ? max : substitutionCount);
    for (int i = 0; i < n; ++i) {
        dest[i] = substitutionChars[i];
    }
    return n;
}

void ByteToCharConverter::setSubstitutionChars(const char16_t* chars, int count)
{
    if (count < 0 || count > MAX_SUBSTITUTION_CHARS) {
        detail::throwRangeError("setSubstitutionChars: count must be 0 to 3");
    }
    if (chars == nullptr && count > 0) {
        detail::throwRangeError("setSubstitutionChars: null characters");
    }
    for (int i = 0; i < count; ++i) {
        substitutionChars[i] = chars[i];
    }
    substitutionCount = count;
}

const char16_t* ByteToCharConverter::getEncodingName() const
{
    return const_cast<ByteToCharConverter*>(this)->getEncodingName();
}

int ByteToCharConverter::getMaxBytesPerChar() const
{
    return const_cast<ByteToCharConverter*>(this)->getMaxBytesPerChar();
}

int ByteToCharConverter::getMaxCharsPerByte() const
{
    return const_cast<ByteToCharConverter*>(this)->getMaxCharsPerByte();
}

bool ByteToCharConverter::getSubstitutionMode() const
{
    return const_cast<ByteToCharConverter*>(this)->getSubstitutionMode();
}

int ByteToCharConverter::getSubstitutionChars(char16_t* dest, int max) const
{
    return const_cast<ByteToCharConverter*>(this)->getSubstitutionChars(dest, max);
}

} // namespace charset
} // namespace text
} // namespace qv
