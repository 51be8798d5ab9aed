#include <qv/core/Exception.h>
#include <qv/io/IoException.h>
#include <qv/lang/Boolean.h>
#include <qv/lang/Double.h>
#include <qv/lang/Integer32.h>
#include <qv/lang/UInteger64.h>
#include <qv/util/PropertiesFormat.h>
#include <qv/util/PropertySet.h>

#include <gtest/gtest.h>

#include "AllocationSweep.h"
#include "ChildProcess.h"
#include "QvTextPrinting.h"

#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <string>
#include <vector>

using qv::Reference;
using qv::String;
using qv::util::PropertiesFormat;
using qv::util::PropertiesFormatException;
using qv::util::PropertySet;

namespace {

std::vector<std::pair<std::string, std::string>> parsed(const char16_t* text)
{
    std::vector<std::pair<std::string, std::string>> entries;
    for (const auto& entry : PropertiesFormat::parse(String(text), String(u"test")))
        entries.emplace_back(entry.first.toUtf8(), entry.second.toUtf8());
    return entries;
}

std::string failure(const char16_t* text)
{
    try {
        PropertiesFormat::parse(String(text), String(u"app.properties"));
    } catch (const PropertiesFormatException& e) {
        return e.getDescription().toUtf8();
    }
    return "accepted";
}

struct Recorder : qv::util::IPropertyChangeListener {
    void propertyChanged(const String& name, const qv::Object* oldValue, const qv::Object* newValue) override
    {
        events.push_back(name.toUtf8() + ":" + (oldValue ? oldValue->toString().toUtf8() : "-") + ">" +
                         (newValue ? newValue->toString().toUtf8() : "-"));
    }
    std::vector<std::string> events;
};

} // namespace

TEST(PropertiesFormat, JavaDocumentationExamples)
{
    typedef std::vector<std::pair<std::string, std::string>> Entries;
    EXPECT_EQ(parsed(u"Truth = Beauty\n Truth:Beauty\nTruth                    :Beauty\n"),
              (Entries{{"Truth", "Beauty"}, {"Truth", "Beauty"}, {"Truth", "Beauty"}}));
    EXPECT_EQ(parsed(u"fruits                           apple, banana, pear, \\\n"
                     u"                                 cantaloupe, watermelon, \\\n"
                     u"                                 kiwi, mango\n"),
              (Entries{{"fruits", "apple, banana, pear, cantaloupe, watermelon, kiwi, mango"}}));
    EXPECT_EQ(parsed(u"cheeses\n"), (Entries{{"cheeses", ""}}));
    EXPECT_EQ(parsed(u"\\:\\=key = value\n"), (Entries{{":=key", "value"}}));
    EXPECT_EQ(parsed(u"# comment\n! also\n   \n\tkey\\ with\\ spaces=a\\tb\\u0041\\q\\\\\r\nx=1\ry=2"),
              (Entries{{"key with spaces", "a\tbAq\\"}, {"x", "1"}, {"y", "2"}}));
    // A continued line may start with '#': it is text, not a comment.
    EXPECT_EQ(parsed(u"k=a\\\n#b\n"), (Entries{{"k", "a#b"}}));
    EXPECT_EQ(parsed(u"k==v\nj:=w\n"), (Entries{{"k", "=v"}, {"j", "=w"}}));
    EXPECT_EQ(parsed(u"k=x\\\\"), (Entries{{"k", "x\\"}}));
}

TEST(PropertiesFormat, BadInputNamesSourceAndLineAndFormatRoundTrips)
{
    EXPECT_EQ(failure(u"a=1\n\nb=\\u12G4\n"), "app.properties:3: bad \\u escape");
    EXPECT_EQ(failure(u"a=1\nb=\\u12"), "app.properties:2: bad \\u escape");
    EXPECT_EQ(failure(u"a=1\nlast=x\\"), "app.properties:2: line ends with a lone backslash");
    EXPECT_EQ(failure(u"a=1\nlast=x\\\\"), "accepted");

    const PropertiesFormat::Entries awkward = {{String(u" lead:ing=#!"), String(u"  value with\ttab\nand \\ slash ")},
                                               {String(u"plain"), String(u"")},
                                               {String(u"\u00e9t\u00e9"), String(u"\x01\u20ac")}};
    String text;
    for (const auto& pair : awkward)
        text.append(PropertiesFormat::formatEntry(pair.first, pair.second)).append(u'\n');
    EXPECT_EQ(PropertiesFormat::parse(text, String(u"round")), awkward);
}

