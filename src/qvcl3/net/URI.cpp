#include <qv/net/URI.h>

#include "core/ExceptionDefinition.h"
#include "net/AddressText.h"

#include <cstring>
#include <vector>

namespace qv {
namespace net {

namespace {

enum : uint8_t {
    kUnreserved = 1,
    kSubDelim = 2,
    kColon = 4,
    kAt = 8,
    kSlash = 16,
    kQuestion = 32,
    kSchemeChar = 64,
};

constexpr uint8_t kUserInfoSet = kUnreserved | kSubDelim | kColon;
constexpr uint8_t kRegNameSet = kUnreserved | kSubDelim;
constexpr uint8_t kPathSet = kUnreserved | kSubDelim | kColon | kAt | kSlash;
constexpr uint8_t kQuerySet = kPathSet | kQuestion;

struct CharTable {
    uint8_t bits[256] = {};
    constexpr CharTable()
    {
        for (int c = 'a'; c <= 'z'; ++c)
            bits[c] = kUnreserved | kSchemeChar;
        for (int c = 'A'; c <= 'Z'; ++c)
            bits[c] = kUnreserved | kSchemeChar;
        for (int c = '0'; c <= '9'; ++c)
            bits[c] = kUnreserved | kSchemeChar;
        bits[static_cast<int>('-')] = kUnreserved | kSchemeChar;
        bits[static_cast<int>('.')] = kUnreserved | kSchemeChar;
        bits[static_cast<int>('_')] = kUnreserved;
        bits[static_cast<int>('~')] = kUnreserved;
        for (const char c : {'!', '$', '&', '\'', '(', ')', '*', ',', ';', '='})
            bits[static_cast<unsigned char>(c)] = kSubDelim;
        bits[static_cast<int>('+')] = kSubDelim | kSchemeChar;
        bits[static_cast<int>(':')] = kColon;
        bits[static_cast<int>('@')] = kAt;
        bits[static_cast<int>('/')] = kSlash;
        bits[static_cast<int>('?')] = kQuestion;
    }
};

constexpr CharTable kChars;

inline bool is(unsigned char c, uint8_t set) noexcept
{
    return (kChars.bits[c] & set) != 0;
}

using detail::hexValue;

const char kUpperHex[] = "0123456789ABCDEF";

inline void appendEscape(std::string& out, unsigned char c)
{
    out += '%';
    out += kUpperHex[c >> 4];
    out += kUpperHex[c & 15];
}

inline bool isAsciiAlpha(char c) noexcept
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// ASCII text to a String without a converter: the encoded components are
// ASCII by construction.
String asciiString(const std::string& text)
{
    String result(static_cast<int32_t>(text.size()));
    char16_t* units = result.getWriteLock(static_cast<int32_t>(text.size()));
    for (size_t i = 0; i < text.size(); ++i)
        units[i] = static_cast<unsigned char>(text[i]);
    result.releaseWriteLock(static_cast<int32_t>(text.size()));
    return result;
}

// UTF-8 to UTF-16; malformed sequences become U+FFFD (decoded escapes may
// hold any bytes).
String utf8String(const char* text, size_t length)
{
    std::u16string units;
    units.reserve(length);
    size_t i = 0;
    while (i < length) {
        const unsigned char lead = static_cast<unsigned char>(text[i]);
        if (lead < 0x80) {
            units += static_cast<char16_t>(lead);
            ++i;
            continue;
        }
        const int extra = lead >= 0xF0 ? (lead <= 0xF4 ? 3 : -1) : lead >= 0xE0 ? 2 : lead >= 0xC2 ? 1 : -1;
        char32_t value = extra == 3 ? lead & 0x07u : extra == 2 ? lead & 0x0Fu : lead & 0x1Fu;
        bool ok = extra > 0 && i + static_cast<size_t>(extra) < length;
        for (int k = 1; ok && k <= extra; ++k) {
            const unsigned char next = static_cast<unsigned char>(text[i + static_cast<size_t>(k)]);
            if ((next & 0xC0) != 0x80)
                ok = false;
            else
                value = value << 6 | (next & 0x3Fu);
        }
        const char32_t minimum = extra == 3 ? 0x10000 : extra == 2 ? 0x800 : 0x80;
        if (!ok || value < minimum || value > 0x10FFFF || (value >= 0xD800 && value <= 0xDFFF)) {
            units += u'\uFFFD';
            ++i;
            continue;
        }
        if (value >= 0x10000) {
            value -= 0x10000;
            units += static_cast<char16_t>(0xD800 + (value >> 10));
            units += static_cast<char16_t>(0xDC00 + (value & 0x3FF));
        } else {
            units += static_cast<char16_t>(value);
        }
        i += static_cast<size_t>(extra) + 1;
    }
    return String(units.data(), static_cast<int32_t>(units.size()));
}

// What the parser needs to report an error against the caller's text.
struct ParseInput {
    const char* text;
    size_t length;
    const String* original;

