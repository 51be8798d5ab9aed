#include "I18nTestSupport.h"
#include "TempRegistry.h"

#include <qv/core/Boundary.h>
#include <qv/i18n/ComponentStringBundle.h>
#include <qv/i18n/ListStringBundle.h>
#include <qv/i18n/Locale.h>
#include <qv/i18n/MissingResourceException.h>
#include <qv/util/Guid.h>
#include <qv/util/ROCharBuffer.h>
#include <qv/util/RegistryKey.h>

#include "AllocationSweep.h"
#include "Thrown.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

using i18ntest::BundleDirectory;
using i18ntest::text;
using i18ntest::utf8;
using qv::Reference;
using qv::Result;
using qv::String;
using qv::i18n::ComponentStringBundle;
using qv::i18n::ILocale;
using qv::i18n::IStringBundle;
using qv::i18n::ListStringBundle;
using qv::i18n::Locale;
using qv::i18n::MissingResourceException;
using qv::i18n::StringBundle;

TEST(StringBundleFaceTest, ANativeBundleAnswersAcrossTheBoundaryWithResultCodes)
{
    Reference<ListStringBundle> root(new ListStringBundle(u"app", {{u"bye", u"Bye"}}));
    Reference<ListStringBundle> german(
        new ListStringBundle(u"app_de", {{u"hello", u"Gr\u00FC\u00DF dich"}}, root.get()));
    void* face = nullptr;
    ASSERT_EQ(0, german->GetUnknown()->QueryInterface(IStringBundle::iid, &face));
    Reference<IStringBundle> bundle;
    bundle.attach(static_cast<IStringBundle*>(face));

    String out(u"kept");
    EXPECT_EQ(0, bundle->GetString(u"hello", &out));
    EXPECT_EQ(String(u"Gr\u00FC\u00DF dich"), out);
    EXPECT_EQ(IStringBundle::MISSING_KEY, bundle->GetString(u"nothing", &out));
    EXPECT_EQ(String(u"Gr\u00FC\u00DF dich"), out);
    EXPECT_EQ(qv::results::POINTER, bundle->GetString(static_cast<const char16_t*>(nullptr), &out));
    EXPECT_EQ(qv::results::POINTER, bundle->GetString(u"hello", nullptr));
    qv::util::ROCharBuffer readOnly(u"x", 1);
    EXPECT_EQ(qv::results::NOTIMPL, bundle->GetString(u"hello", &readOnly));
    EXPECT_EQ(0, bundle->GetBundleName(&out));
    EXPECT_EQ("app_de", utf8(out));

    // The far side wraps the face in a native bundle of its own again.
    Reference<ListStringBundle> fallback(new ListStringBundle(u"far", {{u"far.only", u"far away"}}));
    Reference<ComponentStringBundle> received(new ComponentStringBundle(u"received", bundle.get(), fallback.get()));
    EXPECT_EQ("Bye", utf8(received->getString(u"bye")));
    EXPECT_EQ("far away", utf8(received->getString(u"far.only")));
    try {
        received->getString(String(u"hello\0x", 7));
        FAIL() << "a key with U+0000 cannot reach the component";
    } catch (const MissingResourceException& e) {
        EXPECT_EQ("received", utf8(e.getBundleName()));
    }
    EXPECT_EQ(qv::results::POINTER, qvtest::resultOf([] { ComponentStringBundle(u"none", nullptr); }));
}

