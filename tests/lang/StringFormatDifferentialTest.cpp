#include <qv/lang/String.h>

#include <FormatByReplacement.h>
#include <QvTextPrinting.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace qv;

using qvtest::formatByReplacement;
using qvtest::placeholderText;

namespace {

// Up to maxPieces pieces, drawn at random, end to end.
template <size_t N>
std::u16string randomPattern(std::mt19937& random, const std::u16string (&pieces)[N], unsigned maxPieces)
{
    std::u16string pattern;
    for (unsigned i = random() % maxPieces; i > 0; --i)
        pattern += pieces[random() % N];
    return pattern;
}

template <size_t N>
std::vector<const char16_t*> randomArguments(std::mt19937& random, const char16_t* const (&choices)[N],
                                             unsigned maxCount)
{
    std::vector<const char16_t*> list(random() % maxCount);
    for (auto& argument : list)
        argument = choices[random() % N];
    return list;
}

} // namespace

// Random patterns built from pieces that make and break placeholders
// ("{1", "0}", "{00}", digits beside braces), with arguments that look like
// placeholders themselves, against the oracle.
TEST(StringFormatDifferential, OnePassMatchesTheReplacementAlgorithm)
{
    const std::u16string pieces[] = {u"{",   u"}",   u"0",    u"1",    u"2",   u"9",     u"x",  u"{0}",
                                     u"{1}", u"{2}", u"{10}", u"{01}", u"{3}", u"{-1}",  u"{ ", u"\u20AC",
                                     u"{4}", u"{5}", u"{11}", u"{0",   u"1}",  u"{{0}}", u"",   u"{2147483647}"};
    const char16_t* arguments[] = {u"", u"a", u"{0}", u"{1}", u"}{", u"long argument text", nullptr, u"{"};
    std::mt19937 random(20240611);
    for (int round = 0; round < 20000; ++round) {
        const std::u16string pattern = randomPattern(random, pieces, 24);
        const std::vector<const char16_t*> list = randomArguments(random, arguments, 14);
        String s(u"previous");
        s.formatArray(pattern.data(), static_cast<int32_t>(pattern.size()), list.data(),
                      static_cast<int32_t>(list.size()));
        ASSERT_EQ(s.toU16String(), formatByReplacement(pattern, list)) << "pattern " << String(pattern.data()).toUtf8();
    }
}

TEST(StringFormatDifferential, LongPatternsWithManyArguments)
{
    std::u16string pattern;
    std::vector<std::u16string> texts;
    std::vector<const char16_t*> list;
    for (int32_t n = 0; n < 300; ++n) {
        pattern += placeholderText(n) + u"," + placeholderText(299 - n);
        texts.push_back(n % 3 == 0 ? std::u16string() : placeholderText(n + 1) + u"#");
    }
    for (const auto& text : texts)
        list.push_back(text.c_str());
    // The same placeholders with "{70}" left out: only 0 to 69 are replaced.
    std::u16string gapped;
    for (int32_t n = 0; n < 100; ++n)
        gapped += n == 70 ? u"-" : placeholderText(n);
    for (const std::u16string* text : {&pattern, &gapped}) {
        for (size_t count : {size_t(0), size_t(1), size_t(69), size_t(150), size_t(300)}) {
            const std::u16string expected =
                formatByReplacement(*text, std::vector<const char16_t*>(list.begin(), list.begin() + count));
            String given, terminated;
            given.formatArray(text->data(), static_cast<int32_t>(text->size()), list.data(),
                              static_cast<int32_t>(count));
            terminated.formatArray(text->c_str(), -1, list.data(), static_cast<int32_t>(count));
            EXPECT_EQ(given.toU16String(), expected) << count << " arguments";
            EXPECT_EQ(terminated.toU16String(), expected) << count << " arguments";
        }
    }
}

// The same oracle with the pattern at the very end of an exactly sized heap
// block (an over-read shows under AddressSanitizer), given both with its
// length, NULs inside it included, and NUL-terminated, where the text ends
// at its first NUL. Arguments end at their first NUL either way.
TEST(StringFormatDifferential, GivenAndTerminatedLengthsAgree)
{
    const std::u16string pieces[] = {u"{",
                                     u"}",
                                     u"0",
                                     u"1",
                                     u"7",
                                     u"ab",
                                     u"{0}",
                                     u"{1}",
                                     u"{2}",
                                     u"{10}",
                                     u"{0",
                                     std::u16string(1, u'\0'),
                                     u"\u00E9\u00E9\u00E9",
                                     u"z{",
                                     u"|~"};
    const std::u16string withNul = std::u16string(u"cut") + u'\0' + u"off";
    const char16_t* arguments[] = {u"", u"A", u"{0}", withNul.c_str(), nullptr, u"wide \u20AC"};
    std::mt19937 random(7);
    for (int round = 0; round < 20000; ++round) {
        const std::u16string pattern = randomPattern(random, pieces, 16);
        const std::vector<const char16_t*> list = randomArguments(random, arguments, 5);
        std::unique_ptr<char16_t[]> exact(new char16_t[pattern.size() + 1]);
        std::copy(pattern.begin(), pattern.end(), exact.get());
        exact[pattern.size()] = u'\0';

        String given(u"previous");
        given.formatArray(exact.get(), static_cast<int32_t>(pattern.size()), list.data(),
                          static_cast<int32_t>(list.size()));
        ASSERT_EQ(given.toU16String(), formatByReplacement(pattern, list)) << "round " << round;

        String terminated(u"previous");
        terminated.formatArray(exact.get(), -1, list.data(), static_cast<int32_t>(list.size()));
        ASSERT_EQ(terminated.toU16String(), formatByReplacement(pattern.substr(0, pattern.find(u'\0')), list))
            << "round " << round;

        // Without the terminator, a given length must not look beyond it.
        std::unique_ptr<char16_t[]> unterminated(new char16_t[pattern.size()]);
        std::copy(pattern.begin(), pattern.end(), unterminated.get());
        String bounded;
        bounded.formatArray(unterminated.get(), static_cast<int32_t>(pattern.size()), list.data(),
                            static_cast<int32_t>(list.size()));
        ASSERT_EQ(bounded.toU16String(), given.toU16String()) << "round " << round;
    }
}
