#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include "EmbeddedCharBuffer.h"
#include "UnitScratch.h"

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <cstring>
#include <vector>

namespace qv {

namespace {

// Reaching "{n}" takes the placeholders "{0}" to "{n}", at least 3(n + 1)
// units, so no index from here on can be reached in a String.
constexpr int64_t kUnreachableIndex = detail::kMaxStringLength / 3 + 1;

// Eight bytes, against the six a "{0}" takes in the pattern: the table of a
// pattern made of nothing but placeholders stays the pattern's size.
struct Placeholder {
    int32_t at; // the '{'
    int32_t index;

    // One past the '}': the digits are those valueOf(int) prints.
    int32_t end() const noexcept
    {
        int32_t units = 3;
        for (uint32_t v = static_cast<uint32_t>(index); v >= 10; v /= 10)
            ++units;
        return at + units;
    }
};

struct Argument {
    const char16_t* text;
    int32_t length;
};

// A list whose first N entries live on the stack, left uninitialised until
// pushed, so that ordinary patterns cost neither a heap allocation nor the
// clearing of a table.
template <class T, size_t N>
class SmallList {
public:
    SmallList() noexcept {}
    SmallList(const SmallList&) = delete;
    SmallList& operator=(const SmallList&) = delete;
    void push(const T& value)
    {
        if (m_size < N) {
            m_local[m_size++] = value;
            return;
        }
        if (m_heap.empty())
            m_heap.assign(m_local, m_local + N);
        m_heap.push_back(value);
        ++m_size;
    }
    const T* begin() const noexcept { return m_size <= N ? m_local : m_heap.data(); }
    const T* end() const noexcept { return begin() + m_size; }
    const T& operator[](size_t index) const noexcept { return begin()[index]; }
    size_t size() const noexcept { return m_size; }

private:
    T m_local[N];
    std::vector<T> m_heap;
    size_t m_size = 0;
};

using PlaceholderList = SmallList<Placeholder, 32>;

inline bool isDigit(char16_t c) noexcept
{
    return c >= u'0' && c <= u'9';
}

// Records the placeholder "{n}" that may start at the '{' text[at] (n as
// valueOf(int) prints it: no sign, no leading zeros) and returns where the
// scan goes on: past its '}', or at the first unit that cannot belong to
// it. A NUL stops the digits like any other unit, so a NUL-terminated text
// may pass a length it never reaches.
inline int32_t takePlaceholder(const char16_t* text, int32_t length, int32_t at, PlaceholderList& found)
{
    int32_t i = at + 1;
    if (i >= length || !isDigit(text[i]))
        return i;
    int64_t index = text[i++] - u'0';
    if (index != 0) {
        while (i < length && isDigit(text[i])) {
            index = index * 10 + (text[i] - u'0');
            if (index >= kUnreachableIndex)
                return i;
            ++i;
        }
    }
    if (i >= length || text[i] != u'}')
        return i;
    found.push(Placeholder{at, static_cast<int32_t>(index)});
    return i + 1;
}

// The first '{' in text[from, length), or length. Four units are tested at
// once (a lane equal to '{' becomes zero, and the classic zero-lane test
// finds it exactly), never reading past length.
int32_t findOpeningBrace(const char16_t* text, int32_t from, int32_t length) noexcept
{
    constexpr uint64_t kLaneOnes = 0x0001000100010001u;
    constexpr uint64_t kLaneHighBits = 0x8000800080008000u;
    constexpr uint64_t kBraces = kLaneOnes * u'{';
    int32_t i = from;
    for (; length - i >= 4; i += 4) {
        uint64_t word;
        std::memcpy(&word, text + i, sizeof(word));
        const uint64_t lanes = word ^ kBraces;
        if ((lanes - kLaneOnes) & ~lanes & kLaneHighBits)
            break;
    }
    for (; i < length; ++i) {
        if (text[i] == u'{')
            return i;
    }
    return length;
}

void scanPattern(const char16_t* pattern, int32_t length, PlaceholderList& found)
{
    for (int32_t i = findOpeningBrace(pattern, 0, length); i < length;
         i = findOpeningBrace(pattern, takePlaceholder(pattern, length, i, found), length)) {
    }
}

// The length scan of a NUL-terminated pattern and its placeholder scan in
// one pass: the platform's block scan stops at each '{' and at the end.
int32_t scanTerminatedPattern(const char16_t* pattern, PlaceholderList& found)
{
    const char16_t* p = QVStrFindUnitOrEndW(pattern, u'{');
    while (*p != 0) {
        const int32_t at = static_cast<int32_t>(p - pattern);
        p = QVStrFindUnitOrEndW(pattern + takePlaceholder(pattern, detail::kMaxStringLength, at, found), u'{');
    }
    return static_cast<int32_t>(p - pattern);
}

// The first index that no placeholder carries: with k placeholders it is at
// most k, so only the indices below k are looked at.
int32_t firstMissingIndex(const PlaceholderList& found)
{
    const size_t count = found.size();
    if (count <= 64) {
        uint64_t seen = 0;
        for (const Placeholder& placeholder : found) {
            if (static_cast<size_t>(placeholder.index) < count)
                seen |= uint64_t(1) << placeholder.index;
        }
        int32_t missing = 0;
        for (; seen & 1; seen >>= 1)
            ++missing;
        return missing;
    }
    std::vector<bool> seen(count);
    for (const Placeholder& placeholder : found) {
        if (static_cast<size_t>(placeholder.index) < count)
            seen[static_cast<size_t>(placeholder.index)] = true;
    }
    int32_t missing = 0;
    while (static_cast<size_t>(missing) < count && seen[static_cast<size_t>(missing)])
        ++missing;
    return missing;
}

class ListArguments {
public:
    ListArguments(const char16_t* const* list, int32_t count) noexcept : m_list(list), m_count(count) {}
    bool next(const char16_t*& text) noexcept
    {
        if (m_taken >= m_count)
            return false;
        text = m_list[m_taken++];
        return true;
    }

private:
    const char16_t* const* m_list;
    int32_t m_count;
    int32_t m_taken = 0;
};

class VaArguments {
public:
    explicit VaArguments(va_list arguments) noexcept { va_copy(m_arguments, arguments); }
    ~VaArguments() { va_end(m_arguments); }
    VaArguments(const VaArguments&) = delete;
    VaArguments& operator=(const VaArguments&) = delete;
    bool next(const char16_t*& text) noexcept
    {
        text = va_arg(m_arguments, const char16_t*);
        return true;
    }

private:
    va_list m_arguments;
};

String fromAscii(const char* text, int32_t length)
{
    char16_t units[48];
    if (length < 0)
        length = 0;
    if (length > 47)
        length = 47;
    for (int32_t i = 0; i < length; ++i)
        units[i] = static_cast<char16_t>(static_cast<unsigned char>(text[i]));
    return String(units, length);
}

} // namespace

// "{n}" takes argument n for every n from 0 up to the first index missing
// from the pattern (or the last argument); every other text stays as it is,
// and argument text is never searched again. One scan of the pattern
// records where its placeholders are (and finds its end when it is
// NUL-terminated); the result is then copied between them, so the work is
// linear in the pattern and the output whatever the pattern holds. The
// result is made in a buffer of its own and taken over at the end: until
// then this String keeps its text, so a pattern or arguments taken from it
// stay valid, and a failed allocation leaves it as it was.
template <class NextArgument>
void String::formatWith(const char16_t* pattern, int32_t length, NextArgument& next)
{
    PlaceholderList placeholders;
    if (!pattern || length < -1)
        length = 0;
    else if (length == -1)
        length = scanTerminatedPattern(pattern, placeholders);
    else
        scanPattern(pattern, length, placeholders);

    SmallList<Argument, 16> arguments;
    const int32_t wanted = firstMissingIndex(placeholders);
    for (int32_t n = 0; n < wanted; ++n) {
        const char16_t* text = nullptr;
        if (!next.next(text))
            break;
        arguments.push(Argument{text, QVStrLenW(text)});
    }
    const int32_t taken = static_cast<int32_t>(arguments.size());
    if (taken == 0) {
        String unchanged;
        unchanged.setTo(pattern, length);
        setAddRef(unchanged);
        return;
    }
    int64_t finalLength = length;
    for (const Placeholder& placeholder : placeholders) {
        if (placeholder.index < taken)
            finalLength +=
                arguments[static_cast<size_t>(placeholder.index)].length - (placeholder.end() - placeholder.at);
    }
    if (finalLength > detail::kMaxStringLength)
        throw OutOfMemoryException();
    // This String then holds the buffer alone, as after a copy it made
    // itself: a later edit need not copy again.
    util::RWCharBuffer* fresh = detail::EmbeddedCharBuffer::create(static_cast<int32_t>(finalLength) + 1);
    char16_t* const units = const_cast<char16_t*>(fresh->util::RWCharBuffer::GetData());
    char16_t* out = units;
    int32_t copied = 0;
    for (const Placeholder& placeholder : placeholders) {
        if (placeholder.index >= taken)
            continue;
        out = std::copy(pattern + copied, pattern + placeholder.at, out);
        const Argument& argument = arguments[static_cast<size_t>(placeholder.index)];
        out = std::copy(argument.text, argument.text + argument.length, out);
        copied = placeholder.end();
    }
    std::copy(pattern + copied, pattern + length, out);
    units[finalLength] = 0;
    fresh->util::RWCharBuffer::releaseWriteLock(static_cast<int32_t>(finalLength) + 1);
    fresh->AddRef();
    hold(fresh, fresh);
    m_exclusive.store(true, std::memory_order_relaxed);
}

const String& String::formatArray(const char16_t* pattern, int32_t patternLength, const char16_t* const* list,
                                  int32_t count)
{
    ListArguments arguments(list, count < 0 ? 0 : count);
    formatWith(pattern, patternLength, arguments);
    return *this;
}

const String& String::formatArray(const String& pattern, const char16_t* const* list, int32_t count)
{
    return formatArray(pattern.currentData(), pattern.currentLength(), list, count);
}

const String& String::formatv(const char16_t* pattern, int32_t patternLength, va_list arguments)
{
    VaArguments source(arguments);
    formatWith(pattern, patternLength, source);
    return *this;
}

const String& String::formatv(const String& pattern, va_list arguments)
{
    return formatv(pattern.currentData(), pattern.currentLength(), arguments);
}

String String::valueOf(bool value)
{
    static const STRUCT_QV_STR_LIT_INFO yes = strLit(u"true");
    static const STRUCT_QV_STR_LIT_INFO no = strLit(u"false");
    return String(value ? yes : no);
}

String String::valueOf(char16_t value)
{
    return String(value, 1);
}

// Numbers are printed as narrow ASCII text and widened unit by unit, which
// is what decoding them in any ASCII-compatible default encoding gives.
String String::valueOf(int value)
{
    char text[32];
    return fromAscii(text, std::snprintf(text, sizeof(text), "%d", value));
}

String String::valueOf(unsigned int value)
{
    char text[32];
    return fromAscii(text, std::snprintf(text, sizeof(text), "%u", value));
}

String String::valueOf(long value)
{
    char text[32];
    return fromAscii(text, std::snprintf(text, sizeof(text), "%ld", value));
}

String String::valueOf(unsigned long value)
{
    char text[32];
    return fromAscii(text, std::snprintf(text, sizeof(text), "%lu", value));
}

String String::valueOf(long long value)
{
    char text[32];
    return fromAscii(text, std::snprintf(text, sizeof(text), "%" PRId64, static_cast<int64_t>(value)));
}

String String::valueOf(unsigned long long value)
{
    char text[32];
    return fromAscii(text, std::snprintf(text, sizeof(text), "%" PRIu64, static_cast<uint64_t>(value)));
}

String String::valueOf(float value)
{
    return valueOf(static_cast<double>(value));
}

// The text of "%g" in the "C" locale: library start-up adopts the user's
// locale, whose decimal separator printf would otherwise use.
String String::valueOf(double value)
{
    char text[32];
    std::to_chars_result r = std::to_chars(text, text + sizeof(text), value, std::chars_format::general, 6);
    return fromAscii(text, static_cast<int32_t>(r.ptr - text));
}

} // namespace qv
