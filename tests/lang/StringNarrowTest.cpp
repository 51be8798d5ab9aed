#include <qv/core/Exception.h>
#include <qv/lang/String.h>
#include <qv/text/charset/CharsetExceptions.h>
#include <qv/util/RWByteBuffer.h>

#include <AllocationSweep.h>
#include <LocaleScope.h>
#include <QvTextPrinting.h>
#include <gtest/gtest.h>

#include "Thrown.h"

#include <cstring>
#include <new>
#include <string>

using qv::String;
using namespace qv::text::charset;

namespace {

std::string bytesOf(const String& text, const char16_t* encoding)
{
    qv::util::RWByteBuffer buffer;
    text.getBytes(&buffer, encoding);
    return std::string(reinterpret_cast<const char*>(buffer.GetData()), static_cast<size_t>(buffer.GetLength()));
}

constexpr qv::Result kTooSmall = static_cast<qv::Result>(0x80004009u);

} // namespace

TEST(StringNarrow, RoundTripsThroughEncodings)
{
    const String mixed(u"Grüße, Ελλάδα \U0001F600");
    const char utf8[] = "Gr\xC3\xBC\xC3\x9F"
                        "e, \xCE\x95\xCE\xBB\xCE\xBB\xCE\xAC\xCE\xB4\xCE\xB1 \xF0\x9F\x98\x80";
    EXPECT_EQ(bytesOf(mixed, u"UTF-8"), std::string(utf8));
    EXPECT_EQ(String(utf8, -1, u"utf-8"), mixed);

    const String cafe(u"café");
    EXPECT_STREQ(String(cafe).getBytes(u"ISO8859_1"), "caf\xE9");
    EXPECT_EQ(String("caf\xE9", -1, u"latin1"), cafe);

    const String russian(u"Привет");
    EXPECT_EQ(bytesOf(russian, u"windows-1251"), std::string("\xCF\xF0\xE8\xE2\xE5\xF2"));
    EXPECT_EQ(String("\xCF\xF0\xE8\xE2\xE5\xF2", 6, u"CP1251"), russian);

    // Byte counts, not C strings: UTF-16BE has zero bytes inside.
    EXPECT_EQ(bytesOf(String(u"ab"), u"UTF-16BE"), std::string("\0a\0b", 4));
    EXPECT_EQ(String("\0a\0b", 4, u"UTF-16BE"), String(u"ab"));

    const signed char sbytes[] = {'h', 'i', 0};
    String fromSigned(sbytes, -1, u"ASCII");
    EXPECT_EQ(fromSigned, String(u"hi"));
    signed char out[8];
    EXPECT_EQ(fromSigned.getBytes(out, 8, u"ASCII"), 2);
    EXPECT_STREQ(reinterpret_cast<const char*>(out), "hi");

    // Encoding names in the unsigned short spelling reach the same converters.
    const unsigned short utf8Name[] = {'u', 't', 'f', '-', '8', 0};
    EXPECT_STREQ(cafe.getBytes(utf8Name), "caf\xC3\xA9");
    EXPECT_EQ(String("caf\xC3\xA9", -1, utf8Name), cafe);
    EXPECT_EQ(String(sbytes, 2, utf8Name, 8), String(u"hi"));
    EXPECT_EQ(String::CQVString("caf\xC3\xA9", -1, utf8Name), cafe);
    EXPECT_EQ(String().setTo("caf\xC3\xA9", -1, utf8Name), cafe);
    EXPECT_EQ(cafe.getBytes(out, 8, utf8Name), 5);
    char narrowOut[8];
    EXPECT_EQ(cafe.getBytes(narrowOut, 8, utf8Name), 5);
    qv::util::RWByteBuffer viaBuffer;
    cafe.getBytes(&viaBuffer, utf8Name);
    EXPECT_EQ(viaBuffer.GetLength(), 5);
    EXPECT_STREQ(cafe.getBytesReadLock(utf8Name), "caf\xC3\xA9");
    cafe.releaseReadLock();
}

