#include <qv/i18n/Locale.h>
#include <qv/i18n/LocaleFormat.h>

#include <gtest/gtest.h>

#include <qv/core/Exception.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <string>

#include <stdlib.h>

using qv::String;
using qv::i18n::Locale;
using qv::i18n::LocaleFormat;

namespace {

std::string utf8(const String& text)
{
    return text.toUtf8();
}

bool installed(const char16_t* name)
{
    return LocaleFormat(name).isInstalled();
}

} // namespace

TEST(LocaleTest, ReadsTheNameFormsTheCLibraryAndUsersWrite)
{
    struct Case {
        const char16_t* name;
        const char* language;
        const char* country;
        const char* variant;
        const char* full;
    };
    const Case cases[] = {
        {u"de_DE", "de", "DE", "", "de_DE"},
        {u"de-de", "de", "DE", "", "de_DE"},
        {u"de_DE.UTF-8", "de", "DE", "", "de_DE"},
        {u"sr_RS@latin", "sr", "RS", "latin", "sr_RS_latin"},
        {u"sr_RS.UTF-8@latin", "sr", "RS", "latin", "sr_RS_latin"},
        {u"de_AT_WIEN", "de", "AT", "WIEN", "de_AT_WIEN"},
        {u"fr", "fr", "", "", "fr"},
        {u"C", "", "", "", ""},
        {u"POSIX", "", "", "", ""},
        {u"C.UTF-8", "", "", "", ""},
        {u"", "", "", "", ""},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(utf8(c.name));
        const Locale locale(c.name);
        EXPECT_EQ(c.language, utf8(locale.getLanguage()));
        EXPECT_EQ(c.country, utf8(locale.getCountry()));
        EXPECT_EQ(c.variant, utf8(locale.getVariant()));
        EXPECT_EQ(c.full, utf8(locale.toString()));
    }
    EXPECT_TRUE(Locale(u"C").isRoot());
    EXPECT_EQ(Locale(u"de_DE"), Locale(u"DE", u"de"));
    EXPECT_NE(Locale(u"de_DE"), Locale(u"de_AT"));
    EXPECT_EQ(Locale(u"de-DE").hashCode(), Locale(u"de_DE.utf8").hashCode());
}

TEST(LocaleTest, ShowsEnglishDisplayNamesAndCodesItDoesNotKnow)
{
    EXPECT_EQ("German", utf8(Locale(u"de_AT").getDisplayLanguage()));
    EXPECT_EQ("Austria", utf8(Locale(u"de_AT").getDisplayCountry()));
    EXPECT_EQ("German (Austria, WIEN)", utf8(Locale(u"de_AT_WIEN").getDisplayName()));
    EXPECT_EQ("English (United States)", utf8(Locale(u"en_US").getDisplayName()));
    EXPECT_EQ("Serbian (Serbia, latin)", utf8(Locale(u"sr_RS@latin").getDisplayName()));
    EXPECT_EQ("xx (YY)", utf8(Locale(u"xx_YY").getDisplayName()));
    EXPECT_EQ("", utf8(Locale().getDisplayName()));
}

TEST(LocaleTest, DefaultFollowsLcAllThenLcMessagesThenLang)
{
    const char* names[] = {"LC_ALL", "LC_MESSAGES", "LANG"};
    std::string saved[3];
    bool had[3];
    for (int i = 0; i < 3; ++i) {
        const char* value = getenv(names[i]);
        had[i] = value != nullptr;
        saved[i] = value ? value : "";
    }
    setenv("LC_ALL", "", 1);
    setenv("LC_MESSAGES", "fr_CA.UTF-8", 1);
    setenv("LANG", "de_AT.UTF-8", 1);
    EXPECT_EQ("fr_CA", utf8(Locale::getDefault().toString())) << "an empty LC_ALL does not count";
    setenv("LC_ALL", "sr_RS@latin", 1);
    EXPECT_EQ("sr_RS_latin", utf8(Locale::getDefault().toString()));
    unsetenv("LC_ALL");
    unsetenv("LC_MESSAGES");
    EXPECT_EQ("de_AT", utf8(Locale::getDefault().toString()));
    unsetenv("LANG");
    EXPECT_TRUE(Locale::getDefault().isRoot());
    for (int i = 0; i < 3; ++i) {
        if (had[i])
            setenv(names[i], saved[i].c_str(), 1);
    }
}