TEST(LocaleFaceTest, TextQueriesFillTheCallersBuffer)
{
    Reference<Locale> locale(new Locale(u"de_AT_WIEN"));
    void* face = nullptr;
    ASSERT_EQ(0, locale->GetUnknown()->QueryInterface(ILocale::iid, &face));
    Reference<ILocale> queries;
    queries.attach(static_cast<ILocale*>(face));

    const struct {
        Result (ILocale::*query)(qv::util::ICharBuffer*) const;
        const char* expected;
    } cases[] = {
        {&ILocale::GetLanguage, "de"},
        {&ILocale::GetCountry, "AT"},
        {&ILocale::GetVariant, "WIEN"},
        {&ILocale::GetName, "de_AT_WIEN"},
        {&ILocale::GetDisplayLanguage, "German"},
        {&ILocale::GetDisplayCountry, "Austria"},
        {&ILocale::GetDisplayName, "German (Austria, WIEN)"},
    };
    for (const auto& c : cases) {
        String out(u"previous text, longer than any answer");
        EXPECT_EQ(0, (queries.get()->*c.query)(&out));
        EXPECT_EQ(c.expected, utf8(out));
        EXPECT_EQ(qv::results::POINTER, (queries.get()->*c.query)(nullptr));
    }
    String empty(u"x");
    EXPECT_EQ(0, Locale().GetName(&empty));
    EXPECT_EQ(0, empty.getLength());
}

TEST(LocaleFaceTest, AllocationFailuresComeBackAsCodesAndLeaveTheBufferAlone)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "allocation faults are not built in";
    const Locale locale(u"sr_RS@latin");
    Reference<ListStringBundle> bundle(new ListStringBundle(u"b", {{u"key", u"a text"}}));
    String out(u"old");
    const int failures = qvtest::sweepAllocations(
        [&] {
            out = String(u"old");
            qv::qvcom::throwIfFailed(locale.GetDisplayName(&out));
            qv::qvcom::throwIfFailed(bundle->GetString(u"key", &out));
        },
        [&] { EXPECT_TRUE(out == String(u"old") || out == String(u"Serbian (Serbia, latin)")) << utf8(out); });
    EXPECT_GT(failures, 1);
    EXPECT_EQ("a text", utf8(out));
}

class ComponentBundleTest : public qvtest::TempRegistry {
protected:
    void SetUp() override
    {
        TempRegistry::SetUp();
        m_dir.write("greetings.properties", "greeting=Hello\nfarewell=Goodbye\nroot.only=root\n");
        m_dir.write("greetings_de.properties", "farewell=Auf Wiedersehen\nde.file.only=file\n");
        m_dir.write("greetings_de_AT.properties", "greeting=Servus\n");
        ASSERT_EQ(0, qvtest::run({QVTEST_REGSVR, "-s", QVTEST_BUNDLE_MODULE}).status);
        StringBundle::clearCache();
    }

    void TearDown() override
    {
        StringBundle::clearCache();
        QVComFreeUnusedLibraries(nullptr);
        TempRegistry::TearDown();
    }

    BundleDirectory m_dir;
};

TEST_F(ComponentBundleTest, FindsAComponentByProgIdAheadOfTheFileOfItsLevelAndFallsBackToFiles)
{
    Reference<const StringBundle> austrian = StringBundle::getBundle(u"greetings", Locale(u"de_AT"));
    EXPECT_EQ("Servus", text(austrian, u"greeting"));
    EXPECT_EQ("Tsch\u00FCss", text(austrian, u"farewell"));
    EXPECT_EQ("root", text(austrian, u"root.only"));
    // The component stands for the whole "de" level: the file beside it is
    // not read.
    EXPECT_EQ(
        "no text for key 'de.file.only' in bundle 'greetings_de_AT'",
        qvtest::messageOf<qv::Exception>([&] { austrian->getString(u"de.file.only"); }, IStringBundle::MISSING_KEY));

    Reference<const StringBundle> swiss = StringBundle::getBundle(u"greetings", Locale(u"de_CH"));
    EXPECT_EQ("greetings_de", utf8(swiss->getBundleName()));
    EXPECT_EQ("Hallo, {0}!", text(swiss, u"greeting"));
    EXPECT_EQ("root", text(swiss, u"root.only"));
    String out;
    EXPECT_EQ(0, swiss->GetString(u"farewell", &out));
    EXPECT_EQ(String(u"Tsch\u00FCss"), out);
    // A failure of the component is its own code, never a missing key.
    EXPECT_EQ(qv::results::INVALID_DATA, qvtest::resultOf([&] { swiss->getString(u"broken"); }));
    EXPECT_EQ(qv::results::INVALID_DATA, swiss->GetString(u"broken", &out));
    EXPECT_EQ("Hello", text(StringBundle::getBundle(u"greetings", Locale(u"fr")), u"greeting"));

    ASSERT_EQ(0, qvtest::run({QVTEST_REGSVR, "-s", "-u", QVTEST_BUNDLE_MODULE}).status);
    EXPECT_EQ("Tsch\u00FCss", text(swiss, u"farewell")) << "a bundle handed out stays valid";
    StringBundle::clearCache();
    Reference<const StringBundle> fromFiles = StringBundle::getBundle(u"greetings", Locale(u"de_CH"));
    EXPECT_EQ("Auf Wiedersehen", text(fromFiles, u"farewell"));
    EXPECT_EQ("file", text(fromFiles, u"de.file.only"));
}

