#include <qv/lang/String.h>

#include <QvTextPrinting.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <utility>
#include <vector>

using namespace qv;

namespace {

std::u16string placeholderText(int32_t n)
{
    std::string digits = std::to_string(n);
    return u"{" + std::u16string(digits.begin(), digits.end()) + u"}";
}

// format as it was first written, one replace() per placeholder over the
// whole remaining text: quadratic, but its rules are the plain reading of
// the behaviour, so it stays here as the oracle for the one-pass version.
std::u16string formatByReplacement(const std::u16string& pattern, const std::vector<const char16_t*>& list)
{
    String s(pattern.data(), static_cast<int32_t>(pattern.size()));
    std::vector<std::u16string> placeholders;
    std::vector<std::pair<int32_t, int32_t>> positions;
    for (int32_t n = 0;; ++n) {
        std::u16string wanted = placeholderText(n);
        String::TextRef ref(wanted.data(), static_cast<int32_t>(wanted.size()));
        int32_t position = s.indexOf(ref, 0);
        if (position < 0 || n >= static_cast<int32_t>(list.size()))
            break;
        placeholders.push_back(wanted);
        while (position >= 0) {
            positions.emplace_back(position, n);
            position = s.indexOf(ref, position + static_cast<int32_t>(wanted.size()));
        }
    }
    std::sort(positions.begin(), positions.end());
    int32_t offset = 0;
    for (const auto& entry : positions) {
        const std::u16string& wanted = placeholders[static_cast<size_t>(entry.second)];
        int32_t found = s.indexOf(String::TextRef(wanted.data(), static_cast<int32_t>(wanted.size())), offset);
        if (found < 0)
            continue;
        const char16_t* argument = list[static_cast<size_t>(entry.second)];
        std::u16string text = argument ? argument : u"";
        s.replace(found, static_cast<int32_t>(wanted.size()), text.data(), static_cast<int32_t>(text.size()), 0);
        offset = found + static_cast<int32_t>(text.size());
    }
    return s.toU16String();
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
