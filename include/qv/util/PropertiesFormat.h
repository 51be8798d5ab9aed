#ifndef QV_UTIL_PROPERTIESFORMAT_H
#define QV_UTIL_PROPERTIESFORMAT_H

#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace qv {
namespace util {

// A properties text that can't be read: the message names the source and
// the line ("settings.properties:12: bad \\u escape"). Result 0x80070057.
class QV_EXPORT PropertiesFormatException : public Exception {
public:
    PropertiesFormatException();
    PropertiesFormatException(const String& source, int32_t line, const String& problem);
    PropertiesFormatException(const PropertiesFormatException& other);
    PropertiesFormatException& operator=(const PropertiesFormatException& other);
    ~PropertiesFormatException() override;

    String getSource() const;
    // 1-based; the line where the faulty logical line starts.
    int32_t getLine() const;
    Result getResult() const override;

private:
    String m_source;
    int32_t m_line;
};

// The properties file syntax Java programmers know: "key=value",
// "key: value" and "key value"; '#' or '!' comment lines; a backslash at a
// line's end continues the line (leading white space of the next one is
// dropped); \t \n \r \f and \uXXXX escapes, and a backslash before any other
// character stands for that character. Lines end with "\n", "\r\n" or "\r".
class QV_EXPORT PropertiesFormat {
public:
    typedef std::vector<std::pair<String, String>> Entries;

    // The entries in the order they stand; a later one with the same key is
    // kept too (callers decide). A bad \u escape, or a backslash that ends the
    // text, throws PropertiesFormatException naming source and line.
    static Entries parse(const String& text, const String& source);
    // "key=value" with what must be escaped escaped, so that parse gives key
    // and value back.
    static String formatEntry(const String& key, const String& value);
};

} // namespace util
} // namespace qv

#endif