TEST(PropertySet, TypedValuesOrderAndListeners)
{
    PropertySet set;
    Recorder recorder;
    set.addListener(&recorder);
    set.setString(String(u"name"), String(u"demo"));
    set.setInt(String(u"port"), 8080);
    set.setBool(String(u"debug"), true);
    set.setDouble(String(u"ratio"), 2.0);
    set.setString(String(u"count"), String(u"42"));
    set.setInt(String(u"port"), 9090);
    EXPECT_TRUE(set.remove(String(u"ratio")));
    EXPECT_FALSE(set.remove(String(u"ratio")));
    EXPECT_EQ(recorder.events, (std::vector<std::string>{"name:->demo", "port:->8080", "debug:->true", "ratio:->2",
                                                         "count:->42", "port:8080>9090", "ratio:2>-"}));
    set.removeListener(&recorder);

    EXPECT_EQ(set.getNames(),
              (std::vector<String>{String(u"name"), String(u"port"), String(u"debug"), String(u"count")}));
    EXPECT_EQ(set.getInt(String(u"port"), 0), 9090);
    EXPECT_EQ(set.getInt(String(u"count"), 0), 42);
    EXPECT_EQ(set.getDouble(String(u"count"), 0), 42.0);
    EXPECT_EQ(set.getInt(String(u"absent"), 7), 7);
    EXPECT_TRUE(set.getBool(String(u"debug"), false));
    EXPECT_EQ(set.getString(String(u"port")), String(u"9090"));
    EXPECT_THROW(set.getInt(String(u"name"), 0), qv::CastFailedException);
    EXPECT_THROW(set.getBool(String(u"port"), false), qv::CastFailedException);
    set.setDouble(String(u"half"), 0.5);
    EXPECT_THROW(set.getInt(String(u"half"), 0), qv::CastFailedException);
    set.setProperty(String(u"huge"), Reference<qv::Object>(new qv::UInteger64(UINT64_MAX)));
    EXPECT_THROW(set.getInt64(String(u"huge"), 0), qv::CastFailedException);
    set.setInt64(String(u"wide"), int64_t(1) << 40);
    EXPECT_THROW(set.getInt(String(u"wide"), 0), qv::CastFailedException);
}

TEST(PropertySet, FilesInBothFormatsKeepWhatMatters)
{
    const qvtest::TempDir folder("qvcl3-props");
    const std::string& base = folder.path();
    PropertySet set;
    set.setString(String(u"greeting"), String(u"h\u00e9llo <&> \"world\"\n"));
    set.setInt(String(u"port"), -80);
    set.setBool(String(u"on"), false);
    set.setProperty(String(u"big"), Reference<qv::Object>(new qv::UInteger64(UINT64_MAX)));
    set.setDouble(String(u"ratio"), 0.25);

    const String xml((base + "/set.xml").c_str());
    set.storeXml(xml);
    PropertySet typed;
    typed.loadXml(xml);
    EXPECT_EQ(typed.getNames(), set.getNames());
    EXPECT_TRUE(typed.getProperty(String(u"port"))->equals(qv::Integer32(-80)));
    EXPECT_NE(dynamic_cast<qv::Boolean*>(typed.getProperty(String(u"on")).get()), nullptr);
    EXPECT_EQ(typed.getString(String(u"big")), String(u"18446744073709551615"));
    EXPECT_EQ(typed.getString(String(u"greeting")), set.getString(String(u"greeting")));

    const String plain((base + "/set.properties").c_str());
    set.store(plain, String(u"saved"));
    PropertySet texts;
    texts.load(plain);
    EXPECT_EQ(texts.getString(String(u"greeting")), set.getString(String(u"greeting")));
    EXPECT_EQ(texts.getInt(String(u"port"), 0), -80);
    EXPECT_FALSE(texts.getBool(String(u"on"), true));

    PropertySet untouched;
    untouched.setString(String(u"keep"), String(u"me"));
    EXPECT_THROW(untouched.load(String((base + "/absent").c_str())), qv::io::IoException);
    EXPECT_THROW(untouched.loadText(String(u"a=1\nb=\\u00zz\n"), String(u"t")), PropertiesFormatException);
    const char16_t* badXml[] = {
        u"<properties><property name=\"a\" type=\"Integer8\">300</property></properties>",
        u"<properties><property type=\"String\">x</property></properties>",
        u"<properties><property name=\"a\">x</propertie></properties>",
        u"<properties><property name=\"a\">&bogus;</property></properties>",
        u"<properties>",
    };
    for (const char16_t* text : badXml)
        EXPECT_THROW(untouched.loadXmlText(String(text), String(u"x")), PropertiesFormatException)
            << String(text).toUtf8();
    EXPECT_EQ(untouched.size(), 1);
    EXPECT_EQ(untouched.getString(String(u"keep")), String(u"me"));
}

TEST(PropertySet, AllocationFailureLeavesTheSetAsItWas)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "built without fault injection";
    PropertySet set;
    set.setString(String(u"a"), String(u"1"));
    const String text(u"b=2\nc=3\n");
    qvtest::sweepAllocations([&] { set.loadText(text, String(u"t")); },
                             [&] {
                                 EXPECT_EQ(set.size(), 1);
                                 EXPECT_EQ(set.getString(String(u"a")), String(u"1"));
                             });
    EXPECT_EQ(set.size(), 3);
}
