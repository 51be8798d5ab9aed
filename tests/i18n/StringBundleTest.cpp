#include "I18nTestSupport.h"

#include <qv/i18n/BundleFormatException.h>
#include <qv/i18n/ListStringBundle.h>
#include <qv/i18n/Locale.h>
#include <qv/i18n/MissingResourceException.h>
#include <qv/i18n/StringBundle.h>

#include "AllocationSweep.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using i18ntest::BundleDirectory;
using i18ntest::text;
using i18ntest::utf8;
using qv::Reference;
using qv::String;
using qv::i18n::BundleFormatException;
using qv::i18n::ListStringBundle;
using qv::i18n::Locale;
using qv::i18n::MissingResourceException;
using qv::i18n::StringBundle;

TEST(ListStringBundleTest, LooksUpOwnTextsThenParentsAndNamesItselfWhenMissing)
{
    Reference<ListStringBundle> root(new ListStringBundle(u"app", {{u"greeting", u"Hello"}, {u"bye", u"Bye"}}));
    Reference<ListStringBundle> german(
        new ListStringBundle(u"app_de", {{u"greeting", u"Hallo"}, {u"greeting", u"Servus"}}, root.get()));
    EXPECT_EQ("Servus", utf8(german->getString(u"greeting")));
    EXPECT_EQ("Bye", utf8(german->getString(u"bye")));
    EXPECT_TRUE(german->containsKey(u"bye"));
    EXPECT_FALSE(root->containsKey(u"nothing"));
    EXPECT_EQ(1, german->getSize());
    ASSERT_EQ(2u, root->getKeys().size());
    EXPECT_EQ("bye", utf8(root->getKeys()[0]));

    try {
        german->getString(u"nothing");
        FAIL() << "no exception";
    } catch (const MissingResourceException& e) {
        EXPECT_EQ("app_de", utf8(e.getBundleName()));
        EXPECT_EQ("nothing", utf8(e.getKey()));
        EXPECT_EQ("no text for key 'nothing' in bundle 'app_de'", utf8(e.getDescription()));
    }
    EXPECT_THROW(root->setParent(german.get()), qv::IllegalStateException);
    EXPECT_EQ(nullptr, root->getParent());
}

TEST(ListStringBundleTest, SurvivesAllocationFailuresWhileFilling)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "allocation faults are not built in";
    Reference<ListStringBundle> bundle(new ListStringBundle(u"sweep", {{u"old", u"value"}}));
    const int failures =
        qvtest::sweepAllocations([&] { bundle->put(String(u"new key that is long enough"), String(u"text")); },
                                 [&] { EXPECT_EQ("value", utf8(bundle->getString(u"old"))); });
    EXPECT_GT(failures, 0);
    EXPECT_EQ("text", utf8(bundle->getString(u"new key that is long enough")));
}

TEST(ListStringBundleTest, GetStringOnAFilledBundleAllocatesNothing)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "allocation faults are not built in";
    Reference<ListStringBundle> parent(new ListStringBundle(u"root", {{u"inherited", u"from the root"}}));
    Reference<ListStringBundle> bundle(
        new ListStringBundle(u"leaf", {{u"own", u"a text of some length"}}, parent.get()));
    const String own(u"own");
    const String inherited(u"inherited");
    const String expectedOwn(u"a text of some length");
    const String expectedInherited(u"from the root");
    bool ownFound = false;
    bool inheritedFound = false;
    // Any allocation now fails, so a lookup that allocated would throw. The
    // results are initialised, not assigned: String's assignment copies.
    QVFaultArmAllocation(1);
    try {
        const String first = bundle->getString(own);
        ownFound = first == expectedOwn;
        const String second = bundle->getString(inherited);
        inheritedFound = second == expectedInherited;
    } catch (const qv::OutOfMemoryException&) {
    }
    QVFaultDisarmAll();
    EXPECT_TRUE(ownFound);
    EXPECT_TRUE(inheritedFound);
}

class BundleFilesTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_dir.write("msg.properties", "greeting=Hello\nfarewell=Goodbye\nroot.only=root\n");
        m_dir.write("msg_de.properties", "greeting=Hallo\nfarewell=Auf Wiedersehen\nde.only=de\n");
        m_dir.write("msg_de_AT.properties", "greeting=Servus\n");
    }
    BundleDirectory m_dir;
};

