#include <qv/util/PropertiesFormat.h>

namespace qv {
namespace util {

namespace {

bool isBlank(char16_t c)
{
    return c == u' ' || c == u'\t' || c == u'\f';
}

int hexValue(char16_t c)
{
    if (c >= u'0' && c <= u'9')
        return c - u'0';
    if (c >= u'a' && c <= u'f')
        return c - u'a' + 10;
    if (c >= u'A' && c <= u'F')
        return c - u'A' + 10;
    return -1;
}

// One logical line: natural lines joined where a line ends with an odd
// number of backslashes, with the continuation's leading blanks dropped.
struct LogicalLine {
    std::u16string text;
    int32_t line;
};

class LineReader {
public:
    LineReader(const String& text, const String& source)
        : m_data(text.getData()), m_length(text.getLength()), m_source(source)
    {}

    bool next(LogicalLine& logical)
    {
        logical.text.clear();
        bool continuing = false;
        while (m_position < m_length) {
            ++m_line;
            int32_t at = m_position;
            while (at < m_length && isBlank(m_data[at]))
                ++at;
            int32_t end = at;
            while (end < m_length && m_data[end] != u'\n' && m_data[end] != u'\r')
                ++end;
            m_position = end;
            if (m_position < m_length && m_data[m_position] == u'\r')
                ++m_position;
            if (m_position < m_length && m_data[m_position] == u'\n' && (m_position == end || m_data[end] == u'\r'))
                ++m_position;
            if (!continuing) {
                if (at == end || m_data[at] == u'#' || m_data[at] == u'!')
                    continue;
                logical.line = m_line;
            }
            int32_t backslashes = 0;
            while (end - backslashes > at && m_data[end - backslashes - 1] == u'\\')
                ++backslashes;
            const bool continues = backslashes % 2 == 1;
            logical.text.append(m_data + at, m_data + (continues ? end - 1 : end));
            if (!continues)
                return true;
            continuing = true;
            if (m_position >= m_length)
                throw PropertiesFormatException(m_source, logical.line, String(u"line ends with a lone backslash"));
        }
        return continuing;
    }

private:
    const char16_t* m_data;
    int32_t m_length;
    String m_source;
    int32_t m_position = 0;
    int32_t m_line = 0;
};

String unescape(const std::u16string& text, size_t begin, size_t end, const String& source, int32_t line)
{
    String out;
    for (size_t i = begin; i < end; ++i) {
        char16_t c = text[i];
        if (c != u'\\') {
            out.append(c);
            continue;
        }
        if (++i >= end)
            throw PropertiesFormatException(source, line, String(u"line ends with a lone backslash"));
        c = text[i];
        switch (c) {
        case u't': out.append(u'\t'); break;
        case u'n': out.append(u'\n'); break;
        case u'r': out.append(u'\r'); break;
        case u'f': out.append(u'\f'); break;
        case u'u': {
            int32_t value = 0;
            for (int digit = 0; digit < 4; ++digit) {
                const int v = i + 1 < end ? hexValue(text[i + 1]) : -1;
                if (v < 0)
                    throw PropertiesFormatException(source, line, String(u"bad \\u escape"));
                value = value * 16 + v;
                ++i;
            }
            out.append(static_cast<char16_t>(value));
            break;
        }
        default: out.append(c); break;
        }
    }
    return out;
}

void appendEscaped(String& out, const String& text, bool isKey)
{
    const int32_t length = text.getLength();
    for (int32_t i = 0; i < length; ++i) {
        const char16_t c = text.getCharAt(i);
        switch (c) {
        case u'\\': out.append(u"\\\\"); continue;
        case u'\t': out.append(u"\\t"); continue;
        case u'\n': out.append(u"\\n"); continue;
        case u'\r': out.append(u"\\r"); continue;
        case u'\f': out.append(u"\\f"); continue;
        default: break;
        }
        // Blanks that would be dropped, and characters that would end a key
        // or start a comment, keep their meaning behind a backslash.
        const bool special =
            (c == u' ' && (isKey || i == 0)) || (isKey && (c == u'=' || c == u':' || c == u'#' || c == u'!'));
        if (special) {
            out.append(u'\\');
            out.append(c);
        } else if (c < 0x20 || c == 0x7F) {
            static const char16_t digits[] = u"0123456789ABCDEF";
            out.append(u"\\u00");
            out.append(digits[c >> 4]);
            out.append(digits[c & 15]);
        } else {
            out.append(c);
        }
    }
}

} // namespace

PropertiesFormatException::PropertiesFormatException() : m_line(0) {}

PropertiesFormatException::PropertiesFormatException(const String& source, int32_t line, const String& problem)
    : Exception(String(source).append(u':').append(String::valueOf(line)).append(u": ").append(problem)),
      m_source(source), m_line(line)
{}

PropertiesFormatException::PropertiesFormatException(const PropertiesFormatException& other) = default;

PropertiesFormatException& PropertiesFormatException::operator=(const PropertiesFormatException& other) = default;

PropertiesFormatException::~PropertiesFormatException() = default;

String PropertiesFormatException::getSource() const
{
    return m_source;
}

int32_t PropertiesFormatException::getLine() const
{
    return m_line;
}

Result PropertiesFormatException::getResult() const
{
    return results::INVALIDARG;
}

PropertiesFormat::Entries PropertiesFormat::parse(const String& text, const String& source)
{
    Entries entries;
    LineReader reader(text, source);
    LogicalLine logical;
    while (reader.next(logical)) {
        const std::u16string& line = logical.text;
        const size_t length = line.size();
        size_t keyEnd = 0;
        size_t valueStart = length;
        bool separator = false;
        bool escaped = false;
        for (; keyEnd < length; ++keyEnd) {
            const char16_t c = line[keyEnd];
            if (!escaped && (c == u'=' || c == u':')) {
                valueStart = keyEnd + 1;
                separator = true;
                break;
            }
            if (!escaped && isBlank(c)) {
                valueStart = keyEnd + 1;
                break;
            }
            escaped = c == u'\\' && !escaped;
        }
        while (valueStart < length) {
            const char16_t c = line[valueStart];
            if (!isBlank(c)) {
                if (separator || (c != u'=' && c != u':'))
                    break;
                separator = true;
            }
            ++valueStart;
        }
        entries.emplace_back(unescape(line, 0, keyEnd, source, logical.line),
                             unescape(line, valueStart, length, source, logical.line));
    }
    return entries;
}

String PropertiesFormat::formatEntry(const String& key, const String& value)
{
    String line;
    appendEscaped(line, key, true);
    line.append(u'=');
    appendEscaped(line, value, false);
    return line;
}

} // namespace util
} // namespace qv
