#ifndef QV_UTIL_STRINGTOKENIZER_H
#define QV_UTIL_STRINGTOKENIZER_H

#include <qv/core/Object.h>
#include <qv/lang/String.h>

#include <cstdint>

namespace qv {
namespace util {

// Splits a text into tokens at any of a set of delimiter characters, as
// Java's StringTokenizer does: runs of delimiters separate tokens and no
// empty token is returned. With returnDelimiters each delimiter is a token of
// its own.
//
// In QUOTED mode, text between double or single quotes is never split and a
// backslash takes the next character literally (inside quotes too); the
// quotes and backslashes themselves are not part of the token, so
// `a "b c" d\ e` gives a, b c, d e. A quote left open is an error:
// IllegalStateException naming the position.
class QV_EXPORT StringTokenizer : public Object {
public:
    enum Mode { PLAIN = 0, QUOTED = 1 };

    explicit StringTokenizer(const String& text, const String& delimiters = String(u" \t\n\r\f"),
                             bool returnDelimiters = false, Mode mode = PLAIN);
    ~StringTokenizer() override;

    bool hasMoreTokens() const;
    // IllegalStateException("no more tokens") at the end.
    String nextToken();
    // Changes the delimiters for this and later tokens.
    String nextToken(const String& delimiters);
    // The tokens nextToken would still return.
    int32_t countTokens() const;

private:
    bool isDelimiter(char16_t c) const;
    int32_t skipDelimiters(int32_t position) const;
    // The end of the token starting at position; its text in *token if given.
    int32_t scanToken(int32_t position, String* token) const;

    String m_text;
    String m_delimiters;
    bool m_returnDelimiters;
    Mode m_mode;
    int32_t m_position;
};

} // namespace util
} // namespace qv

#endif
