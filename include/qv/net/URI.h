#ifndef QV_NET_URI_H
#define QV_NET_URI_H

#include <qv/core/Exception.h>
#include <qv/core/Object.h>
#include <qv/lang/String.h>

#include <cstdint>
#include <string>

namespace qv {
namespace net {

// Text that is not a URI reference. getIndex() is the position (in UTF-16
// units of the input) of the first character that does not fit; the message
// reads "<reason> at index <n>: <input>". Its result is 0x80070057.
class QV_EXPORT URISyntaxException : public Exception {
public:
    URISyntaxException();
    URISyntaxException(const String& input, const String& reason, int32_t index);
    URISyntaxException(const URISyntaxException& other);
    URISyntaxException& operator=(const URISyntaxException& other);
    ~URISyntaxException() override;

    Result getResult() const override;
    const String& getInput() const { return m_input; }
    const String& getReason() const { return m_reason; }
    int32_t getIndex() const { return m_index; }

private:
    String m_input;
    String m_reason;
    int32_t m_index;
};

// A URI reference (RFC 3986): scheme, authority (user info, host, port),
// path, query and fragment, each kept in its percent-encoded form. The getRaw
// accessors give that form; the plain ones decode it (as UTF-8). Characters
// beyond ASCII in the input are taken as UTF-8 and percent-encoded, so the
// text form is always ASCII. Values copy freely.
class QV_EXPORT URI : public Object {
public:
    // What encode() leaves alone besides the unreserved characters.
    enum Component {
        USER_INFO,    // sub-delims and ':'
        HOST,         // sub-delims
        PATH,         // sub-delims, ':', '@' and '/'
        PATH_SEGMENT, // sub-delims, ':' and '@' ('/' is encoded)
        QUERY,        // sub-delims, ':', '@', '/' and '?'
        QUERY_PARAM,  // as QUERY without '&', '=', '+' and ';'
        FRAGMENT,     // as QUERY
        UNRESERVED    // nothing but the unreserved characters
    };

    // The empty relative reference.
    URI();
    // Parses text; throws URISyntaxException.
    explicit URI(const String& text);
    // UTF-8 text.
    explicit URI(const char* text);
    explicit URI(const std::string& text);
    URI(const URI& other);
    URI& operator=(const URI& other);
    URI(URI&& other) noexcept;
    URI& operator=(URI&& other) noexcept;
    ~URI() noexcept(false) override;

    // Empty strings for absent parts; getPort() is -1 without a port.
    String getScheme() const;
    String getRawAuthority() const;
    String getRawUserInfo() const;
    String getUserInfo() const;
    // Without the brackets of an IPv6 literal.
    String getHost() const;
    int32_t getPort() const noexcept { return m_port; }
    String getRawPath() const;
    String getPath() const;
    String getRawQuery() const;
    String getQuery() const;
    String getRawFragment() const;
    String getFragment() const;

    bool isAbsolute() const noexcept { return !m_scheme.empty(); }
    bool hasAuthority() const noexcept { return m_hasAuthority; }
    bool hasQuery() const noexcept { return m_hasQuery; }
    bool hasFragment() const noexcept { return m_hasFragment; }
    // The host was an IP literal ("[...]").
    bool isHostLiteral() const noexcept { return m_hostLiteral; }

    // Syntax-based normalisation: scheme and host in lower case, percent
    // escapes in upper case, escaped unreserved characters decoded, and the
    // dot segments of the path removed (relative-path references keep their
    // leading "..", which still mean something once resolved).
    URI normalize() const;
    // Resolves reference against this URI, the base (RFC 3986 section 5.2.2,
    // strict: a reference with a scheme is taken as it is).
    URI resolve(const URI& reference) const;
    URI resolve(const String& reference) const;

    using Object::toString;
    // The recomposed text (section 5.3), ASCII.
    String toString() override;
    std::string toStdString() const;
    // Text equality of the components (normalise both first to compare
    // equivalent spellings).
    bool equals(const Object& other) const override;
    int compareTo(const Object& other) const override;
    uint32_t hashCode() const override;
    Object* clone() const override;
    bool operator==(const URI& other) const;
    bool operator!=(const URI& other) const { return !(*this == other); }

    // Percent-encodes the UTF-8 form of text for the given component.
    static String encode(const String& text, Component component);
    static std::string encode(const std::string& utf8, Component component);
    // Decodes every %XX (UTF-8 underneath); a '%' without two hexadecimal
    // digits throws URISyntaxException.
    static String decode(const String& text);
    static std::string decode(const std::string& text);

    // Removes "." and ".." segments as RFC 3986 section 5.2.4 describes.
    static std::string removeDotSegments(const std::string& path);

private:
    void parse(const char* text, size_t length, const String* original);
    std::string recompose() const;

    std::string m_scheme;
    std::string m_userInfo;
    std::string m_host;
    std::string m_path;
    std::string m_query;
    std::string m_fragment;
    int32_t m_port;
    bool m_hasAuthority;
    bool m_hasUserInfo;
    bool m_hostLiteral;
    bool m_hasQuery;
    bool m_hasFragment;
};

} // namespace net
} // namespace qv

#endif
