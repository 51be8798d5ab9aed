#include "TestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

std::vector<std::u16string> Split(const char16_t* line)
{
    char16_t** argv = nullptr;
    int32_t argc = -1;
    EXPECT_EQ(QVCommandLineSplit(line, &argv, &argc), QV_S_OK);
    std::vector<std::u16string> result;
    for (int32_t i = 0; argv && i < argc; ++i) {
        result.emplace_back(argv[i]);
    }
    EXPECT_TRUE(argv && argv[argc] == nullptr);
    QVCommandLineFree(argv);
    return result;
}

struct Case {
    const char16_t* line;
    std::vector<std::u16string> expected;
};

TEST(CommandLine, SplitsByWindowsRules)
{
    const Case cases[] = {
        {u"", {}},
        {u" \t ", {}},
        {u"a b\tc", {u"a", u"b", u"c"}},
        {u"  lead  trail  ", {u"lead", u"trail"}},
        {u"\"a b\" c", {u"a b", u"c"}},
        {u"\"a b\"c\" d\"", {u"a bc d"}},
        {u"a\\b c\\\\d", {u"a\\b", u"c\\\\d"}}, // backslashes not before a quote
        {u"a\\\"b", {u"a\"b"}},                 // 1 backslash, quote: literal quote
        {u"a\\\\\"b c\"", {u"a\\b c"}},         // 2 backslashes, quote: one backslash, quote opens
        {u"a\\\\\\\"b", {u"a\\\"b"}},           // 3 backslashes, quote
        {u"\"a\\\\\\\\\" b", {u"a\\\\", u"b"}}, // 4 backslashes then closing quote
        {u"\"x\"\"y\" z", {u"x\"y", u"z"}},     // "" inside quotes
        {u"\"\"", {u""}},                       // empty argument
        {u"a \"\" b", {u"a", u"", u"b"}},
        {u"\"unterminated arg", {u"unterminated arg"}},
        {u"trailing\\", {u"trailing\\"}},
        {u"\"C:\\Program Files\\\" next", {u"C:\\Program Files\" next"}},
        {u"\u00e9t\u00e9 \u4e2d", {u"\u00e9t\u00e9", u"\u4e2d"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(Split(c.line), c.expected)
            << std::string(c.line, c.line + std::char_traits<char16_t>::length(c.line));
    }
}

TEST(CommandLine, NullLineAndNullOutputs)
{
    EXPECT_TRUE(Split(nullptr).empty());
    char16_t** argv = nullptr;
    int32_t argc = 0;
    EXPECT_EQ(QVCommandLineSplit(u"a", nullptr, &argc), QV_E_POINTER);
    EXPECT_EQ(QVCommandLineSplit(u"a", &argv, nullptr), QV_E_POINTER);
    QVCommandLineFree(nullptr);
}

} // namespace
