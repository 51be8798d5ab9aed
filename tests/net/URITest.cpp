#include <qv/net/URI.h>

#include "AllocationSweep.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>

using qv::String;
using qv::net::URI;
using qv::net::URISyntaxException;

namespace {

std::string resolved(const char* reference)
{
    static const URI base("http://a/b/c/d;p?q");
    return base.resolve(URI(reference)).toStdString();
}

std::string normalized(const char* text)
{
    return URI(text).normalize().toStdString();
}

URISyntaxException syntaxError(const String& text)
{
    try {
        URI uri(text);
    } catch (const URISyntaxException& e) {
        return e;
    }
    ADD_FAILURE() << "accepted " << text.toUtf8();
    return URISyntaxException();
}

} // namespace

TEST(URI, ResolvesTheNormalAndAbnormalExamplesOfRfc3986)
{
    const std::pair<const char*, const char*> cases[] = {
        {"g:h", "g:h"},
        {"g", "http://a/b/c/g"},
        {"./g", "http://a/b/c/g"},
        {"g/", "http://a/b/c/g/"},
        {"/g", "http://a/g"},
        {"//g", "http://g"},
        {"?y", "http://a/b/c/d;p?y"},
        {"g?y", "http://a/b/c/g?y"},
        {"#s", "http://a/b/c/d;p?q#s"},
        {"g#s", "http://a/b/c/g#s"},
        {"g?y#s", "http://a/b/c/g?y#s"},
        {";x", "http://a/b/c/;x"},
        {"g;x", "http://a/b/c/g;x"},
        {"g;x?y#s", "http://a/b/c/g;x?y#s"},
        {"", "http://a/b/c/d;p?q"},
        {".", "http://a/b/c/"},
        {"./", "http://a/b/c/"},
        {"..", "http://a/b/"},
        {"../", "http://a/b/"},
        {"../g", "http://a/b/g"},
        {"../..", "http://a/"},
        {"../../", "http://a/"},
        {"../../g", "http://a/g"},
        // The abnormal examples.
        {"../../../g", "http://a/g"},
        {"../../../../g", "http://a/g"},
        {"/./g", "http://a/g"},
        {"/../g", "http://a/g"},
        {"g.", "http://a/b/c/g."},
        {".g", "http://a/b/c/.g"},
        {"g..", "http://a/b/c/g.."},
        {"..g", "http://a/b/c/..g"},
        {"./../g", "http://a/b/g"},
        {"./g/.", "http://a/b/c/g/"},
        {"g/./h", "http://a/b/c/g/h"},
        {"g/../h", "http://a/b/c/h"},
        {"g;x=1/./y", "http://a/b/c/g;x=1/y"},
        {"g;x=1/../y", "http://a/b/c/y"},
        {"g?y/./x", "http://a/b/c/g?y/./x"},
        {"g?y/../x", "http://a/b/c/g?y/../x"},
        {"g#s/./x", "http://a/b/c/g#s/./x"},
        {"g#s/../x", "http://a/b/c/g#s/../x"},
        {"http:g", "http:g"},
    };
    for (const auto& c : cases)
        EXPECT_EQ(resolved(c.first), c.second) << c.first;
    // Merging against a base with an authority and an empty path.
    EXPECT_EQ(URI("http://a").resolve(URI("g")).toStdString(), "http://a/g");
    EXPECT_EQ(URI("http://a/b").resolve(String(u"?q")).toStdString(), "http://a/b?q");
}

