#include <qvcore3/qvcore3.h>

#include <locale.h>
#include <stdlib.h>

#include <cstddef>

#include "Utf.h"

namespace qvcore3 {

int DigitValue(char16_t unit) noexcept
{
    if (unit >= u'0' && unit <= u'9') {
        return unit - u'0';
    }
    if (unit >= u'a' && unit <= u'z') {
        return unit - u'a' + 10;
    }
    if (unit >= u'A' && unit <= u'Z') {
        return unit - u'A' + 10;
    }
    return 99;
}

} // namespace qvcore3

using qvcore3::DigitValue;

namespace {

// The white space of the "C" locale's isspace.
bool IsSpace(char16_t unit) noexcept
{
    return unit == u' ' || (unit >= u'\t' && unit <= u'\r');
}

// Made once, never freed: strtod_l may run from other libraries' static
// destructors.
locale_t CLocale() noexcept
{
    static const locale_t c = newlocale(LC_ALL_MASK, "C", static_cast<locale_t>(nullptr));
    return c;
}

} // namespace

extern "C" int32_t QVStrToIW(const char16_t* text) noexcept
{
    if (!text) {
        return 0;
    }
    while (IsSpace(*text)) {
        ++text;
    }
    const bool negative = *text == u'-';
    if (*text == u'-' || *text == u'+') {
        ++text;
    }
    uint32_t value = 0;
    for (; *text >= u'0' && *text <= u'9'; ++text) {
        value = value * 10u + static_cast<uint32_t>(*text - u'0');
    }
    return static_cast<int32_t>(negative ? 0u - value : value);
}

// Follows glibc's strtoul with a 32-bit result: an overflow gives 0xFFFFFFFF
// (not negated); no digits, or a radix outside 0 and 2..36, give 0 with *end
// at the start of text; "0x" without a hex digit after it is the number 0
// ending before the 'x'.
extern "C" uint32_t QVStrToULW(const char16_t* text, const char16_t** end, int32_t radix) noexcept
{
    if (end) {
        *end = text;
    }
    if (!text || radix < 0 || radix == 1 || radix > 36) {
        return 0;
    }
    const char16_t* p = text;
    while (IsSpace(*p)) {
        ++p;
    }
    const bool negative = *p == u'-';
    if (*p == u'-' || *p == u'+') {
        ++p;
    }
    const bool hexPrefix = p[0] == u'0' && (p[1] == u'x' || p[1] == u'X') && DigitValue(p[2]) < 16;
    if ((radix == 0 || radix == 16) && hexPrefix) {
        p += 2;
        radix = 16;
    } else if (radix == 0) {
        radix = p[0] == u'0' ? 8 : 10;
    }
    const uint32_t base = static_cast<uint32_t>(radix);
    const char16_t* digits = p;
    uint64_t value = 0;
    bool overflow = false;
    for (; DigitValue(*p) < radix; ++p) {
        value = value * base + static_cast<uint32_t>(DigitValue(*p));
        if (value > 0xFFFFFFFFu) {
            overflow = true;
            value = 0xFFFFFFFFu;
        }
    }
    if (p == digits) {
        return 0;
    }
    if (end) {
        *end = p;
    }
    if (overflow) {
        return 0xFFFFFFFFu;
    }
    const uint32_t result = static_cast<uint32_t>(value);
    return negative ? 0u - result : result;
}

// Everything strtod can read is ASCII, so the ASCII run at the start of text
// goes to strtod_l with the "C" locale, whatever locale the process runs in.
extern "C" double QVStrToDW(const char16_t* text, const char16_t** end) noexcept
{
    if (end) {
        *end = text;
    }
    const locale_t c = CLocale();
    if (!text || c == static_cast<locale_t>(nullptr)) {
        return 0.0;
    }
    size_t length = 0;
    while (text[length] != 0 && text[length] < 0x80) {
        ++length;
    }
    char small[128];
    char* narrow = length < sizeof small ? small : static_cast<char*>(QVMemAlloc(length + 1));
    if (!narrow) {
        return 0.0;
    }
    for (size_t i = 0; i < length; ++i) {
        narrow[i] = static_cast<char>(text[i]);
    }
    narrow[length] = '\0';
    char* stop = narrow;
    const double value = strtod_l(narrow, &stop, c);
    if (end) {
        *end = text + (stop - narrow);
    }
    if (narrow != small) {
        QVMemFree(narrow);
    }
    return value;
}
