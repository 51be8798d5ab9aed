#include "TestSupport.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <cstring>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

namespace {

struct CasePair {
    char16_t upper;
    char16_t lower;
};

TEST(String, CaseMappingCoversEachBlock)
{
    const CasePair pairs[] = {
        {u'A', u'a'},     {u'Z', u'z'},     {0x00C0, 0x00E0}, {0x00DE, 0x00FE}, {0x00C6, 0x00E6}, // Latin-1
        {0x0178, 0x00FF}, {0x0100, 0x0101}, {0x0141, 0x0142}, {0x017D, 0x017E}, {0x0152, 0x0153}, // Ext-A
        {0x0182, 0x0183}, {0x01C4, 0x01C6}, {0x0218, 0x0219}, {0x0187, 0x0188}, {0x01F1, 0x01F3}, // Ext-B
        {0x0391, 0x03B1}, {0x03A9, 0x03C9}, {0x0386, 0x03AC}, {0x03A3, 0x03C3}, {0x03AB, 0x03CB}, // Greek
        {0x0410, 0x0430}, {0x042F, 0x044F}, {0x0401, 0x0451}, {0x0462, 0x0463}, {0x0490, 0x0491}, // Cyrillic
        {0x0500, 0x0501},
    };
    for (const CasePair& pair : pairs) {
        EXPECT_EQ(QVToLowerW(pair.upper), pair.lower) << std::hex << pair.upper;
        EXPECT_EQ(QVToUpperW(pair.lower), pair.upper) << std::hex << pair.lower;
        EXPECT_EQ(QVToLowerW(pair.lower), pair.lower) << std::hex << pair.lower;
        EXPECT_EQ(QVToUpperW(pair.upper), pair.upper) << std::hex << pair.upper;
    }
}

TEST(String, IrregularLetters)
{
    EXPECT_EQ(QVToLowerW(0x01C5), 0x01C6); // title-case digraph
    EXPECT_EQ(QVToUpperW(0x01C5), 0x01C4);
    EXPECT_EQ(QVToUpperW(0x03C2), 0x03A3); // final sigma
    EXPECT_EQ(QVToLowerW(0x03C2), 0x03C2);
    EXPECT_EQ(QVToUpperW(0x00B5), 0x00B5); // micro sign stays
    EXPECT_EQ(QVToUpperW(0x00DF), 0x00DF); // no single-unit capital
    EXPECT_EQ(QVToLowerW(0x0130), u'i');
    EXPECT_EQ(QVToUpperW(0x0131), u'I');
    EXPECT_EQ(QVToUpperW(u'i'), u'I');
    EXPECT_EQ(QVToLowerW(u'I'), u'i');
    for (char16_t unchanged : {u'0', u'@', u'[', char16_t(0x00D7), char16_t(0x00F7), char16_t(0x00AA), char16_t(0x4E2D),
                               char16_t(0xD800), char16_t(0xFFFF), char16_t(0)}) {
        EXPECT_EQ(QVToUpperW(unchanged), unchanged) << std::hex << unchanged;
        EXPECT_EQ(QVToLowerW(unchanged), unchanged) << std::hex << unchanged;
    }
}

TEST(String, InPlaceCaseAndCaselessCompare)
{
    std::u16string text = u"Hello \u00c9t\u00e9 \u03a3\u039f\u03a6\u0399\u0391 \u041c\u0418\u0420";
    QVStrToLowerW(text.data());
    EXPECT_EQ(text, u"hello \u00e9t\u00e9 \u03c3\u03bf\u03c6\u03b9\u03b1 \u043c\u0438\u0440");
    QVStrToUpperW(text.data());
    EXPECT_EQ(text, u"HELLO \u00c9T\u00c9 \u03a3\u039f\u03a6\u0399\u0391 \u041c\u0418\u0420");

    char16_t withNul[] = {u'A', 0, u'B', u'C', 0};
    QVStrToLowerNW(withNul, 3);
    EXPECT_EQ(withNul[2], u'b');
    EXPECT_EQ(withNul[3], u'C');
    QVStrToUpperNW(withNul, 4);
    EXPECT_EQ(withNul[0], u'A');
    EXPECT_EQ(withNul[3], u'C');
    EXPECT_EQ(QVStrToLowerW(nullptr), nullptr);

    EXPECT_EQ(QVStrNICmpW(u"HeLLo", u"hello", -1), 0);
    EXPECT_EQ(QVStrNICmpW(u"\u03a3\u039f\u03a6\u0399\u0391", u"\u03c3\u03bf\u03c6\u03b9\u03b1", 5), 0);
    EXPECT_EQ(QVStrNICmpW(u"abcX", u"ABCy", 3), 0);
    EXPECT_LT(QVStrNICmpW(u"abcX", u"ABCy", 4), 0);
    EXPECT_LT(QVStrNICmpW(u"a", u"B", 1), 0);
    EXPECT_GT(QVStrNICmpW(u"ab", u"A", 5), 0);
    EXPECT_EQ(QVStrNICmpW(nullptr, u"", 3), 0);
    EXPECT_EQ(QVStrNICmpW(u"x", u"y", 0), 0);
}

TEST(String, LengthCopyCompareFind)
{
    EXPECT_EQ(QVStrLenW(u"abc"), 3);
    EXPECT_EQ(QVStrLenW(nullptr), 0);
    EXPECT_EQ(QVStrLenA("abcd"), 4);
    char16_t buffer[8];
    std::memset(buffer, 0x55, sizeof buffer);
    EXPECT_EQ(QVStrNCpyW(buffer, u"ab", 6), buffer);
    EXPECT_EQ(std::u16string(buffer, 7), std::u16string(u"ab\0\0\0\0\u5555", 7)); // padded up to count
    buffer[3] = u'#';
    QVStrNCpyW(buffer, u"abcdefgh", 3); // no terminator when the source is longer
    EXPECT_EQ(std::u16string(buffer, 4), u"abc#");
    EXPECT_EQ(std::u16string(QVStrCpyW(buffer, u"xyz")), u"xyz");
    EXPECT_EQ(QVStrCmpW(u"abc", u"abc"), 0);
    EXPECT_LT(QVStrCmpW(u"ab", u"abc"), 0);
    EXPECT_GT(QVStrCmpW(u"\uffff", u"a"), 0); // unsigned units
    EXPECT_LT(QVStrCmpW(u"B", u"a"), 0);
    EXPECT_EQ(QVStrCmpW(nullptr, u""), 0);
    const char16_t* text = u"a=b=c";
    EXPECT_EQ(QVStrChrW(text, u'='), text + 1);
    EXPECT_EQ(QVStrChrW(text, u'z'), nullptr);
    EXPECT_EQ(QVStrChrW(text, 0), nullptr);
}

TEST(String, StrToIWLikeAtoi)
{
    EXPECT_EQ(QVStrToIW(u"  -123abc"), -123);
    EXPECT_EQ(QVStrToIW(u"+7"), 7);
    EXPECT_EQ(QVStrToIW(u"\t\n 42"), 42);
    EXPECT_EQ(QVStrToIW(u"abc"), 0);
    EXPECT_EQ(QVStrToIW(u"- 5"), 0);
    EXPECT_EQ(QVStrToIW(u"2147483647"), 2147483647);
    EXPECT_EQ(QVStrToIW(u"2147483648"), INT32_MIN); // wraps
    EXPECT_EQ(QVStrToIW(u"4294967297"), 1);
    EXPECT_EQ(QVStrToIW(u"\u0661"), 0); // only ASCII digits
    EXPECT_EQ(QVStrToIW(nullptr), 0);
}

struct UlCase {
    const char16_t* text;
    int32_t radix;
    uint32_t value;
    int32_t consumed;
};

TEST(String, StrToULWLikeStrtoul)
{
    const UlCase cases[] = {
        {u"0x1A", 0, 26, 4},
        {u"0X1a", 16, 26, 4},
        {u"1a", 16, 26, 2},
        {u"017", 0, 15, 3},
        {u"0", 0, 0, 1},
        {u"0x", 0, 0, 1},
        {u"0xg", 16, 0, 1},
        {u"Zz", 36, 1295, 2},
        {u"101", 2, 5, 3},
        {u"12", 2, 1, 1},
        {u"  +12 ", 10, 12, 5},
        {u"-1", 10, 0xFFFFFFFFu, 2},
        {u"-0x10", 0, 0xFFFFFFF0u, 5},
        {u"4294967295", 10, 0xFFFFFFFFu, 10},
        {u"4294967296", 10, 0xFFFFFFFFu, 10},
        {u"-4294967296", 10, 0xFFFFFFFFu, 11},
        {u"-4294967295", 10, 1, 11},
        {u"xyz", 10, 0, 0},
        {u"  -", 10, 0, 0},
        {u"12", 1, 0, 0},
        {u"12", 37, 0, 0},
        {u"12", -2, 0, 0},
    };
    for (const UlCase& c : cases) {
        const char16_t* end = nullptr;
        EXPECT_EQ(QVStrToULW(c.text, &end, c.radix), c.value) << c.radix;
        EXPECT_EQ(end - c.text, c.consumed) << c.radix;
    }
    EXPECT_EQ(QVStrToULW(u"99", nullptr, 10), 99u);
    EXPECT_EQ(QVStrToULW(nullptr, nullptr, 10), 0u);
}

TEST(String, StrToDWInTheCLocale)
{
    const char16_t* end = nullptr;
    const char16_t* text = u"  -1.5e3x";
    EXPECT_EQ(QVStrToDW(text, &end), -1500.0);
    EXPECT_EQ(end, text + 8);
    text = u"1,5";
    EXPECT_EQ(QVStrToDW(text, &end), 1.0);
    EXPECT_EQ(end, text + 1);
    text = u"abc";
    EXPECT_EQ(QVStrToDW(text, &end), 0.0);
    EXPECT_EQ(end, text);
    text = u"2.5\u00e9";
    EXPECT_EQ(QVStrToDW(text, &end), 2.5);
    EXPECT_EQ(end, text + 3);
    EXPECT_EQ(QVStrToDW(u"0x1p4", nullptr), 16.0);
    EXPECT_TRUE(std::isinf(QVStrToDW(u"-inf", nullptr)));
    EXPECT_TRUE(std::isinf(QVStrToDW(u"1e999", nullptr)));
    const std::u16string longNumber = u"1." + std::u16string(300, u'0') + u"1";
    EXPECT_EQ(QVStrToDW(longNumber.c_str(), &end), 1.0);
    EXPECT_EQ(end, longNumber.c_str() + longNumber.size());
}

// Runs body with LC_CTYPE set to locale, skipping when it is not installed.
template <typename Body>
void WithCType(const char* locale, Body body)
{
    const std::string saved = std::setlocale(LC_CTYPE, nullptr);
    if (!std::setlocale(LC_CTYPE, locale)) {
        GTEST_SKIP() << locale << " is not installed";
    }
    body();
    std::setlocale(LC_CTYPE, saved.c_str());
}

std::string ToAnsi(const std::u16string& text)
{
    char buffer[64] = {};
    int32_t written = -1;
    EXPECT_EQ(QVUnicodeToAnsi(text.data(), static_cast<int32_t>(text.size()), buffer, sizeof buffer, &written),
              QV_S_OK);
    EXPECT_EQ(written, static_cast<int32_t>(std::strlen(buffer)));
    return buffer;
}

TEST(String, UnicodeToAnsiFollowsTheCodeSet)
{
    char16_t name[16];
    WithCType("C.UTF-8", [&] {
        EXPECT_EQ(ToAnsi(u"a\u00e9\u20ac\U0001F600"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
        EXPECT_EQ(ToAnsi(std::u16string(u"x") + char16_t(0xD800) + u"y" + char16_t(0xDC00)), "x?y?");
        ASSERT_EQ(QVGetDefaultCharEncoding(name, 16), QV_S_OK);
        EXPECT_EQ(std::u16string(name), u"UTF-8");
    });
    WithCType("C", [&] {
        EXPECT_EQ(ToAnsi(u"a\u00e9\U0001F600z"), "a??z"); // a surrogate pair is one character
        ASSERT_EQ(QVGetDefaultCharEncoding(name, 16), QV_S_OK);
        EXPECT_EQ(std::u16string(name), u"ASCII");
        EXPECT_EQ(QVGetDefaultCharEncoding(name, 5), QV_E_BUFFER_TOO_SMALL);
    });
}

TEST(String, UnicodeToAnsiBuffers)
{
    int32_t written = -1;
    EXPECT_EQ(QVUnicodeToAnsi(u"hello", -1, nullptr, 0, &written), QV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(written, 5);
    char buffer[8];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(QVUnicodeToAnsi(u"hello", -1, buffer, 5, &written), QV_E_BUFFER_TOO_SMALL);
    EXPECT_EQ(buffer[0], '#');
    EXPECT_EQ(QVUnicodeToAnsi(u"hello", -1, buffer, 6, &written), QV_S_OK);
    EXPECT_STREQ(buffer, "hello");
    const char16_t withNul[] = {u'a', 0, u'b'};
    EXPECT_EQ(QVUnicodeToAnsi(withNul, 3, buffer, 8, &written), QV_S_OK);
    EXPECT_EQ(written, 3);
    EXPECT_EQ(std::memcmp(buffer, "a\0b\0", 4), 0);
    EXPECT_EQ(QVUnicodeToAnsi(nullptr, -1, buffer, 8, nullptr), QV_S_OK);
    EXPECT_STREQ(buffer, "");
    EXPECT_EQ(QVUnicodeToAnsi(nullptr, 3, buffer, 8, &written), QV_E_POINTER);
    EXPECT_EQ(QVUnicodeToAnsi(u"a", -2, buffer, 8, &written), QV_E_INVALIDARG);
    EXPECT_EQ(QVUnicodeToAnsi(u"a", 1, nullptr, 8, &written), QV_E_POINTER);
}

const char16_t* FindByUnit(const char16_t* text, char16_t unit)
{
    while (*text != 0 && *text != unit)
        ++text;
    return text;
}

// Every start offset within a block, every length up to a few blocks, the
// sought unit at every place or absent, units that share a byte with it, and
// a NUL and the sought unit just before the text, in the same block.
TEST(String, FindUnitOrEndAgreesWithAUnitLoopAtEveryAlignment)
{
    alignas(16) char16_t storage[64 + 16];
    for (size_t offset = 0; offset <= 8; ++offset) {
        for (size_t i = 0; i < offset; ++i)
            storage[i] = i % 2 ? u'{' : 0;
        char16_t* text = storage + offset;
        for (int length = 0; length <= 40; ++length) {
            for (int at = -1; at < length; ++at) {
                for (int i = 0; i < length; ++i)
                    text[i] = (i % 3 == 0) ? u'\u7B00' : u'a' + static_cast<char16_t>(i % 20);
                if (at >= 0)
                    text[at] = u'{';
                text[length] = 0;
                text[length + 1] = u'{'; // beyond the end: must not be found
                ASSERT_EQ(QVStrFindUnitOrEndW(text, u'{'), FindByUnit(text, u'{'))
                    << "offset " << offset << " length " << length << " at " << at;
                ASSERT_EQ(QVStrLenW(text), length) << "offset " << offset;
                ASSERT_EQ(QVStrFindUnitOrEndW(text, 0), text + length);
            }
        }
    }
}

// A text that ends at the last unit of a page followed by an inaccessible
// page: a scan reading past the terminator into the next page would fault.
TEST(String, FindUnitOrEndStopsAtThePageOfTheTerminator)
{
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    void* mapped = mmap(nullptr, 2 * page, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(mapped, MAP_FAILED);
    unsigned char* first = static_cast<unsigned char*>(mapped);
    ASSERT_EQ(mprotect(first + page, page, PROT_NONE), 0);
    for (size_t units = 1; units <= 20; ++units) {
        char16_t* text = reinterpret_cast<char16_t*>(first + page - units * sizeof(char16_t));
        for (size_t i = 0; i + 1 < units; ++i)
            text[i] = u'x';
        text[units - 1] = 0;
        EXPECT_EQ(QVStrFindUnitOrEndW(text, u'{'), text + units - 1);
        EXPECT_EQ(QVStrLenW(text), static_cast<int32_t>(units - 1));
    }
    // A text at an odd address (units cast from packed bytes) ends the same
    // way, its units straddling the blocks' lanes: "y{" then "z" and a NUL.
    unsigned char* odd = first + page - 9;
    const char16_t units[] = {u'y', u'{', u'z', 0};
    std::memcpy(odd, units, sizeof(units));
    const char16_t* text = reinterpret_cast<const char16_t*>(odd);
    EXPECT_EQ(QVStrFindUnitOrEndW(text, u'{'), text + 1);
    EXPECT_EQ(QVStrFindUnitOrEndW(text, u'#'), text + 3);
    munmap(mapped, 2 * page);
}
} // namespace
