#include <qv/lang/String.h>

#include <FormatByReplacement.h>
#include <QvTextPrinting.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace qv;

using qvtest::formatByReplacement;
using qvtest::placeholderText;

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
        std::u16string pattern;
        const int pieceCount = static_cast<int>(random() % 24);
        for (int i = 0; i < pieceCount; ++i)
            pattern += pieces[random() % (sizeof(pieces) / sizeof(pieces[0]))];
        std::vector<const char16_t*> list(random() % 14);
        for (auto& argument : list)
            argument = arguments[random() % (sizeof(arguments) / sizeof(arguments[0]))];
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
    for (size_t count : {size_t(0), size_t(1), size_t(150), size_t(300)}) {
        String s;
        s.formatArray(pattern.data(), static_cast<int32_t>(pattern.size()), list.data(), static_cast<int32_t>(count));
        EXPECT_EQ(s.toU16String(),
                  formatByReplacement(pattern, std::vector<const char16_t*>(list.begin(), list.begin() + count)))
            << count << " arguments";
    }
}