    [[noreturn]] void fail(const char16_t* reason, size_t position) const
    {
        // UTF-16 units before the byte position, counted as the input's
        // text decodes (a malformed byte is one U+FFFD).
        const int32_t index = utf8String(text, position < length ? position : length).getLength();
        throw URISyntaxException(original != nullptr ? *original : utf8String(text, length), String(reason), index);
    }

    // Validates [begin, end) against set (escapes allowed) and stores it in
    // out, escaping bytes beyond ASCII.
    void component(size_t begin, size_t end, uint8_t set, const char16_t* reason, std::string& out) const
    {
        bool high = false;
        for (size_t i = begin; i < end; ++i) {
            const unsigned char c = static_cast<unsigned char>(text[i]);
            if (is(c, set))
                continue;
            if (c == '%') {
                if (i + 2 >= end || hexValue(text[i + 1]) < 0 || hexValue(text[i + 2]) < 0)
                    fail(u"Malformed escape pair", i);
                i += 2;
                continue;
            }
            if (c >= 0x80) {
                high = true;
                continue;
            }
            fail(reason, i);
        }
        if (!high) {
            out.assign(text + begin, end - begin);
            return;
        }
        out.clear();
        out.reserve((end - begin) * 3);
        for (size_t i = begin; i < end; ++i) {
            const unsigned char c = static_cast<unsigned char>(text[i]);
            if (c >= 0x80)
                appendEscape(out, c);
            else
                out += static_cast<char>(c);
        }
    }
};

// Upper-case escapes; escaped unreserved characters decoded.
void normalizeEscapes(std::string& text)
{
    if (text.find('%') == std::string::npos)
        return;
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%' && i + 2 < text.size()) {
            const int value = hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]);
            if (is(static_cast<unsigned char>(value), kUnreserved)) {
                out += static_cast<char>(value);
            } else {
                appendEscape(out, static_cast<unsigned char>(value));
            }
            i += 2;
        } else {
            out += text[i];
        }
    }
    text.swap(out);
}

// Lower case outside percent escapes, whose digits stay upper case.
void toLowerAscii(std::string& text)
{
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '%')
            i += 2;
        else if (text[i] >= 'A' && text[i] <= 'Z')
            text[i] = static_cast<char>(text[i] - 'A' + 'a');
    }
}

// Dot segments of a relative-path reference: "." goes, ".." climbs where a
// named segment precedes it and is kept otherwise.
std::string normalizeRelativePath(const std::string& path)
{
    std::vector<std::string> segments;
    size_t start = 0;
    bool trailingSlash = false;
    while (start <= path.size()) {
        size_t end = path.find('/', start);
        if (end == std::string::npos)
            end = path.size();
        const std::string segment = path.substr(start, end - start);
        const bool last = end == path.size();
        if (segment == ".") {
            trailingSlash = last;
        } else if (segment == "..") {
            if (!segments.empty() && segments.back() != "..")
                segments.pop_back();
            else
                segments.push_back(segment);
            trailingSlash = last && !segments.empty() && segments.back() != "..";
        } else {
            segments.push_back(segment);
            trailingSlash = false;
        }
        start = end + 1;
    }
    std::string out;
    for (size_t i = 0; i < segments.size(); ++i) {
        if (i > 0)
            out += '/';
        out += segments[i];
    }
    if (trailingSlash || (!segments.empty() && segments.back() == ".." && !path.empty() && path.back() == '/'))
        out += '/';
    return out;
}

} // namespace

