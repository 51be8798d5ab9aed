#include "i18n/PropertiesParser.h"

#include <qv/i18n/BundleFormatException.h>

#include <string>

namespace qv {
namespace i18n {
namespace detail {

namespace {

// Strict UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
std::u16string decodeUtf8(const unsigned char* data, size_t size, const String& file)
{
    std::u16string text;
    text.reserve(size);
    size_t i = 0;
    if (size >= 3 && data[0] == 0xEF && data[1] == 0xBB && data[2] == 0xBF)
        i = 3;
    while (i < size) {
        const unsigned char lead = data[i];
        if (lead < 0x80) {
            text.push_back(lead);
            ++i;
            continue;
        }
        int extra;
        uint32_t code;
        uint32_t minimum;
        if (lead >= 0xC2 && lead <= 0xDF) {
            extra = 1;
            code = lead & 0x1Fu;
            minimum = 0x80;
        } else if (lead >= 0xE0 && lead <= 0xEF) {
            extra = 2;
            code = lead & 0x0Fu;
            minimum = 0x800;
        } else if (lead >= 0xF0 && lead <= 0xF4) {
            extra = 3;
            code = lead & 0x07u;
            minimum = 0x10000;
        } else {
            throw BundleFormatException(file, -1, static_cast<int64_t>(i), u"invalid UTF-8");
        }
        if (size - i <= static_cast<size_t>(extra))
            throw BundleFormatException(file, -1, static_cast<int64_t>(i), u"truncated UTF-8 sequence");
        for (int k = 1; k <= extra; ++k) {
            const unsigned char next = data[i + k];
            if ((next & 0xC0u) != 0x80u)
                throw BundleFormatException(file, -1, static_cast<int64_t>(i), u"invalid UTF-8");
            code = (code << 6) | (next & 0x3Fu);
        }
        if (code < minimum || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF))
            throw BundleFormatException(file, -1, static_cast<int64_t>(i), u"invalid UTF-8");
        if (code >= 0x10000) {
            code -= 0x10000;
            text.push_back(static_cast<char16_t>(0xD800 + (code >> 10)));
            text.push_back(static_cast<char16_t>(0xDC00 + (code & 0x3FF)));
        } else {
            text.push_back(static_cast<char16_t>(code));
        }
        i += static_cast<size_t>(extra) + 1;
    }
    return text;
}

bool isBlank(char16_t c)
{
    return c == u' ' || c == u'\t' || c == u'\f';
}

bool isLineEnd(char16_t c)
{
    return c == u'\n' || c == u'\r';
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

// One logical line: its units with escapes still in place, and for each
// unit the natural line it came from, so errors point at the right line.
struct LogicalLine {
    std::u16string units;
    std::vector<int32_t> lines;
};

class Parser {
public:
    Parser(const std::u16string& text, const String& file) : m_text(text), m_file(file) {}

    void run(std::vector<std::pair<String, String>>& out)
    {
        LogicalLine line;
        while (readLine(line)) {
            size_t pos = 0;
            String key = unescape(line, pos, true);
            while (pos < line.units.size() && isBlank(line.units[pos]))
                ++pos;
            if (pos < line.units.size() && (line.units[pos] == u'=' || line.units[pos] == u':'))
                ++pos;
            while (pos < line.units.size() && isBlank(line.units[pos]))
                ++pos;
            String value = unescape(line, pos, false);
            out.emplace_back(std::move(key), std::move(value));
        }
    }

private:
    void skipLineEnd()
    {
        if (m_pos < m_text.size() && m_text[m_pos] == u'\r') {
            ++m_pos;
            if (m_pos < m_text.size() && m_text[m_pos] == u'\n')
                ++m_pos;
        } else if (m_pos < m_text.size() && m_text[m_pos] == u'\n') {
            ++m_pos;
        }
        ++m_line;
    }

    // The next logical line that is neither blank nor a comment; false at
    // the end. A comment line never continues, whatever it ends with.
    bool readLine(LogicalLine& line)
    {
        line.units.clear();
        line.lines.clear();
        for (;;) {
            while (m_pos < m_text.size() && isBlank(m_text[m_pos]))
                ++m_pos;
            if (m_pos >= m_text.size())
                return false;
            const char16_t first = m_text[m_pos];
            if (isLineEnd(first)) {
                skipLineEnd();
                continue;
            }
            if (first == u'#' || first == u'!') {
                while (m_pos < m_text.size() && !isLineEnd(m_text[m_pos]))
                    ++m_pos;
                skipLineEnd();
                continue;
            }
            break;
        }
        for (;;) {
            size_t end = m_pos;
            while (end < m_text.size() && !isLineEnd(m_text[end]))
                ++end;
            size_t backslashes = 0;
            while (backslashes < end - m_pos && m_text[end - 1 - backslashes] == u'\\')
                ++backslashes;
            const bool continues = backslashes % 2 == 1;
            const size_t keep = continues ? end - 1 : end;
            line.units.append(m_text, m_pos, keep - m_pos);
            line.lines.insert(line.lines.end(), keep - m_pos, m_line);
            m_pos = end;
            if (!continues) {
                skipLineEnd();
                return true;
            }
            if (m_pos >= m_text.size())
                throw BundleFormatException(m_file, m_line, -1, u"backslash at the end of the file");
            skipLineEnd();
            // The continuation's leading white space is not part of the text.
            while (m_pos < m_text.size() && isBlank(m_text[m_pos]))
                ++m_pos;
        }
    }

    // Reads a key (stopping at an unescaped separator or blank) or a value
    // (to the end), resolving escapes.
    String unescape(const LogicalLine& line, size_t& pos, bool key)
    {
        std::u16string result;
        const std::u16string& units = line.units;
        while (pos < units.size()) {
            char16_t c = units[pos];
            if (key && (c == u'=' || c == u':' || isBlank(c)))
                break;
            ++pos;
            if (c != u'\\') {
                result.push_back(c);
                continue;
            }
            // Continuations took every unpaired final backslash, so a unit
            // follows; checked all the same rather than read past the end.
            if (pos >= units.size())
                throw BundleFormatException(m_file, line.lines[pos - 1], -1, u"backslash at the end of the line");
            c = units[pos++];
            switch (c) {
            case u't': result.push_back(u'\t'); break;
            case u'n': result.push_back(u'\n'); break;
            case u'r': result.push_back(u'\r'); break;
            case u'f': result.push_back(u'\f'); break;
            case u'u': {
                uint32_t code = 0;
                for (int k = 0; k < 4; ++k) {
                    const int digit = pos < units.size() ? hexValue(units[pos]) : -1;
                    if (digit < 0)
                        throw BundleFormatException(m_file, line.lines[pos < units.size() ? pos : pos - 1], -1,
                                                    u"bad \\uXXXX escape");
                    code = code * 16 + static_cast<uint32_t>(digit);
                    ++pos;
                }
                result.push_back(static_cast<char16_t>(code));
                break;
            }
            default: result.push_back(c); break;
            }
        }
        return String(result);
    }

    const std::u16string& m_text;
    const String& m_file;
    size_t m_pos = 0;
    int32_t m_line = 1;
};

} // namespace

void parseProperties(const char* data, size_t size, const String& file, std::vector<std::pair<String, String>>& out)
{
    const std::u16string text = decodeUtf8(reinterpret_cast<const unsigned char*>(data), size, file);
    Parser(text, file).run(out);
}

} // namespace detail
} // namespace i18n
} // namespace qv
