#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include "UnitScratch.h"

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <vector>

namespace qv {

namespace {

// The units of "{n}" as valueOf(int) prints n: no sign, no leading zeros.
int32_t placeholderLength(int32_t index) noexcept
{
    int32_t digits = 1;
    for (uint32_t v = static_cast<uint32_t>(index); v >= 10; v /= 10)
        ++digits;
    return digits + 2;
}

// The index of the placeholder "{n}" that starts at text[at] (a '{'), or -1
// when none starts there. Only n below limit counts: an index beyond the
// number of placeholders can never be reached by the scan from "{0}".
int32_t placeholderAt(const char16_t* text, int32_t length, int32_t at, int32_t limit) noexcept
{
    int32_t i = at + 1;
    if (i >= length || text[i] < u'0' || text[i] > u'9')
        return -1;
    int64_t index = 0;
    if (text[i] == u'0') {
        ++i;
    } else {
        while (i < length && text[i] >= u'0' && text[i] <= u'9') {
            index = index * 10 + (text[i] - u'0');
            if (index >= limit)
                return -1;
            ++i;
        }
    }
    if (i >= length || text[i] != u'}' || index >= limit)
        return -1;
    return static_cast<int32_t>(index);
}

struct Argument {
    const char16_t* text = nullptr;
    int32_t length = 0;
};

// The working tables of a format: the first N entries stay on the stack,
// which covers ordinary patterns without a heap allocation.
template <class T, size_t N>
class SmallList {
public:
    explicit SmallList(size_t size) : m_size(size)
    {
        if (size > N)
            m_heap.resize(size);
    }
    void push(const T& value)
    {
        if (m_heap.empty() && m_size < N) {
            m_local[m_size++] = value;
            return;
        }
        if (m_heap.empty())
            m_heap.assign(m_local, m_local + m_size);
        m_heap.push_back(value);
        ++m_size;
    }
    T* begin() noexcept { return m_heap.empty() ? m_local : m_heap.data(); }
    T& operator[](size_t index) noexcept { return begin()[index]; }
    size_t size() const noexcept { return m_size; }

private:
    T m_local[N] = {};
    std::vector<T> m_heap;
    size_t m_size = 0;
};

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
// and argument text is never searched again. One scan counts the
// placeholders, a second writes the result, so the work is linear in the
// pattern and the output whatever the pattern holds. The result is made in a
// String of its own and taken over at the end: until then this String keeps
// its text, so a pattern or arguments taken from it stay valid, and a failed
// allocation leaves it as it was.
template <class NextArgument>
void String::formatWith(const char16_t* pattern, int32_t length, NextArgument& next)
{
    if (length == -1)
        length = QVStrLenW(pattern);
    if (!pattern || length < 0)
        length = 0;
    // k placeholders need at least 3k units, so no index from length / 3 on
    // can be reached.
    const int32_t limit = length / 3 + 1;
    SmallList<int32_t, 64> counts(static_cast<size_t>(limit));
    for (int32_t i = 0; i < length; ++i) {
        if (pattern[i] != u'{')
            continue;
        int32_t index = placeholderAt(pattern, length, i, limit);
        if (index >= 0) {
            ++counts[static_cast<size_t>(index)];
            i += placeholderLength(index) - 1;
        }
    }
    SmallList<Argument, 16> arguments(0);
    int64_t finalLength = length;
    for (int32_t n = 0; n < limit && counts[static_cast<size_t>(n)] > 0; ++n) {
        const char16_t* text = nullptr;
        if (!next.next(text))
            break;
        Argument argument{text, QVStrLenW(text)};
        arguments.push(argument);
        finalLength += static_cast<int64_t>(counts[static_cast<size_t>(n)]) * (argument.length - placeholderLength(n));
    }
    const int32_t taken = static_cast<int32_t>(arguments.size());
    if (taken == 0) {
        String unchanged;
        unchanged.setTo(pattern, length);
        setAddRef(unchanged);
        return;
    }
    if (finalLength > detail::kMaxStringLength)
        throw OutOfMemoryException();
    String result;
    char16_t* out = result.getWriteLock(static_cast<int32_t>(finalLength));
    int32_t copied = 0;
    for (int32_t i = 0; i < length; ++i) {
        if (pattern[i] != u'{')
            continue;
        int32_t index = placeholderAt(pattern, length, i, taken);
        if (index < 0)
            continue;
        std::copy(pattern + copied, pattern + i, out);
        out += i - copied;
        const Argument& argument = arguments[static_cast<size_t>(index)];
        std::copy(argument.text, argument.text + argument.length, out);
        out += argument.length;
        i += placeholderLength(index) - 1;
        copied = i + 1;
    }
    std::copy(pattern + copied, pattern + length, out);
    result.releaseWriteLock(static_cast<int32_t>(finalLength));
    setAddRef(result);
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

const String& String::formatv(const unsigned short* pattern, int32_t patternLength, va_list arguments)
{
    return formatv(reinterpret_cast<const char16_t*>(pattern), patternLength, arguments);
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