URISyntaxException::URISyntaxException() : m_index(-1) {}

URISyntaxException::URISyntaxException(const String& input, const String& reason, int32_t index)
    : Exception(String(reason).append(u" at index ").append(String::valueOf(index)).append(u": ").append(input)),
      m_input(input), m_reason(reason), m_index(index)
{}

URISyntaxException::URISyntaxException(const URISyntaxException& other) = default;
URISyntaxException& URISyntaxException::operator=(const URISyntaxException& other) = default;
URISyntaxException::~URISyntaxException() = default;

Result URISyntaxException::getResult() const
{
    return static_cast<Result>(0x80070057u);
}

URI::URI()
    : m_port(-1), m_hasAuthority(false), m_hasUserInfo(false), m_hostLiteral(false), m_hasQuery(false),
      m_hasFragment(false)
{}

URI::URI(const String& text) : URI()
{
    const std::string utf8 = text.toUtf8();
    parse(utf8.data(), utf8.size(), &text);
}

URI::URI(const char* text) : URI()
{
    if (text == nullptr)
        throw URISyntaxException(String(), String(u"Null input"), 0);
    parse(text, std::strlen(text), nullptr);
}

URI::URI(const std::string& text) : URI()
{
    parse(text.data(), text.size(), nullptr);
}

URI::URI(const URI& other) = default;
URI& URI::operator=(const URI& other) = default;
URI::URI(URI&& other) noexcept = default;
URI& URI::operator=(URI&& other) noexcept = default;
URI::~URI() noexcept(false) = default;

void URI::parse(const char* text, size_t length, const String* original)
{
    const ParseInput input{text, length, original};
    size_t i = 0;

    // A scheme is a letter and scheme characters up to the first ':'.
    if (length > 0 && isAsciiAlpha(text[0])) {
        size_t j = 1;
        while (j < length && is(static_cast<unsigned char>(text[j]), kSchemeChar))
            ++j;
        if (j < length && text[j] == ':') {
            m_scheme.assign(text, j);
            i = j + 1;
        }
    } else if (length > 0 && text[0] == ':') {
        input.fail(u"Expected scheme name", 0);
    }

    if (length - i >= 2 && text[i] == '/' && text[i + 1] == '/') {
        m_hasAuthority = true;
        const size_t begin = i + 2;
        size_t end = begin;
        while (end < length && text[end] != '/' && text[end] != '?' && text[end] != '#')
            ++end;
        size_t hostBegin = begin;
        const void* at = std::memchr(text + begin, '@', end - begin);
        if (at != nullptr) {
            const size_t atIndex = static_cast<size_t>(static_cast<const char*>(at) - text);
            input.component(begin, atIndex, kUserInfoSet, u"Illegal character in user info", m_userInfo);
            m_hasUserInfo = true;
            hostBegin = atIndex + 1;
        }
        size_t hostEnd;
        if (hostBegin < end && text[hostBegin] == '[') {
            const void* close = std::memchr(text + hostBegin, ']', end - hostBegin);
            if (close == nullptr)
                input.fail(u"Expected closing bracket for IPv6 address", end);
            hostEnd = static_cast<size_t>(static_cast<const char*>(close) - text);
            const char* literal = text + hostBegin + 1;
            const size_t literalLength = hostEnd - hostBegin - 1;
            if (literalLength > 0 && (literal[0] == 'v' || literal[0] == 'V')) {
                size_t k = 1;
                while (k < literalLength && hexValue(literal[k]) >= 0)
                    ++k;
                if (k == 1 || k + 1 >= literalLength || literal[k] != '.')
                    input.fail(u"Malformed IPvFuture address", hostBegin + 1);
                for (size_t m = k + 1; m < literalLength; ++m) {
                    if (!is(static_cast<unsigned char>(literal[m]), kUnreserved | kSubDelim | kColon))
                        input.fail(u"Illegal character in IPvFuture address", hostBegin + 1 + m);
                }
            } else {
                uint8_t bytes[16];
                if (!detail::parseIPv6(literal, literalLength, bytes, nullptr))
                    input.fail(u"Malformed IPv6 address", hostBegin + 1);
            }
            m_host.assign(literal, literalLength);
            m_hostLiteral = true;
            ++hostEnd;
            if (hostEnd < end && text[hostEnd] != ':')
                input.fail(u"Illegal character in authority", hostEnd);
        } else {
            const void* colon = std::memchr(text + hostBegin, ':', end - hostBegin);
            hostEnd = colon != nullptr ? static_cast<size_t>(static_cast<const char*>(colon) - text) : end;
            input.component(hostBegin, hostEnd, kRegNameSet, u"Illegal character in authority", m_host);
        }
        if (hostEnd < end) {
            // text[hostEnd] is ':'
            uint32_t port = 0;
            for (size_t k = hostEnd + 1; k < end; ++k) {
                if (text[k] < '0' || text[k] > '9')
                    input.fail(u"Illegal character in port number", k);
                port = port * 10 + static_cast<uint32_t>(text[k] - '0');
                if (port > 65535)
                    input.fail(u"Port number out of range", hostEnd + 1);
            }
            if (hostEnd + 1 < end)
                m_port = static_cast<int32_t>(port);
        }
        i = end;
    }

    size_t pathEnd = i;
    while (pathEnd < length && text[pathEnd] != '?' && text[pathEnd] != '#')
        ++pathEnd;
    input.component(i, pathEnd, kPathSet, u"Illegal character in path", m_path);
    if (m_scheme.empty() && !m_hasAuthority) {
        // "a:b" would read as a scheme: a relative path may not have a colon
        // in its first segment.
        const size_t slash = m_path.find('/');
        const size_t colon = m_path.find(':');
        if (colon != std::string::npos && (slash == std::string::npos || colon < slash))
            input.fail(u"Expected scheme name", 0);
    }
    i = pathEnd;
    if (i < length && text[i] == '?') {
        size_t queryEnd = i + 1;
        while (queryEnd < length && text[queryEnd] != '#')
            ++queryEnd;
        input.component(i + 1, queryEnd, kQuerySet, u"Illegal character in query", m_query);
        m_hasQuery = true;
        i = queryEnd;
    }
    if (i < length) {
        // text[i] is '#'
        input.component(i + 1, length, kQuerySet, u"Illegal character in fragment", m_fragment);
        m_hasFragment = true;
    }
}