TEST_F(BundleFilesTest, FallsBackFromTheMostSpecificLevelToTheRoot)
{
    struct Case {
        const char16_t* locale;
        const char* bundle;
        const char* greeting;
        const char* farewell;
    };
    const Case cases[] = {
        {u"de_AT_WIEN", "msg_de_AT", "Servus", "Auf Wiedersehen"},
        {u"de_AT", "msg_de_AT", "Servus", "Auf Wiedersehen"},
        {u"de_CH", "msg_de", "Hallo", "Auf Wiedersehen"},
        {u"fr", "msg", "Hello", "Goodbye"},
        {u"xx_YY.UTF-8", "msg", "Hello", "Goodbye"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(utf8(c.locale));
        Reference<const StringBundle> bundle = StringBundle::getBundle(u"msg", Locale(c.locale));
        EXPECT_EQ(c.bundle, utf8(bundle->getBundleName()));
        EXPECT_EQ(c.greeting, text(bundle, u"greeting"));
        EXPECT_EQ(c.farewell, text(bundle, u"farewell"));
        EXPECT_EQ("root", text(bundle, u"root.only"));
    }
    EXPECT_EQ("de", text(StringBundle::getBundle(u"msg", Locale(u"de_AT_WIEN")), u"de.only"));
    EXPECT_THROW(StringBundle::getBundle(u"msg", Locale(u"fr"))->getString(u"de.only"), MissingResourceException);
    // Levels are shared: de_AT's parent is the very bundle that de_CH gets.
    Reference<const StringBundle> austrian = StringBundle::getBundle(u"msg", Locale(u"de_AT"));
    Reference<const StringBundle> swiss = StringBundle::getBundle(u"msg", Locale(u"de_CH"));
    EXPECT_EQ(swiss.get(), dynamic_cast<const ListStringBundle&>(*austrian).getParent());
    EXPECT_EQ(austrian.get(), StringBundle::getBundle(u"msg", Locale(u"de_AT")).get());
}

TEST_F(BundleFilesTest, CachesUntilTheSearchPathChangesAndReportsMissingBundles)
{
    Reference<const StringBundle> first = StringBundle::getBundle(u"msg", Locale(u"de"));
    m_dir.write("msg_de.properties", "greeting=Neu\n");
    EXPECT_EQ("Hallo", text(StringBundle::getBundle(u"msg", Locale(u"de")), u"greeting"));
    StringBundle::clearCache();
    EXPECT_EQ("Neu", text(StringBundle::getBundle(u"msg", Locale(u"de")), u"greeting"));
    EXPECT_EQ("Hallo", text(first, u"greeting")) << "a bundle handed out stays as it was";

    try {
        StringBundle::getBundle(u"absent", Locale(u"de_AT"));
        FAIL() << "no exception";
    } catch (const MissingResourceException& e) {
        EXPECT_EQ("absent_de_AT", utf8(e.getBundleName()));
        EXPECT_EQ("no bundle 'absent' for locale 'de_AT'", utf8(e.getDescription()));
    }
}

TEST(BundlePathTest, FindsFilesThroughTheEnvironmentAfterTheCallersPath)
{
    BundleDirectory callers;
    BundleDirectory fromEnvironment;
    StringBundle::setSearchPath(String(callers.path().c_str(), -1, u"UTF-8"));
    callers.write("env.properties", "where=caller\n");
    fromEnvironment.write("env.properties", "where=environment\n");
    fromEnvironment.write("env_it.properties", "only=environment\n");
    setenv("QV_BUNDLE_PATH", ("/nonexistent:" + fromEnvironment.path()).c_str(), 1);
    Reference<const StringBundle> bundle = StringBundle::getBundle(u"env", Locale(u"it_IT"));
    unsetenv("QV_BUNDLE_PATH");
    EXPECT_EQ("env_it", utf8(bundle->getBundleName()));
    EXPECT_EQ("environment", text(bundle, u"only"));
    EXPECT_EQ("caller", text(bundle, u"where"));
}

TEST_F(BundleFilesTest, ConcurrentLookupsLoadEachLevelOnceAndAgree)
{
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    std::vector<const StringBundle*> seen(8);
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 200; ++i) {
                Reference<const StringBundle> bundle = StringBundle::getBundle(u"msg", Locale(u"de_AT"));
                if (bundle->getString(u"farewell") != String(u"Auf Wiedersehen"))
                    ++mismatches;
                seen[t] = bundle.get();
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, mismatches.load());
    for (const StringBundle* bundle : seen)
        EXPECT_EQ(seen[0], bundle);
}

TEST_F(BundleFilesTest, LoadingSurvivesAllocationFailures)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "allocation faults are not built in";
    const int failures = qvtest::sweepAllocations(
        [&] {
            StringBundle::clearCache();
            StringBundle::getBundle(u"msg", Locale(u"de_AT"));
        },
        [] {});
    EXPECT_GT(failures, 2);
    EXPECT_EQ("Servus", text(StringBundle::getBundle(u"msg", Locale(u"de_AT")), u"greeting"));
}