TEST(LocaleTest, AvailableListsTheRootAndWhatTheCLibraryOpens)
{
    const std::vector<Locale> available = Locale::getAvailable();
    ASSERT_FALSE(available.empty());
    EXPECT_TRUE(available[0].isRoot());
    EXPECT_EQ(1, std::count(available.begin(), available.end(), Locale()));
    for (const Locale& locale : available) {
        if (!locale.isRoot()) {
            EXPECT_TRUE(LocaleFormat(locale).isInstalled()) << utf8(locale.toString());
        }
    }
    if (installed(u"de_DE.UTF-8")) {
        EXPECT_NE(available.end(), std::find(available.begin(), available.end(), Locale(u"de_DE")));
    }
}

TEST(LocaleFormatTest, WritesNumbersWithTheLocalesPointAndGrouping)
{
    const LocaleFormat c;
    EXPECT_EQ("1234567", utf8(c.formatInteger(1234567)));
    EXPECT_EQ("-1234.57", utf8(c.formatNumber(-1234.567, 2)));
    EXPECT_EQ("-9223372036854775808", utf8(c.formatInteger(INT64_MIN)));
    EXPECT_EQ("NaN", utf8(c.formatNumber(std::nan(""), 2)));
    EXPECT_THROW(c.formatNumber(1.0, 18), qv::RangeErrorException);
    EXPECT_FALSE(LocaleFormat(u"xx_YY").isInstalled());
    EXPECT_EQ("1.5", utf8(LocaleFormat(u"xx_YY").formatNumber(1.5, 1)));

    if (!installed(u"de_DE.UTF-8") || !installed(u"en_US.UTF-8"))
        GTEST_SKIP() << "de_DE.UTF-8 and en_US.UTF-8 are not generated (locale-gen)";
    const LocaleFormat german(u"de_DE.UTF-8");
    EXPECT_EQ("1.234.567", utf8(german.formatInteger(1234567)));
    EXPECT_EQ("-1.234.567,89", utf8(german.formatNumber(-1234567.891, 2)));
    EXPECT_EQ("999", utf8(german.formatInteger(999)));
    const LocaleFormat american(Locale(u"en_US"));
    EXPECT_EQ("1,234,567.89", utf8(american.formatNumber(1234567.891, 2)));
    EXPECT_EQ("-1,000", utf8(american.formatInteger(-1000)));
}

TEST(LocaleFormatTest, WritesDatesAndTimesInTheLocalesForms)
{
    const int64_t when = 1795239000; // 2026-11-21 05:30:00 UTC, a Saturday
    const LocaleFormat c;
    EXPECT_EQ("11/21/26", utf8(c.formatDate(when, false, true)));
    EXPECT_EQ("05:30:00", utf8(c.formatTime(when, true)));
    EXPECT_EQ("Sat Nov 21 05:30:00 2026", utf8(c.formatDateTime(when, true)));
    EXPECT_EQ("Saturday, November 21, 2026", utf8(c.formatDate(when, true, true)));

    if (!installed(u"de_DE.UTF-8") || !installed(u"en_US.UTF-8"))
        GTEST_SKIP() << "de_DE.UTF-8 and en_US.UTF-8 are not generated (locale-gen)";
    const LocaleFormat german(u"de_DE");
    EXPECT_EQ("21.11.2026", utf8(german.formatDate(when, false, true)));
    EXPECT_EQ("Samstag, 21. November 2026", utf8(german.formatDate(when, true, true)));
    EXPECT_EQ("05:30:00", utf8(german.formatTime(when, true)));
    const LocaleFormat american(u"en_US.UTF-8");
    EXPECT_EQ("11/21/2026", utf8(american.formatDate(when, false, true)));
    EXPECT_EQ("Saturday, November 21, 2026", utf8(american.formatDate(when, true, true)));
    EXPECT_EQ("05:30:00 AM", utf8(american.formatTime(when, true)));
}