TEST_F(ComponentBundleTest, ARegisteredComponentThatCannotBeCreatedIsReportedNotSkipped)
{
    EXPECT_EQ("cannot create string bundle component 'Velmara.StringBundle.broken'",
              qvtest::messageOf<qv::Exception>([] { StringBundle::getBundle(u"broken", Locale(u"en_US")); },
                                               qv::results::NOINTERFACE));

    const qv::util::Guid clsid = qv::util::Guid::createRandom();
    qv::util::RegistryKey root = qv::util::RegistryKey::classesRoot();
    root.createKey(u"Velmara.StringBundle.greetings.fr\\CLSID").setValue(nullptr, clsid.toString());
    const String server = String(u"CLSID\\").append(clsid.toString()).append(u"\\InprocServer32");
    root.createKey(server.getData()).setValue(nullptr, String(u"/nonexistent/libgone.so"));
    EXPECT_EQ("cannot create string bundle component 'Velmara.StringBundle.greetings.fr'",
              qvtest::messageOf<qv::Exception>([] { StringBundle::getBundle(u"greetings", Locale(u"fr_FR")); },
                                               qv::results::FILE_NOT_FOUND));
    // Failures are not cached: the next lookup tries again.
    root.deleteKey(u"Velmara.StringBundle.greetings.fr");
    EXPECT_EQ("Hello", text(StringBundle::getBundle(u"greetings", Locale(u"fr_FR")), u"greeting"));
}

TEST_F(ComponentBundleTest, ConcurrentLookupsShareTheComponentLevelWhileTheCacheIsCleared)
{
    std::atomic<int> mismatches{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 50; ++i) {
                if (t == 0 && i % 10 == 0)
                    StringBundle::clearCache();
                Reference<const StringBundle> bundle = StringBundle::getBundle(u"greetings", Locale(u"de_AT"));
                if (bundle->getString(u"farewell") != String(u"Tsch\u00FCss") ||
                    bundle->getString(u"root.only") != String(u"root"))
                    ++mismatches;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, mismatches.load());
}

TEST_F(ComponentBundleTest, ComponentLevelsSurviveAllocationFailures)
{
    if (!qvtest::allocationFaultsAvailable())
        GTEST_SKIP() << "allocation faults are not built in";
    // Loaded first and kept loaded by this bundle: a module's static
    // constructors run inside dlopen, where an allocation failure can only
    // terminate the process.
    Reference<const StringBundle> loaded = StringBundle::getBundle(u"greetings", Locale(u"de"));
    const int failures = qvtest::sweepAllocations(
        [&] {
            StringBundle::clearCache();
            StringBundle::getBundle(u"greetings", Locale(u"de_AT"))->getString(u"farewell");
        },
        [] {});
    EXPECT_GT(failures, 5);
    EXPECT_EQ("Tsch\u00FCss", text(StringBundle::getBundle(u"greetings", Locale(u"de_AT")), u"farewell"));
}
