#include <qv/util/StringTokenizer.h>

#include <qv/core/Exception.h>

namespace qv {
namespace util {

StringTokenizer::StringTokenizer(const String& text, const String& delimiters, bool returnDelimiters, Mode mode)
    : m_text(text), m_delimiters(delimiters), m_returnDelimiters(returnDelimiters), m_mode(mode), m_position(0)
{}

StringTokenizer::~StringTokenizer() = default;

bool StringTokenizer::isDelimiter(char16_t c) const
{
    return m_delimiters.indexOf(c) >= 0;
}

int32_t StringTokenizer::skipDelimiters(int32_t position) const
{
    if (m_returnDelimiters)
        return position;
    const int32_t length = m_text.getLength();
    while (position < length && isDelimiter(m_text.getCharAt(position)))
        ++position;
    return position;
}

int32_t StringTokenizer::scanToken(int32_t position, String* token) const
{
    const int32_t length = m_text.getLength();
    if (m_returnDelimiters && position < length && isDelimiter(m_text.getCharAt(position))) {
        if (token)
            *token = m_text.substring(position, position + 1);
        return position + 1;
    }
    if (m_mode == PLAIN) {
        int32_t end = position;
        while (end < length && !isDelimiter(m_text.getCharAt(end)))
            ++end;
        if (token)
            *token = m_text.substring(position, end);
        return end;
    }
    char16_t quote = 0;
    int32_t quoteStart = 0;
    int32_t end = position;
    while (end < length) {
        const char16_t c = m_text.getCharAt(end);
        if (quote == 0 && isDelimiter(c))
            break;
        ++end;
        if (c == u'\\' && end < length) {
            if (token)
                token->append(m_text.getCharAt(end));
            ++end;
        } else if (quote != 0 && c == quote) {
            quote = 0;
        } else if (quote == 0 && (c == u'"' || c == u'\'')) {
            quote = c;
            quoteStart = end - 1;
        } else if (token) {
            token->append(c);
        }
    }
    if (quote != 0)
        throw IllegalStateException(String(u"unterminated quote at ").append(String::valueOf(quoteStart)));
    return end;
}

bool StringTokenizer::hasMoreTokens() const
{
    return skipDelimiters(m_position) < m_text.getLength();
}

String StringTokenizer::nextToken()
{
    const int32_t start = skipDelimiters(m_position);
    if (start >= m_text.getLength())
        throw IllegalStateException(String(u"no more tokens"));
    String token;
    m_position = scanToken(start, &token);
    return token;
}

String StringTokenizer::nextToken(const String& delimiters)
{
    m_delimiters = delimiters;
    return nextToken();
}

int32_t StringTokenizer::countTokens() const
{
    int32_t count = 0;
    int32_t position = skipDelimiters(m_position);
    while (position < m_text.getLength()) {
        position = skipDelimiters(scanToken(position, nullptr));
        ++count;
    }
    return count;
}

} // namespace util
} // namespace qv