TEST(StringNarrow, LengthsCapacityAndArguments)
{
    String embedded("ab\0cd", 5, u"ASCII");
    EXPECT_EQ(embedded.getLength(), 5);
    EXPECT_EQ(embedded.getCharAt(2), u'\0');
    EXPECT_EQ(String("abc", 2, u"ASCII"), String(u"ab"));
    EXPECT_EQ(String("", -1, u"ASCII").getLength(), 0);
    EXPECT_EQ(String(static_cast<const char*>(nullptr), -1, u"ASCII").getLength(), 0);
    EXPECT_EQ(String("x", -1, u"ASCII", 100), String(u"x"));
    EXPECT_THROW(String(static_cast<const char*>(nullptr), 3, u"ASCII"), qv::ResultException);

    String assigned;
    assigned = "plain";
    EXPECT_EQ(assigned, String(u"plain"));
    assigned.setTo("\xE9t\xE9", -1, u"ISO-8859-1");
    EXPECT_EQ(assigned, String(u"été"));
    EXPECT_EQ(String::CQVString("ok", -1, u"A7"), String(u"ok"));
    EXPECT_EQ(String::CQVString("plain"), String(u"plain")) << "the maker takes the constructor's defaults";
}

TEST(StringNarrow, BadInputThrowsAndKeepsTheText)
{
    EXPECT_THROW(String("x", -1, u"UTF-16"), UnknownEncodingException);
    EXPECT_THROW(String("\xC3", -1, u"UTF-8"), InvalidCharacterException);

    String kept(u"kept");
    EXPECT_THROW(kept.setTo("\xC0\xAF", -1, u"UTF-8"), InvalidCharacterException);
    EXPECT_EQ(kept, String(u"kept"));
    EXPECT_THROW(kept.getBytes(u"no-such"), UnknownEncodingException);

    String lone(u"a\xD800"
                u"b");
    qv::util::RWByteBuffer buffer("previous", 8);
    EXPECT_THROW(lone.getBytes(&buffer, u"UTF-8"), InvalidCharacterException);
    EXPECT_EQ(buffer.GetLength(), 8);
    EXPECT_THROW(lone.getBytes(static_cast<qv::util::IByteBuffer*>(nullptr), u"UTF-8"), qv::ResultException);
}

TEST(StringNarrow, UnmappableCharactersAreSubstituted)
{
    String euro(u"a€b");
    EXPECT_STREQ(euro.getBytes(u"ISO8859_1"), "a?b");
    EXPECT_STREQ(euro.getBytes(u"ASCII"), "a?b");
    EXPECT_STREQ(euro.getBytes(u"CP1252"), "a\x80"
                                           "b");
    EXPECT_EQ(bytesOf(String(u"a\U0001F600b"), u"CP1251"), std::string("a?b"));

    EXPECT_EQ(String("a\x81z", -1, u"CP1252"), String(u"a\xFFFDz"));
    EXPECT_EQ(String("a\xE9", -1, u"ASCII"), String(u"a\xFFFD"));
}

TEST(StringNarrow, CacheIsReusedForTheSameEncodingOnly)
{
    String text(u"naïve");
    const char* first = text.getBytes(u"utf-8");
    EXPECT_STREQ(first, "na\xC3\xAFve");
    EXPECT_EQ(text.getBytes(u"UTF-8"), first);
    EXPECT_EQ(text.getBytes(u"Utf-8"), first);

    const char* latin = text.getBytes(u"ISO8859_1");
    EXPECT_STREQ(latin, "na\xEFve");
    EXPECT_STREQ(text.getBytes(u"UTF-8"), "na\xC3\xAFve");

    // Every write drops the cache.
    text.getBytes(u"UTF-8");
    text.append(u'!');
    EXPECT_STREQ(text.getBytes(u"UTF-8"), "na\xC3\xAFve!");
    text.setTo("abc", -1, u"ASCII");
    EXPECT_STREQ(text.getBytes(u"UTF-8"), "abc");

    // Copies share the characters, not the cache.
    String copy(text);
    EXPECT_STREQ(copy.getBytes(u"UTF-16BE"), "");
    EXPECT_STREQ(text.getBytes(u"UTF-8"), "abc");

    const char* defaults = text.getBytes();
    EXPECT_EQ(text.getDataT(true), defaults);
    EXPECT_EQ(text.getReadLockT(true), defaults);
    text.releaseReadLock();
    EXPECT_EQ(text.getBytesReadLock(nullptr), defaults);
    text.releaseReadLock();
}