String URI::getScheme() const
{
    return asciiString(m_scheme);
}

String URI::getRawAuthority() const
{
    if (!m_hasAuthority)
        return String();
    std::string authority;
    if (m_hasUserInfo)
        authority.append(m_userInfo).append(1, '@');
    authority.append(m_hostLiteral ? "[" + m_host + "]" : m_host);
    if (m_port >= 0)
        authority.append(1, ':').append(std::to_string(m_port));
    return asciiString(authority);
}

String URI::getRawUserInfo() const
{
    return asciiString(m_userInfo);
}

String URI::getUserInfo() const
{
    const std::string decoded = decode(m_userInfo);
    return utf8String(decoded.data(), decoded.size());
}

String URI::getHost() const
{
    if (m_hostLiteral)
        return asciiString(m_host);
    const std::string decoded = decode(m_host);
    return utf8String(decoded.data(), decoded.size());
}

String URI::getRawPath() const
{
    return asciiString(m_path);
}

String URI::getPath() const
{
    const std::string decoded = decode(m_path);
    return utf8String(decoded.data(), decoded.size());
}

String URI::getRawQuery() const
{
    return asciiString(m_query);
}

String URI::getQuery() const
{
    const std::string decoded = decode(m_query);
    return utf8String(decoded.data(), decoded.size());
}

String URI::getRawFragment() const
{
    return asciiString(m_fragment);
}

String URI::getFragment() const
{
    const std::string decoded = decode(m_fragment);
    return utf8String(decoded.data(), decoded.size());
}

