#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <algorithm>
#include <charconv>
#include <cinttypes>
#include <cstdio>
#include <stdexcept>
#include <utility>
#include <vector>

namespace qv {

namespace {

// "{n}" as valueOf(int) prints n: no sign, no leading zeros.
struct Placeholder {
    Placeholder() noexcept = default;
    explicit Placeholder(int32_t index) noexcept
    {
        char16_t digits[12];
        int32_t count = 0;
        uint32_t v = static_cast<uint32_t>(index);
        do {
            digits[count++] = static_cast<char16_t>(u'0' + v % 10);
            v /= 10;
        } while (v != 0);
        units[length++] = u'{';
        while (count > 0)
            units[length++] = digits[--count];
        units[length++] = u'}';
    }
    char16_t units[14] = {};
    int32_t length = 0;
};

struct Argument {
    Placeholder placeholder;
    const char16_t* text = nullptr;
    int32_t length = 0;
};

// The working tables of a format: the first N entries stay on the stack,
// which covers ordinary patterns without a heap allocation.
template <class T, size_t N>
class SmallList {
public:
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
    T* end() noexcept { return begin() + m_size; }
    const T& at(size_t index)
    {
        if (index >= m_size)
            throw std::out_of_range("format argument index");
        return begin()[index];
    }

private:
    T m_local[N];
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

template <class NextArgument>
void String::formatWith(NextArgument& next)
{
    SmallList<Argument, 16> arguments;
    // Placeholder position in the pattern -> argument index, sorted below.
    SmallList<std::pair<int32_t, int32_t>, 64> positions;
    int64_t finalLength = currentLength();
    for (int32_t n = 0; n < INT32_MAX; ++n) {
        Placeholder placeholder(n);
        TextRef wanted(placeholder.units, placeholder.length);
        int32_t position = indexOf(wanted, 0);
        if (position < 0)
            break;
        const char16_t* text = nullptr;
        if (!next.next(text))
            break;
        Argument argument{placeholder, text, QVStrLenW(text)};
        arguments.push(argument);
        while (position >= 0) {
            positions.push(std::make_pair(position, n));
            finalLength += argument.length - placeholder.length;
            position = indexOf(wanted, position + placeholder.length);
        }
    }
    std::sort(positions.begin(), positions.end());
    // Room for the result at once, so the replacements below never grow the
    // buffer one step at a time.
    int32_t length = currentLength();
    if (finalLength > length && finalLength < INT32_MAX / 2) {
        getWriteLock(static_cast<int32_t>(finalLength));
        releaseWriteLock(length);
    }
    int32_t offset = 0;
    for (const auto& entry : positions) {
        const Argument& argument = arguments.at(static_cast<size_t>(entry.second));
        const Placeholder& placeholder = argument.placeholder;
        int32_t found = indexOf(TextRef(placeholder.units, placeholder.length), offset);
        if (found < 0)
            continue;
        replace(found, placeholder.length, argument.text ? argument.text : u"", argument.length, 0);
        offset = found + argument.length;
    }
}

const String& String::formatArray(const char16_t* pattern, int32_t patternLength, const char16_t* const* list,
                                  int32_t count)
{
    // An argument taken from this String's own text must survive the pattern
    // being written over it: holding the old buffer makes the write copy.
    String keep;
    const char16_t* data = currentData();
    const char16_t* end = data + currentLength() + 1;
    std::less<const char16_t*> before;
    for (int32_t i = 0; i < count; ++i) {
        if (list[i] && !before(list[i], data) && before(list[i], end)) {
            keep.setAddRef(*this);
            break;
        }
    }
    setTo(pattern, patternLength);
    ListArguments arguments(list, count < 0 ? 0 : count);
    formatWith(arguments);
    return *this;
}

const String& String::formatArray(const String& pattern, const char16_t* const* list, int32_t count)
{
    String keep(pattern);
    return formatArray(keep.currentData(), keep.currentLength(), list, count);
}

const String& String::formatv(const char16_t* pattern, int32_t patternLength, va_list arguments)
{
    // The arguments are read only after the pattern is in place; any of them
    // pointing into this String's old text stays valid through this hold.
    String keep(*this);
    setTo(pattern, patternLength);
    VaArguments source(arguments);
    formatWith(source);
    return *this;
}

const String& String::formatv(const unsigned short* pattern, int32_t patternLength, va_list arguments)
{
    return formatv(reinterpret_cast<const char16_t*>(pattern), patternLength, arguments);
}

const String& String::formatv(const String& pattern, va_list arguments)
{
    String keep(pattern);
    return formatv(keep.currentData(), keep.currentLength(), arguments);
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
