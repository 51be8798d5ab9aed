// Bundles looked up along the locale's fallback chain, and numbers and dates
// in the locale's own forms.
#include "Demo.h"

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>

#include <stdlib.h>

namespace {

void writeFile(const std::string& path, const char* text)
{
    std::ofstream(path, std::ios::binary) << text;
}

} // namespace

void demoI18n()
{
    using namespace qv::i18n;
    section("String bundles from properties files, with fallback");
    std::string directory = "/tmp/qvcl3_demo_i18n_XXXXXX";
    if (mkdtemp(&directory[0]) == nullptr)
        return;
    writeFile(directory + "/greetings.properties", "greeting=Hello, {0}!\nfarewell=Goodbye\n");
    writeFile(directory + "/greetings_de.properties", "greeting=Hallo, {0}!\nfarewell=Auf Wiedersehen\n");
    writeFile(directory + "/greetings_de_AT.properties", "# only what differs in Austria\ngreeting=Servus, {0}!\n");
    StringBundle::setSearchPath(qv::String(directory.c_str(), -1, u"UTF-8"));

    const int64_t when = 1795239000; // 2026-11-21 05:30:00 UTC
    for (const char16_t* name : {u"de_AT", u"de_DE", u"en_US"}) {
        const Locale locale(name);
        qv::Reference<const StringBundle> bundle = StringBundle::getBundle(u"greetings", locale);
        qv::String greeting = bundle->getString(u"greeting");
        greeting.replace(greeting.indexOf(u"{0}"), 3, u"qvcl3");
        std::printf("%s (%s) from bundle %s: %s / %s\n", locale.toString().toUtf8().c_str(),
                    locale.getDisplayName().toUtf8().c_str(), bundle->getBundleName().toUtf8().c_str(),
                    greeting.toUtf8().c_str(), bundle->getString(u"farewell").toUtf8().c_str());

        const LocaleFormat format(locale);
        std::printf("  %s%s: %s, %s, %s\n", format.getName().toUtf8().c_str(),
                    format.isInstalled() ? "" : " (not installed here: shown as in C)",
                    format.formatNumber(1234567.891, 2).toUtf8().c_str(),
                    format.formatDate(when, false, true).toUtf8().c_str(),
                    format.formatDate(when, true, true).toUtf8().c_str());
    }
    try {
        StringBundle::getBundle(u"greetings", Locale(u"fr"))->getString(u"missing");
    } catch (const MissingResourceException& e) {
        std::printf("fr: %s\n", e.getDescription().toUtf8().c_str());
    }

    section("String bundles and locales through their component faces");
    // What code on the far side of a component boundary sees: texts come
    // back in the caller's ICharBuffer (a String is one), failures as codes.
    qv::Reference<const StringBundle> austrian = StringBundle::getBundle(u"greetings", Locale(u"de_AT"));
    const IStringBundle* face = austrian.get();
    qv::String text;
    const qv::Result found = face->GetString(u"farewell", &text);
    std::printf("IStringBundle::GetString(\"farewell\") = 0x%08X, \"%s\"\n", static_cast<uint32_t>(found),
                text.toUtf8().c_str());
    std::printf("IStringBundle::GetString(\"missing\") = 0x%08X (MISSING_KEY)\n",
                static_cast<uint32_t>(face->GetString(u"missing", &text)));
    const Locale serbian(u"sr_RS@latin");
    const ILocale& locale = serbian;
    locale.GetDisplayName(&text);
    std::printf("ILocale::GetDisplayName for %s: %s\n", serbian.toString().toUtf8().c_str(), text.toUtf8().c_str());

    StringBundle::setSearchPath(qv::String());
    for (const char* file : {"/greetings.properties", "/greetings_de.properties", "/greetings_de_AT.properties"})
        std::remove((directory + file).c_str());
    std::remove(directory.c_str());
}
