#include <qvcore3/qvcore3.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__) && (defined(__GNUC__) || defined(__clang__))
#include <emmintrin.h>
#define QVCORE3_SCAN_BLOCKS 1
#endif

namespace {

struct CasePair {
    char16_t from;
    char16_t to;
};

#include "CaseTables.inc"

template <size_t N>
char16_t MapCase(const CasePair (&table)[N], char16_t unit) noexcept
{
    size_t low = 0;
    size_t high = N;
    while (low < high) {
        const size_t middle = (low + high) / 2;
        if (table[middle].from < unit) {
            low = middle + 1;
        } else {
            high = middle;
        }
    }
    return low < N && table[low].from == unit ? table[low].to : unit;
}

// Units are read through memcpy: a text at an odd address (a pointer cast
// from packed bytes) must not be read as aligned char16_t.
const char16_t* FindUnitOrEndByUnit(const char16_t* text, char16_t unit) noexcept
{
    const unsigned char* at = reinterpret_cast<const unsigned char*>(text);
    for (;; at += sizeof(char16_t)) {
        char16_t current;
        std::memcpy(&current, at, sizeof(current));
        if (current == 0 || current == unit) {
            return reinterpret_cast<const char16_t*>(at);
        }
    }
}

} // namespace

#ifdef QVCORE3_SCAN_BLOCKS
// Eight units per 16-byte block at a 16-byte boundary. Such a block never
// straddles a page, so the units it holds beyond the terminator, or before
// the text in the first block, cannot fault; the sanitizers would still call
// them out of bounds (or racing with their owner), so they leave this
// function alone. A text at an odd address takes the unit loop: its units
// straddle the blocks' 16-bit lanes.
namespace {

__attribute__((no_sanitize("address", "thread"))) const char16_t* FindUnitOrEnd(const char16_t* text,
                                                                                char16_t unit) noexcept
{
    const uintptr_t address = reinterpret_cast<uintptr_t>(text);
    if ((address & 1) != 0) {
        return FindUnitOrEndByUnit(text, unit);
    }
    const __m128i zero = _mm_setzero_si128();
    const __m128i wanted = _mm_set1_epi16(static_cast<short>(unit));
    const __m128i* block = reinterpret_cast<const __m128i*>(address & ~uintptr_t(15));
    __m128i units = _mm_load_si128(block);
    // One bit per byte, both bytes of a matching unit set; the text's own
    // units start at byte (address & 15) of the first block.
    unsigned hits = static_cast<unsigned>(
        _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi16(units, zero), _mm_cmpeq_epi16(units, wanted))));
    hits &= ~0u << (address & 15);
    while (hits == 0) {
        ++block;
        units = _mm_load_si128(block);
        hits = static_cast<unsigned>(
            _mm_movemask_epi8(_mm_or_si128(_mm_cmpeq_epi16(units, zero), _mm_cmpeq_epi16(units, wanted))));
    }
    return reinterpret_cast<const char16_t*>(reinterpret_cast<const char*>(block) + __builtin_ctz(hits));
}

} // namespace
#else
namespace {

const char16_t* FindUnitOrEnd(const char16_t* text, char16_t unit) noexcept
{
    return FindUnitOrEndByUnit(text, unit);
}

} // namespace
#endif

extern "C" const char16_t* QVStrFindUnitOrEndW(const char16_t* text, char16_t unit) noexcept
{
    return FindUnitOrEnd(text, unit);
}

// Lengths beyond INT32_MAX units are not representable in this interface and
// are reported as INT32_MAX.
extern "C" int32_t QVStrLenW(const char16_t* text) noexcept
{
    if (!text) {
        return 0;
    }
    const ptrdiff_t length = FindUnitOrEnd(text, 0) - text;
    return length < 0x7FFFFFFF ? static_cast<int32_t>(length) : 0x7FFFFFFF;
}

extern "C" int32_t QVStrLenA(const char* text) noexcept
{
    if (!text) {
        return 0;
    }
    size_t length = 0;
    while (text[length] != 0 && length < 0x7FFFFFFF) {
        ++length;
    }
    return static_cast<int32_t>(length);
}

extern "C" char16_t* QVStrCpyW(char16_t* destination, const char16_t* source) noexcept
{
    if (!destination) {
        return nullptr;
    }
    char16_t* out = destination;
    if (source) {
        while ((*out = *source++) != 0) {
            ++out;
        }
    } else {
        *out = 0;
    }
    return destination;
}

extern "C" char16_t* QVStrNCpyW(char16_t* destination, const char16_t* source, int32_t count) noexcept
{
    if (!destination) {
        return nullptr;
    }
    int32_t i = 0;
    for (; i < count && source && source[i] != 0; ++i) {
        destination[i] = source[i];
    }
    for (; i < count; ++i) {
        destination[i] = 0;
    }
    return destination;
}

extern "C" int32_t QVStrCmpW(const char16_t* a, const char16_t* b) noexcept
{
    const char16_t empty = 0;
    const char16_t* left = a ? a : &empty;
    const char16_t* right = b ? b : &empty;
    while (*left != 0 && *left == *right) {
        ++left;
        ++right;
    }
    return static_cast<int32_t>(*left) - static_cast<int32_t>(*right);
}

extern "C" const char16_t* QVStrChrW(const char16_t* text, char16_t unit) noexcept
{
    if (!text || unit == 0) {
        return nullptr;
    }
    for (; *text != 0; ++text) {
        if (*text == unit) {
            return text;
        }
    }
    return nullptr;
}

// A negative count compares to the end of the strings.
extern "C" int32_t QVStrNICmpW(const char16_t* a, const char16_t* b, int32_t count) noexcept
{
    const char16_t empty = 0;
    const char16_t* left = a ? a : &empty;
    const char16_t* right = b ? b : &empty;
    for (int64_t i = 0; count < 0 || i < count; ++i) {
        const int32_t l = QVToLowerW(left[i]);
        const int32_t r = QVToLowerW(right[i]);
        if (l != r || l == 0) {
            return l - r;
        }
    }
    return 0;
}

extern "C" char16_t QVToLowerW(char16_t unit) noexcept
{
    if (unit < 0x80) {
        return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 0x20) : unit;
    }
    return MapCase(kToLower, unit);
}

extern "C" char16_t QVToUpperW(char16_t unit) noexcept
{
    if (unit < 0x80) {
        return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 0x20) : unit;
    }
    return MapCase(kToUpper, unit);
}

extern "C" char16_t* QVStrToLowerW(char16_t* text) noexcept
{
    for (char16_t* p = text; p && *p != 0; ++p) {
        *p = QVToLowerW(*p);
    }
    return text;
}

extern "C" char16_t* QVStrToUpperW(char16_t* text) noexcept
{
    for (char16_t* p = text; p && *p != 0; ++p) {
        *p = QVToUpperW(*p);
    }
    return text;
}

// A negative length means NUL-terminated.
extern "C" void QVStrToLowerNW(char16_t* text, int32_t length) noexcept
{
    if (length < 0) {
        QVStrToLowerW(text);
        return;
    }
    for (int32_t i = 0; text && i < length; ++i) {
        text[i] = QVToLowerW(text[i]);
    }
}

extern "C" void QVStrToUpperNW(char16_t* text, int32_t length) noexcept
{
    if (length < 0) {
        QVStrToUpperW(text);
        return;
    }
    for (int32_t i = 0; text && i < length; ++i) {
        text[i] = QVToUpperW(text[i]);
    }
}
