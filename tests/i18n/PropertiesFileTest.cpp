#include "I18nTestSupport.h"

#include <qv/i18n/BundleFormatException.h>
#include <qv/i18n/ListStringBundle.h>
#include <qv/i18n/Locale.h>
#include <qv/i18n/StringBundle.h>

#include <gtest/gtest.h>

using i18ntest::BundleDirectory;
using i18ntest::utf8;
using qv::Reference;
using qv::String;
using qv::i18n::BundleFormatException;
using qv::i18n::ListStringBundle;
using qv::i18n::Locale;
using qv::i18n::StringBundle;

namespace {

Reference<const ListStringBundle> load(const BundleDirectory& dir, const std::string& bytes)
{
    dir.write("p.properties", bytes);
    StringBundle::clearCache();
    Reference<const StringBundle> bundle = StringBundle::getBundle(u"p", Locale());
    return Reference<const ListStringBundle>(dynamic_cast<const ListStringBundle*>(bundle.get()));
}

BundleFormatException loadError(const BundleDirectory& dir, const std::string& bytes)
{
    try {
        load(dir, bytes);
    } catch (const BundleFormatException& e) {
        return e;
    }
    ADD_FAILURE() << "no exception for: " << bytes;
    return BundleFormatException();
}

} // namespace

// The line rules (separators, continuations, empty values, line ends) are
// the util properties parser's and are tested with it; these cases cover
// what the bundle loader adds: UTF-8 with its mark, and errors with the
// file's path, line and byte offset.
TEST(PropertiesFileTest, ResolvesEscapesCommentsAndUtf8)
{
    BundleDirectory dir;
    Reference<const ListStringBundle> bundle = load(dir, "\xEF\xBB\xBF# comment = no \\\n"
                                                         "! also a comment\n"
                                                         "   \t\n"
                                                         "escapes=\\t\\n\\r\\f\\b\\\\\\#\n"
                                                         "unicode=\\u00e4\\u20AC\n"
                                                         "raw=\xC3\xA4\xE2\x82\xAC\xF0\x9F\x98\x80\n"
                                                         "key#hash=value!bang\n");
    EXPECT_EQ(u"\t\n\r\fb\\#", bundle->getString(u"escapes").toU16String());
    EXPECT_EQ(u"\u00e4\u20ac", bundle->getString(u"unicode").toU16String());
    EXPECT_EQ(u"\u00e4\u20ac\U0001F600", bundle->getString(u"raw").toU16String());
    EXPECT_EQ("value!bang", utf8(bundle->getString(u"key#hash")));
    EXPECT_EQ(4, bundle->getSize()) << "comment lines never continue";
}

TEST(PropertiesFileTest, RejectsBadEscapesTrailingBackslashesAndInvalidUtf8WithTheirPlace)
{
    BundleDirectory dir;
    const std::string file = dir.path() + "/p.properties";

    BundleFormatException e = loadError(dir, "a=1\nb=\\u12G4\n");
    EXPECT_EQ(2, e.getLine());
    EXPECT_EQ(file + ":2: bad \\u escape", utf8(e.getDescription()));
    EXPECT_EQ(static_cast<qv::Result>(0x8007000Du), e.getResult());

    e = loadError(dir, "a=1\nb=x \\\n  \\u12");
    EXPECT_EQ(2, e.getLine()) << "the line where the faulty logical line starts";

    e = loadError(dir, "a=1\nb=2 \\");
    EXPECT_EQ(2, e.getLine());
    EXPECT_EQ(file + ":2: line ends with a lone backslash", utf8(e.getDescription()));

    e = loadError(dir, "a=1\nb=\xC3\x28");
    EXPECT_EQ(6, e.getOffset());
    EXPECT_EQ(file + ": byte offset 6: invalid UTF-8", utf8(e.getDescription()));
    EXPECT_EQ(2, loadError(dir, "a=\xC0\xAF").getOffset()) << "overlong forms are refused";
    EXPECT_EQ(2, loadError(dir, "a=\xED\xA0\x80").getOffset()) << "surrogates are refused";
    EXPECT_EQ(2, loadError(dir, "a=\xE2\x82").getOffset());

    // Nothing of a refused file is kept.
    StringBundle::clearCache();
    EXPECT_THROW(StringBundle::getBundle(u"p", Locale()), BundleFormatException);
}