TEST(StringNarrow, CallerBufferMustHoldBytesAndNul)
{
    String cafe(u"café");
    char out[8];
    EXPECT_EQ(cafe.getBytes(out, 6, u"UTF-8"), 5);
    EXPECT_STREQ(out, "caf\xC3\xA9");

    std::memset(out, 'x', sizeof(out));
    EXPECT_EQ(qvtest::resultOf<qv::ResultException>([&] { cafe.getBytes(out, 5, u"UTF-8"); }), kTooSmall)
        << "no room for the NUL";
    EXPECT_EQ(out[0], '\0');
    EXPECT_THROW(cafe.getBytes(out, 3, u"UTF-8"), qv::ResultException);
    EXPECT_EQ(out[0], '\0');
    EXPECT_THROW(String().getBytes(out, 0, u"UTF-8"), qv::ResultException);
    EXPECT_EQ(String().getBytes(out, 1, u"UTF-8"), 0);
    EXPECT_THROW(cafe.getBytes(static_cast<char*>(nullptr), 4, u"UTF-8"), qv::ResultException);

    // AMP-7 closes its run only at flush: the closing '-' must fit as well.
    String accent(u"é");
    EXPECT_EQ(accent.getBytes(out, 6, u"AMP-7"), 5);
    EXPECT_STREQ(out, "&AOk-");
    EXPECT_THROW(accent.getBytes(out, 5, u"AMP-7"), qv::ResultException);
    EXPECT_EQ(out[0], '\0');
}

TEST(StringNarrow, GrowsWhenTheEstimateIsShort)
{
    // One unit, at most five bytes, plus a NUL: the flush that closes the
    // run lands exactly at the end of the estimate.
    EXPECT_EQ(bytesOf(String(u"é"), u"AMP-7"), "&AOk-");
    std::u16string many(1000, u'é');
    std::string expected = "&";
    for (int i = 0; i < 333; ++i)
        expected += "AOkA6QDp";
    expected += "AOk-";
    EXPECT_EQ(bytesOf(String(many), u"AMP-7"), expected);
    EXPECT_EQ(String(expected.c_str(), -1, u"AMP-7"), String(many));
}

TEST(StringNarrow, DefaultEncodingIsTheLocaleCodeSet)
{
    {
        LocaleScope locale("C.UTF-8");
        if (!locale.ok())
            GTEST_SKIP() << "no C.UTF-8 locale";
        String text("\xC3\xA9t\xC3\xA9");
        EXPECT_EQ(text, String(u"été"));
        EXPECT_STREQ(text.getDataT(true), "\xC3\xA9t\xC3\xA9");
    }
    {
        LocaleScope locale("C");
        EXPECT_EQ(String("\xC3\xA9"), String(u"\xFFFD\xFFFD"));
        EXPECT_STREQ(String(u"été").getBytes(), "?t?");
    }
}

TEST(StringNarrow, FailedAllocationKeepsTextAndCache)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    String text(u"before");
    const char* cached = text.getBytes(u"UTF-8");
    EXPECT_GT(qvtest::sweepAllocations([&] { text.getBytes(u"ISO8859_1"); },
                                       [&] { EXPECT_EQ(text.getBytes(u"UTF-8"), cached); }),
              0);
    EXPECT_STREQ(text.getBytes(u"ISO8859_1"), "before");

    QVFaultArmAllocation(1);
    EXPECT_THROW(text.setTo("after, long enough for a block of its own", -1, u"UTF-8"), qv::OutOfMemoryException);
    QVFaultDisarmAll();
    EXPECT_EQ(text, String(u"before"));
}