TEST(URI, SplitsEveryComponent)
{
    const URI uri(String(u"HTTP://us%65r:pw@[2001:DB8::7]:8080/a%20b/c?x=1&y=%C3%A4#frag%2F"));
    EXPECT_EQ(uri.getScheme().toUtf8(), "HTTP");
    EXPECT_EQ(uri.getRawUserInfo().toUtf8(), "us%65r:pw");
    EXPECT_EQ(uri.getUserInfo().toUtf8(), "user:pw");
    EXPECT_EQ(uri.getHost().toUtf8(), "2001:DB8::7");
    EXPECT_TRUE(uri.isHostLiteral());
    EXPECT_EQ(uri.getPort(), 8080);
    EXPECT_EQ(uri.getRawAuthority().toUtf8(), "us%65r:pw@[2001:DB8::7]:8080");
    EXPECT_EQ(uri.getRawPath().toUtf8(), "/a%20b/c");
    EXPECT_EQ(uri.getPath().toUtf8(), "/a b/c");
    EXPECT_EQ(uri.getRawQuery().toUtf8(), "x=1&y=%C3%A4");
    EXPECT_EQ(uri.getQuery().toU16String(), u"x=1&y=\u00e4");
    EXPECT_EQ(uri.getFragment().toUtf8(), "frag/");
    EXPECT_TRUE(uri.isAbsolute() && uri.hasAuthority() && uri.hasQuery() && uri.hasFragment());

    const URI mail("mailto:someone@example.com");
    EXPECT_FALSE(mail.hasAuthority());
    EXPECT_EQ(mail.getPath().toUtf8(), "someone@example.com");
    EXPECT_EQ(mail.getPort(), -1);

    const URI file("file:///etc/hosts");
    EXPECT_TRUE(file.hasAuthority());
    EXPECT_EQ(file.getHost().getLength(), 0);
    EXPECT_EQ(file.toStdString(), "file:///etc/hosts");

    const URI empty("");
    EXPECT_FALSE(empty.isAbsolute() || empty.hasAuthority() || empty.hasQuery() || empty.hasFragment());
    EXPECT_EQ(URI("?").toStdString(), "?");
    EXPECT_EQ(URI("#").toStdString(), "#");
    EXPECT_EQ(URI("http://h:/p").getPort(), -1);
    EXPECT_EQ(URI("http://[v1.fe:80]/").getHost().toUtf8(), "v1.fe:80");
    // Text beyond ASCII is taken as UTF-8 and escaped.
    EXPECT_EQ(URI(String(u"http://example.com/\u00e4")).toStdString(), "http://example.com/%C3%A4");
}

TEST(URI, ReportsTheFirstBadPosition)
{
    struct Case {
        const char16_t* text;
        const char* reason;
        int32_t index;
    } const cases[] = {
        {u"http://a b/", "Illegal character in authority", 8},
        {u"http://a/b c", "Illegal character in path", 10},
        {u"http://a/?q=<", "Illegal character in query", 12},
        {u"http://a/#f#", "Illegal character in fragment", 11},
        {u"http://a/%4", "Malformed escape pair", 9},
        {u"http://a/%zz", "Malformed escape pair", 9},
        {u"\u00e4\u00e4/%", "Malformed escape pair", 3},
        {u"http://a:8o/", "Illegal character in port number", 10},
        {u"http://a:65536/", "Port number out of range", 9},
        {u"http://[::1/", "Expected closing bracket for IPv6 address", 11},
        {u"http://[::g]/", "Malformed IPv6 address", 8},
        {u"http://[::1]x/", "Illegal character in authority", 12},
        {u"http://[v.x]/", "Malformed IPvFuture address", 8},
        {u":a", "Expected scheme name", 0},
        {u"1a:b", "Expected scheme name", 0},
        {u"http://u[@h/", "Illegal character in user info", 8},
    };
    for (const Case& c : cases) {
        const URISyntaxException e = syntaxError(String(c.text));
        EXPECT_EQ(e.getReason().toUtf8(), c.reason) << String(c.text).toUtf8();
        EXPECT_EQ(e.getIndex(), c.index) << String(c.text).toUtf8();
        EXPECT_EQ(e.getResult(), static_cast<qv::Result>(0x80070057u));
    }
    EXPECT_EQ(syntaxError(String(u"a b")).getDescription().toUtf8(), "Illegal character in path at index 1: a b");
    EXPECT_THROW(URI(static_cast<const char*>(nullptr)), URISyntaxException);
}

