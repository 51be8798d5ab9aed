#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include "UnitScratch.h"

#include <cstring>

namespace qv {

namespace {

// -1, 0 or 1 by the first differing unit, as unsigned 16-bit numbers. Short
// runs (map keys, names) are walked four units a step; long equal runs are
// the common case there, so memcmp decides those first.
int compareUnits(const char16_t* a, const char16_t* b, int32_t n) noexcept
{
    if (a == b || n <= 0)
        return 0;
    int32_t i = 0;
    if (n >= 64) {
        if (std::memcmp(a, b, static_cast<size_t>(n) * sizeof(char16_t)) == 0)
            return 0;
    }
    for (; i + 4 <= n; i += 4) {
        uint64_t x;
        uint64_t y;
        std::memcpy(&x, a + i, sizeof(x));
        std::memcpy(&y, b + i, sizeof(y));
        if (x != y)
            break;
    }
    for (; i < n; ++i) {
        if (a[i] != b[i])
            return a[i] < b[i] ? -1 : 1;
    }
    return 0;
}

// The first unit equal to c in [p, end), or null. Tests four units per
// step: a unit of (word ^ pattern) is zero exactly where the text holds c.
const char16_t* findUnit(const char16_t* p, const char16_t* end, char16_t c) noexcept
{
    const uint64_t ones = 0x0001000100010001ull;
    const uint64_t highs = 0x8000800080008000ull;
    const uint64_t pattern = ones * c;
    while (end - p >= 8) {
        uint64_t a;
        uint64_t b;
        std::memcpy(&a, p, sizeof(a));
        std::memcpy(&b, p + 4, sizeof(b));
        a ^= pattern;
        b ^= pattern;
        if ((((a - ones) & ~a) | ((b - ones) & ~b)) & highs)
            break;
        p += 8;
    }
    for (; p < end; ++p) {
        if (*p == c)
            return p;
    }
    return nullptr;
}

// Which byte of a unit in memory holds its low eight bits.
int lowByteOffset() noexcept
{
    const char16_t probe = 1;
    unsigned char first;
    std::memcpy(&first, &probe, 1);
    return first == 1 ? 0 : 1;
}

// How common a byte is as the low byte of a unit of ordinary text, higher
// meaning more common: NUL (the high byte of Latin text) and space first,
// then lower-case letters by their frequency in English, digits,
// punctuation and capitals. The search scans for the needle unit that ranks
// lowest, so that it stops at as few false candidates as possible.
int byteRank(unsigned char b) noexcept
{
    static const char order[] = "etaoinshrdlcumwfgypbvkjxqz";
    if (b == 0)
        return 255;
    if (b == ' ')
        return 250;
    if (b >= 'a' && b <= 'z')
        return 240 - 4 * static_cast<int>(std::strchr(order, b) - order);
    if (b >= 'A' && b <= 'Z')
        return 100 - 2 * static_cast<int>(std::strchr(order, b - 'A' + 'a') - order);
    if (b >= '0' && b <= '9')
        return 130;
    if (b == ',' || b == '.' || b == '\n' || b == '-' || b == '\'' || b == '\r')
        return 125;
    return 40;
}

// First match of needle (n >= 1 units) in hay[from, length). Long texts are
// scanned with memchr for the low byte of the needle's rarest-looking unit;
// each hit on a unit's low byte is checked in full.
int32_t searchForward(const char16_t* hay, int32_t length, int32_t from, const char16_t* needle, int32_t n)
{
    if (length - from < 64) {
        const char16_t* p = hay + from;
        const char16_t* end = hay + (length - n) + 1;
        while (p < end) {
            p = findUnit(p, end, needle[0]);
            if (!p)
                return -1;
            int32_t k = 1;
            while (k < n && p[k] == needle[k])
                ++k;
            if (k == n)
                return static_cast<int32_t>(p - hay);
            ++p;
        }
        return -1;
    }
    int32_t pivot = 0;
    for (int32_t k = 1; k < n; ++k) {
        if (byteRank(static_cast<unsigned char>(needle[k] & 0xFF)) <
            byteRank(static_cast<unsigned char>(needle[pivot] & 0xFF)))
            pivot = k;
    }
    const char16_t unit = needle[pivot];
    const int low = lowByteOffset();
    const unsigned char* base = reinterpret_cast<const unsigned char*>(hay);
    // Candidates are the units j in [from + pivot, length - n + pivot].
    size_t at = static_cast<size_t>(from + pivot) * 2 + static_cast<size_t>(low);
    const size_t end = static_cast<size_t>(length - n + pivot) * 2 + static_cast<size_t>(low) + 1;
    const size_t bytes = static_cast<size_t>(n) * sizeof(char16_t);
    while (at < end) {
        const void* hit = std::memchr(base + at, unit & 0xFF, end - at);
        if (!hit)
            return -1;
        size_t offset = static_cast<size_t>(static_cast<const unsigned char*>(hit) - base);
        if ((offset & 1) == static_cast<size_t>(low)) {
            size_t j = offset / 2;
            if (hay[j] == unit && std::memcmp(hay + j - pivot, needle, bytes) == 0)
                return static_cast<int32_t>(j) - pivot;
        }
        at = offset + 1;
    }
    return -1;
}

bool matchesAt(const char16_t* hay, const char16_t* needle, int32_t n, bool ignoreCase) noexcept
{
    if (!ignoreCase)
        return std::memcmp(hay, needle, static_cast<size_t>(n) * sizeof(char16_t)) == 0;
    // needle is already lower-cased.
    for (int32_t k = 0; k < n; ++k) {
        if (QVToLowerW(hay[k]) != needle[k])
            return false;
    }
    return true;
}

// The search text itself, or a lower-cased copy of it in scratch.
const char16_t* prepareNeedle(const char16_t* text, int32_t n, bool ignoreCase, detail::UnitScratch& scratch)
{
    if (!ignoreCase)
        return text;
    char16_t* lowered = scratch.get();
    for (int32_t k = 0; k < n; ++k)
        lowered[k] = QVToLowerW(text[k]);
    return lowered;
}

bool inSet(char16_t unit, const char16_t* set, int32_t n) noexcept
{
    for (int32_t k = 0; k < n; ++k) {
        if (set[k] == unit)
            return true;
    }
    return false;
}

enum class Direction { TowardsEnd, TowardsStart };
enum class Membership { InSet, NotInSet };

// The shared walk of the findFirstOf family: from `from` towards the end or
// the start, the first unit whose membership in set is `wanted`.
int32_t findInSet(const char16_t* data, int32_t length, int32_t from, const char16_t* setText, int32_t setLength,
                  bool ignoreCase, Direction direction, Membership wanted)
{
    const bool member = wanted == Membership::InSet;
    detail::UnitScratch scratch(ignoreCase ? setLength : 0);
    const char16_t* set = prepareNeedle(setText, setLength, ignoreCase, scratch);
    auto test = [&](char16_t unit) { return inSet(ignoreCase ? QVToLowerW(unit) : unit, set, setLength) == member; };
    if (direction == Direction::TowardsEnd) {
        for (int32_t i = from < 0 ? 0 : from; i < length; ++i) {
            if (test(data[i]))
                return i;
        }
        return -1;
    }
    if (from < -1)
        return -1;
    for (int32_t i = (from == -1 || from >= length) ? length - 1 : from; i >= 0; --i) {
        if (test(data[i]))
            return i;
    }
    return -1;
}

} // namespace

int32_t String::regionCompare(int32_t start, int32_t count, const char16_t* text, int32_t textLength, int32_t textStart,
                              bool ignoreCase) const
{
    if (textLength == -1)
        textLength = QVStrLenW(text);
    if (!text || textLength < 0)
        textLength = 0;
    if (textStart < 0)
        textStart = 0;
    if (textStart > textLength)
        textStart = textLength;
    int32_t textCount = textLength - textStart;
    int32_t length = currentLength();
    start = clampStart(start, length);
    if (count < 0 || count > length - start)
        count = length - start;
    int32_t n = count < textCount ? count : textCount;
    if (n > 0) {
        const char16_t* a = currentData() + start;
        const char16_t* b = text + textStart;
        int r = ignoreCase ? QVStrNICmpW(a, b, n) : compareUnits(a, b, n);
        if (r != 0)
            return r < 0 ? -1 : 1;
    }
    return count - textCount;
}

int32_t String::regionCompare(int32_t start, int32_t count, TextRef text, int32_t textStart, bool ignoreCase) const
{
    return regionCompare(start, count, text.data(), text.length(), textStart, ignoreCase);
}

bool String::regionMatches(int32_t start, int32_t count, const char16_t* text, int32_t textLength, int32_t textStart,
                           bool ignoreCase) const
{
    return regionCompare(start, count, text, textLength, textStart, ignoreCase) == 0;
}

bool String::regionMatches(int32_t start, int32_t count, TextRef text, int32_t textStart, bool ignoreCase) const
{
    return regionCompare(start, count, text.data(), text.length(), textStart, ignoreCase) == 0;
}

int32_t String::compare(TextRef text, bool ignoreCase) const
{
    return regionCompare(0, -1, text.data(), text.length(), 0, ignoreCase);
}

bool String::equalsRun(const char16_t* text, int32_t length, bool ignoreCase) const
{
    if (length != currentLength())
        return false;
    if (length == 0)
        return true;
    if (ignoreCase)
        return QVStrNICmpW(currentData(), text, length) == 0;
    return std::memcmp(currentData(), text, static_cast<size_t>(length) * sizeof(char16_t)) == 0;
}

bool String::equals(TextRef text, bool ignoreCase) const
{
    return equalsRun(text.data(), text.length(), ignoreCase);
}

bool String::equals(const char16_t* text, bool ignoreCase) const
{
    return equalsRun(text, QVStrLenW(text), ignoreCase);
}

bool String::equals(const Object& other) const
{
    const String* text = dynamic_cast<const String*>(&other);
    if (!text)
        return false;
    if (text == this)
        return true;
    return equalsRun(text->currentData(), text->currentLength(), false);
}

int String::compareTo(const Object& other) const
{
    const String* text = dynamic_cast<const String*>(&other);
    if (!text)
        return Object::compareTo(other);
    return compare(*text);
}

bool String::startsWith(TextRef prefix, bool ignoreCase) const
{
    int32_t n = prefix.length();
    return n <= currentLength() && regionCompare(0, n, prefix.data(), n, 0, ignoreCase) == 0;
}

bool String::endsWith(TextRef suffix, bool ignoreCase) const
{
    int32_t n = suffix.length();
    int32_t length = currentLength();
    return n <= length && regionCompare(length - n, n, suffix.data(), n, 0, ignoreCase) == 0;
}

bool String::contains(TextRef text, bool ignoreCase) const
{
    return indexOf(text, 0, ignoreCase) >= 0;
}

bool String::contains(char16_t c, bool ignoreCase) const
{
    return indexOf(c, 0, ignoreCase) >= 0;
}

int32_t String::indexOf(char16_t c, int32_t from, bool ignoreCase) const
{
    int32_t length = currentLength();
    const char16_t* data = currentData();
    if (from < 0)
        from = 0;
    if (from >= length)
        return -1;
    if (!ignoreCase)
        return searchForward(data, length, from, &c, 1);
    char16_t lower = QVToLowerW(c);
    for (int32_t i = from; i < length; ++i) {
        if (QVToLowerW(data[i]) == lower)
            return i;
    }
    return -1;
}

int32_t String::indexOf(TextRef text, int32_t from, bool ignoreCase) const
{
    int32_t length = currentLength();
    const char16_t* data = currentData();
    int32_t n = text.length();
    if (from < 0)
        from = 0;
    if (from > length)
        return -1;
    if (n == 0)
        return from;
    if (n > length - from)
        return -1;
    if (!ignoreCase)
        return searchForward(data, length, from, text.data(), n);
    detail::UnitScratch scratch(n);
    const char16_t* needle = prepareNeedle(text.data(), n, true, scratch);
    for (int32_t i = from; i <= length - n; ++i) {
        if (QVToLowerW(data[i]) == needle[0] && matchesAt(data + i + 1, needle + 1, n - 1, true))
            return i;
    }
    return -1;
}

int32_t String::lastIndexOf(char16_t c, int32_t from, bool ignoreCase) const
{
    int32_t length = currentLength();
    const char16_t* data = currentData();
    if (from < -1)
        return -1;
    if (from == -1 || from >= length)
        from = length - 1;
    char16_t target = ignoreCase ? QVToLowerW(c) : c;
    for (int32_t i = from; i >= 0; --i) {
        if ((ignoreCase ? QVToLowerW(data[i]) : data[i]) == target)
            return i;
    }
    return -1;
}

int32_t String::lastIndexOf(TextRef text, int32_t from, bool ignoreCase) const
{
    int32_t length = currentLength();
    const char16_t* data = currentData();
    int32_t n = text.length();
    if (from < -1 || n > length)
        return -1;
    int32_t last = length - n;
    if (from == -1 || from > last)
        from = last;
    if (n == 0)
        return from;
    detail::UnitScratch scratch(ignoreCase ? n : 0);
    const char16_t* needle = prepareNeedle(text.data(), n, ignoreCase, scratch);
    for (int32_t i = from; i >= 0; --i) {
        char16_t first = ignoreCase ? QVToLowerW(data[i]) : data[i];
        if (first == needle[0] && matchesAt(data + i + 1, needle + 1, n - 1, ignoreCase))
            return i;
    }
    return -1;
}

int32_t String::findFirstOf(TextRef set, int32_t from, bool ignoreCase) const
{
    return findInSet(currentData(), currentLength(), from, set.data(), set.length(), ignoreCase, Direction::TowardsEnd,
                     Membership::InSet);
}

int32_t String::findFirstNotOf(TextRef set, int32_t from, bool ignoreCase) const
{
    return findInSet(currentData(), currentLength(), from, set.data(), set.length(), ignoreCase, Direction::TowardsEnd,
                     Membership::NotInSet);
}

int32_t String::findLastOf(TextRef set, int32_t from, bool ignoreCase) const
{
    return findInSet(currentData(), currentLength(), from, set.data(), set.length(), ignoreCase,
                     Direction::TowardsStart, Membership::InSet);
}

int32_t String::findLastNotOf(TextRef set, int32_t from, bool ignoreCase) const
{
    return findInSet(currentData(), currentLength(), from, set.data(), set.length(), ignoreCase,
                     Direction::TowardsStart, Membership::NotInSet);
}

int32_t String::findFirstOfCase(TextRef set, int32_t from) const
{
    return findInSet(currentData(), currentLength(), from, set.data(), set.length(), false, Direction::TowardsEnd,
                     Membership::InSet);
}

String String::substring(int32_t begin, int32_t end) const
{
    int32_t length = currentLength();
    if (end < 0 || end > length)
        end = length;
    if (begin > end)
        begin = end;
    // A negative begin would read before the text.
    if (begin < 0)
        begin = 0;
    return String(currentData() + begin, end - begin);
}

uint32_t String::hashCode() const
{
    return hashCode(false);
}

uint32_t String::hashCode(bool ignoreCase) const
{
    const char16_t* data = currentData();
    const int64_t n = currentLength();
    if (n <= 0)
        return 0;
    const int64_t step = ((n - 32) / 32) + 1;
    uint32_t h = 0;
    int64_t i = 0;
    if (ignoreCase) {
        for (; i < n; i += step)
            h = h * 37u + static_cast<uint16_t>(QVToLowerW(data[i]));
        return h;
    }
    // Four samples per round: h*37^4 + a*37^3 + b*37^2 + c*37 + d is the same
    // number as four single steps, with a shorter chain of multiplications.
    const uint32_t p1 = 37u;
    const uint32_t p2 = p1 * 37u;
    const uint32_t p3 = p2 * 37u;
    const uint32_t p4 = p3 * 37u;
    for (; i + 3 * step < n; i += 4 * step) {
        h = h * p4 + static_cast<uint32_t>(data[i]) * p3 + static_cast<uint32_t>(data[i + step]) * p2 +
            static_cast<uint32_t>(data[i + 2 * step]) * p1 + static_cast<uint32_t>(data[i + 3 * step]);
    }
    for (; i < n; i += step)
        h = h * 37u + static_cast<uint32_t>(data[i]);
    return h;
}

bool operator==(const String& a, const String& b)
{
    return a.equals(static_cast<const Object&>(b));
}

bool operator==(const String& a, const char16_t* b)
{
    return a.equals(b);
}

bool operator<(const String& a, const String& b)
{
    const String::TextRef left(a);
    const String::TextRef right(b);
    const int32_t shorter = left.length() < right.length() ? left.length() : right.length();
    const int r = compareUnits(left.data(), right.data(), shorter);
    return r != 0 ? r < 0 : left.length() < right.length();
}

} // namespace qv