URI URI::normalize() const
{
    URI result(*this);
    toLowerAscii(result.m_scheme);
    normalizeEscapes(result.m_userInfo);
    // Decoded first: an escaped letter of the host is lowered as well.
    normalizeEscapes(result.m_host);
    toLowerAscii(result.m_host);
    normalizeEscapes(result.m_path);
    normalizeEscapes(result.m_query);
    normalizeEscapes(result.m_fragment);
    if (!result.m_scheme.empty() || result.m_hasAuthority || (!result.m_path.empty() && result.m_path[0] == '/'))
        result.m_path = removeDotSegments(result.m_path);
    else
        result.m_path = normalizeRelativePath(result.m_path);
    return result;
}

std::string URI::removeDotSegments(const std::string& path)
{
    std::string out;
    out.reserve(path.size());
    const char* p = path.data();
    const size_t n = path.size();
    size_t i = 0;
    auto rest = [&](const char* prefix, size_t length) {
        return n - i >= length && std::memcmp(p + i, prefix, length) == 0;
    };
    auto restIs = [&](const char* whole, size_t length) {
        return n - i == length && std::memcmp(p + i, whole, length) == 0;
    };
    auto dropLastSegment = [&out] {
        const size_t slash = out.rfind('/');
        out.resize(slash == std::string::npos ? 0 : slash);
    };
    while (i < n) {
        if (rest("../", 3)) {
            i += 3;
        } else if (rest("./", 2)) {
            i += 2;
        } else if (rest("/./", 3)) {
            i += 2;
        } else if (restIs("/.", 2)) {
            out += '/';
            i = n;
        } else if (rest("/../", 4)) {
            i += 3;
            dropLastSegment();
        } else if (restIs("/..", 3)) {
            dropLastSegment();
            out += '/';
            i = n;
        } else if (restIs(".", 1) || restIs("..", 2)) {
            i = n;
        } else {
            size_t end = p[i] == '/' ? i + 1 : i;
            while (end < n && p[end] != '/')
                ++end;
            out.append(p + i, end - i);
            i = end;
        }
    }
    return out;
}

URI URI::resolve(const URI& reference) const
{
    URI target;
    if (!reference.m_scheme.empty()) {
        target = reference;
        target.m_path = removeDotSegments(reference.m_path);
        return target;
    }
    if (reference.m_hasAuthority) {
        target = reference;
        target.m_path = removeDotSegments(reference.m_path);
    } else {
        target.m_hasAuthority = m_hasAuthority;
        target.m_hasUserInfo = m_hasUserInfo;
        target.m_userInfo = m_userInfo;
        target.m_host = m_host;
        target.m_hostLiteral = m_hostLiteral;
        target.m_port = m_port;
        if (reference.m_path.empty()) {
            target.m_path = m_path;
            target.m_hasQuery = reference.m_hasQuery || m_hasQuery;
            target.m_query = reference.m_hasQuery ? reference.m_query : m_query;
        } else {
            if (reference.m_path[0] == '/') {
                target.m_path = removeDotSegments(reference.m_path);
            } else {
                std::string merged;
                if (m_hasAuthority && m_path.empty()) {
                    merged = "/" + reference.m_path;
                } else {
                    const size_t slash = m_path.rfind('/');
                    merged =
                        slash == std::string::npos ? reference.m_path : m_path.substr(0, slash + 1) + reference.m_path;
                }
                target.m_path = removeDotSegments(merged);
            }
            target.m_hasQuery = reference.m_hasQuery;
            target.m_query = reference.m_query;
        }
        target.m_hasFragment = reference.m_hasFragment;
        target.m_fragment = reference.m_fragment;
    }
    target.m_scheme = m_scheme;
    target.m_hasFragment = reference.m_hasFragment;
    target.m_fragment = reference.m_fragment;
    return target;
}

URI URI::resolve(const String& reference) const
{
    return resolve(URI(reference));
}