TEST(URI, NormalizesCaseEscapesAndDotSegments)
{
    EXPECT_EQ(normalized("HTTP://User@Example.COM:80/%7euser/a/./b/../c%2f%3a"),
              "http://User@example.com:80/~user/a/c%2F%3A");
    EXPECT_EQ(normalized("http://a/b/c/./../../g"), "http://a/g");
    EXPECT_EQ(normalized("mid/content=5/../6"), "mid/6");
    EXPECT_EQ(normalized("../a/./b/../../../c/"), "../../c/");
    EXPECT_EQ(normalized("a/.."), "");
    EXPECT_EQ(normalized("/a/b/.."), "/a/");
    EXPECT_EQ(normalized("http://[2001:DB8::1]/"), "http://[2001:db8::1]/");
    EXPECT_EQ(normalized("http://Ex%41mple%2e%c3%a4.COM/"), "http://example.%C3%A4.com/");
    // Dot removal must not turn a segment into a scheme or a path into an
    // authority.
    EXPECT_EQ(normalized("./a:b"), "./a:b");
    EXPECT_EQ(URI(normalized("./a:b")).normalize().toStdString(), "./a:b");
    EXPECT_EQ(normalized("x:/.//p"), "x:/.//p");
    EXPECT_EQ(URI(normalized("x:/.//p")).getPath().toUtf8(), "/.//p");
    EXPECT_EQ(URI("HTTP://EXAMPLE.com/%7E").normalize(), URI("http://example.com/~"));
    EXPECT_NE(URI("HTTP://EXAMPLE.com/%7E"), URI("http://example.com/~"));
}

TEST(URI, EncodesAndDecodesByComponent)
{
    EXPECT_EQ(URI::encode(String(u"a b/c?d&e=\u00e4"), URI::PATH).toUtf8(), "a%20b/c%3Fd&e=%C3%A4");
    EXPECT_EQ(URI::encode(String(u"a b/c?d&e=f+g"), URI::QUERY_PARAM).toUtf8(), "a%20b/c?d%26e%3Df%2Bg");
    EXPECT_EQ(URI::encode(String(u"a/b:c@d"), URI::PATH_SEGMENT).toUtf8(), "a%2Fb:c@d");
    EXPECT_EQ(URI::encode(String(u"u:p@h"), URI::USER_INFO).toUtf8(), "u:p%40h");
    EXPECT_EQ(URI::encode(String(u"a-b_c.d~e!"), URI::UNRESERVED).toUtf8(), "a-b_c.d~e%21");
    EXPECT_EQ(URI::decode(String(u"%41%c3%a4%F0%9F%98%80")).toU16String(), u"A\u00e4\U0001F600");
    // Bytes that are not UTF-8 decode to U+FFFD rather than failing.
    EXPECT_EQ(URI::decode(String(u"%FF")).toU16String(), u"\uFFFD");
    EXPECT_EQ(URI::decode(String(u"%F8%88%80%80%80a")).toU16String(), u"\uFFFD\uFFFD\uFFFD\uFFFD\uFFFDa");
    EXPECT_EQ(URI::decode(String(u"%ED%A0%80|%C0%AF|%E2%82")).toU16String(),
              u"\uFFFD\uFFFD\uFFFD|\uFFFD\uFFFD|\uFFFD\uFFFD");
    EXPECT_THROW(URI::decode(String(u"100%")), URISyntaxException);
    const String text(u"x y/\u00e4?#%");
    EXPECT_EQ(URI::decode(URI::encode(text, URI::UNRESERVED)), text);
}

TEST(URI, ComparesAndRoundTrips)
{
    for (const char* text : {"http://a/b?c#d", "//h", "a/b", "/", "urn:isbn:0451450523", "http://[::1]:1/", "s://u@h",
                             "?q", "#f", "file:///"}) {
        const URI uri(text);
        EXPECT_EQ(uri.toStdString(), text);
        EXPECT_EQ(URI(uri.toString()), uri) << text;
        EXPECT_EQ(URI(uri.toString()).hashCode(), uri.hashCode()) << text;
    }
    EXPECT_NE(URI("http://a/b?"), URI("http://a/b"));
    EXPECT_LT(URI("http://a").compareTo(URI("http://b")), 0);
    URI moved(URI("http://a/"));
    EXPECT_EQ(moved.toStdString(), "http://a/");
}

TEST(URI, AllocationFailuresLeaveNoTrace)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    URI target("http://old/");
    EXPECT_GT(qvtest::sweepAllocations([&] { target = URI(String(u"HTTP://Example.com/a/../b%7e?q#f")).normalize(); },
                                       [&] { EXPECT_EQ(target.toStdString(), "http://old/"); }),
              0);
    EXPECT_EQ(target.toStdString(), "http://example.com/b~?q#f");
    String text;
    EXPECT_GT(qvtest::sweepAllocations([&] { text = URI("http://a/b/c/d;p?q").resolve(String(u"../g")).toString(); },
                                       [&] { EXPECT_EQ(text.getLength(), 0); }),
              0);
    EXPECT_EQ(text.toUtf8(), "http://a/b/g");
}