std::string URI::recompose() const
{
    std::string out;
    out.reserve(m_scheme.size() + m_userInfo.size() + m_host.size() + m_path.size() + m_query.size() +
                m_fragment.size() + 16);
    if (!m_scheme.empty())
        out.append(m_scheme).append(1, ':');
    if (m_hasAuthority) {
        out.append("//");
        if (m_hasUserInfo)
            out.append(m_userInfo).append(1, '@');
        if (m_hostLiteral)
            out.append(1, '[').append(m_host).append(1, ']');
        else
            out.append(m_host);
        if (m_port >= 0)
            out.append(1, ':').append(std::to_string(m_port));
    } else if (m_path.size() >= 2 && m_path[0] == '/' && m_path[1] == '/') {
        // Would read back as an authority.
        out.append("/.");
    } else if (m_scheme.empty()) {
        const size_t slash = m_path.find('/');
        const size_t colon = m_path.find(':');
        if (colon != std::string::npos && (slash == std::string::npos || colon < slash))
            out.append("./"); // would read back as a scheme
    }
    out.append(m_path);
    if (m_hasQuery)
        out.append(1, '?').append(m_query);
    if (m_hasFragment)
        out.append(1, '#').append(m_fragment);
    return out;
}

std::string URI::toStdString() const
{
    return recompose();
}

String URI::toString()
{
    return asciiString(recompose());
}

bool URI::operator==(const URI& other) const
{
    return m_port == other.m_port && m_hasAuthority == other.m_hasAuthority && m_hasUserInfo == other.m_hasUserInfo &&
           m_hostLiteral == other.m_hostLiteral && m_hasQuery == other.m_hasQuery &&
           m_hasFragment == other.m_hasFragment && m_scheme == other.m_scheme && m_userInfo == other.m_userInfo &&
           m_host == other.m_host && m_path == other.m_path && m_query == other.m_query &&
           m_fragment == other.m_fragment;
}

bool URI::equals(const Object& other) const
{
    const auto* uri = dynamic_cast<const URI*>(&other);
    return uri != nullptr && *this == *uri;
}

int URI::compareTo(const Object& other) const
{
    const auto* uri = dynamic_cast<const URI*>(&other);
    if (uri == nullptr)
        return Object::compareTo(other);
    const int order = recompose().compare(uri->recompose());
    return order < 0 ? -1 : order > 0 ? 1 : 0;
}

uint32_t URI::hashCode() const
{
    uint32_t hash = 2166136261u;
    for (const std::string* part : {&m_scheme, &m_userInfo, &m_host, &m_path, &m_query, &m_fragment}) {
        for (const char c : *part)
            hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
        hash = (hash ^ 0xFFu) * 16777619u;
    }
    return hash ^ static_cast<uint32_t>(m_port);
}

Object* URI::clone() const
{
    return new URI(*this);
}

std::string URI::encode(const std::string& utf8, Component component)
{
    uint8_t set = kUnreserved;
    switch (component) {
    case USER_INFO: set = kUserInfoSet; break;
    case HOST: set = kRegNameSet; break;
    case PATH: set = kPathSet; break;
    case PATH_SEGMENT: set = kUnreserved | kSubDelim | kColon | kAt; break;
    case QUERY:
    case FRAGMENT:
    case QUERY_PARAM: set = kQuerySet; break;
    case UNRESERVED: break;
    }
    std::string out;
    out.reserve(utf8.size());
    for (const char ch : utf8) {
        const unsigned char c = static_cast<unsigned char>(ch);
        const bool reservedInParam = component == QUERY_PARAM && (c == '&' || c == '=' || c == '+' || c == ';');
        if (is(c, set) && !reservedInParam)
            out += ch;
        else
            appendEscape(out, c);
    }
    return out;
}

String URI::encode(const String& text, Component component)
{
    return asciiString(encode(text.toUtf8(), component));
}

std::string URI::decode(const std::string& text)
{
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        if (i + 2 >= text.size() || hexValue(text[i + 1]) < 0 || hexValue(text[i + 2]) < 0) {
            ParseInput{text.data(), text.size(), nullptr}.fail(u"Malformed escape pair", i);
        }
        out += static_cast<char>(hexValue(text[i + 1]) * 16 + hexValue(text[i + 2]));
        i += 2;
    }
    return out;
}

String URI::decode(const String& text)
{
    const std::string utf8 = text.toUtf8();
    std::string decoded;
    try {
        decoded = decode(utf8);
    } catch (const URISyntaxException& e) {
        throw URISyntaxException(text, e.getReason(), e.getIndex());
    }
    return utf8String(decoded.data(), decoded.size());
}

} // namespace net
} // namespace qv
