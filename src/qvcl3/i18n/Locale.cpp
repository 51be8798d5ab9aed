#include <qv/i18n/Locale.h>

#include <qv/core/Exception.h>

#include <qvcore3/qvcore3.h>

#include "i18n/FillCharBuffer.h"

#include <algorithm>
#include <cstring>
#include <string>

namespace qv {
namespace i18n {

namespace {

struct CodeName {
    const char* code;
    const char* name;
};

// Sorted by code for the binary search below. The common languages of
// ISO 639-1 and the countries their speakers live in; anything else is shown
// as its code.
const CodeName kLanguages[] = {
    {"ar", "Arabic"},
    {"bg", "Bulgarian"},
    {"ca", "Catalan"},
    {"cs", "Czech"},
    {"da", "Danish"},
    {"de", "German"},
    {"el", "Greek"},
    {"en", "English"},
    {"eo", "Esperanto"},
    {"es", "Spanish"},
    {"et", "Estonian"},
    {"eu", "Basque"},
    {"fa", "Persian"},
    {"fi", "Finnish"},
    {"fr", "French"},
    {"ga", "Irish"},
    {"he", "Hebrew"},
    {"hi", "Hindi"},
    {"hr", "Croatian"},
    {"hu", "Hungarian"},
    {"id", "Indonesian"},
    {"is", "Icelandic"},
    {"it", "Italian"},
    {"ja", "Japanese"},
    {"ko", "Korean"},
    {"lt", "Lithuanian"},
    {"lv", "Latvian"},
    {"mt", "Maltese"},
    {"nb", "Norwegian Bokmål"},
    {"nl", "Dutch"},
    {"nn", "Norwegian Nynorsk"},
    {"no", "Norwegian"},
    {"pl", "Polish"},
    {"pt", "Portuguese"},
    {"ro", "Romanian"},
    {"ru", "Russian"},
    {"sk", "Slovak"},
    {"sl", "Slovenian"},
    {"sq", "Albanian"},
    {"sr", "Serbian"},
    {"sv", "Swedish"},
    {"th", "Thai"},
    {"tr", "Turkish"},
    {"uk", "Ukrainian"},
    {"vi", "Vietnamese"},
    {"zh", "Chinese"},
};

const CodeName kCountries[] = {
    {"AR", "Argentina"}, {"AT", "Austria"},        {"AU", "Australia"},     {"BE", "Belgium"},   {"BG", "Bulgaria"},
    {"BR", "Brazil"},    {"CA", "Canada"},         {"CH", "Switzerland"},   {"CN", "China"},     {"CZ", "Czechia"},
    {"DE", "Germany"},   {"DK", "Denmark"},        {"EE", "Estonia"},       {"ES", "Spain"},     {"FI", "Finland"},
    {"FR", "France"},    {"GB", "United Kingdom"}, {"GR", "Greece"},        {"HR", "Croatia"},   {"HU", "Hungary"},
    {"IE", "Ireland"},   {"IL", "Israel"},         {"IN", "India"},         {"IS", "Iceland"},   {"IT", "Italy"},
    {"JP", "Japan"},     {"KR", "South Korea"},    {"LI", "Liechtenstein"}, {"LT", "Lithuania"}, {"LU", "Luxembourg"},
    {"LV", "Latvia"},    {"MX", "Mexico"},         {"NL", "Netherlands"},   {"NO", "Norway"},    {"NZ", "New Zealand"},
    {"PL", "Poland"},    {"PT", "Portugal"},       {"RO", "Romania"},       {"RS", "Serbia"},    {"RU", "Russia"},
    {"SE", "Sweden"},    {"SI", "Slovenia"},       {"SK", "Slovakia"},      {"TR", "Turkey"},    {"TW", "Taiwan"},
    {"UA", "Ukraine"},   {"US", "United States"},  {"ZA", "South Africa"},
};

template <size_t N>
String lookUp(const CodeName (&table)[N], const String& code)
{
    const std::string narrow = code.toUtf8();
    const CodeName* end = table + N;
    const CodeName* found = std::lower_bound(table, end, narrow, [](const CodeName& entry, const std::string& key) {
        return std::strcmp(entry.code, key.c_str()) < 0;
    });
    if (found != end && narrow == found->code)
        return String(found->name, -1, u"UTF-8");
    return code;
}

char lowerAscii(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

char upperAscii(char c)
{
    return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}

String fromAscii(const std::string& text)
{
    return String(text.c_str(), static_cast<int32_t>(text.size()), u"UTF-8");
}

} // namespace

Locale::Locale() = default;

Locale::Locale(const String& name)
{
    std::string text = name.toUtf8();
    std::string modifier;
    const size_t at = text.find('@');
    if (at != std::string::npos) {
        modifier = text.substr(at + 1);
        text.resize(at);
    }
    const size_t dot = text.find('.');
    if (dot != std::string::npos)
        text.resize(dot);
    if (text == "C" || text == "POSIX")
        text.clear();
    std::replace(text.begin(), text.end(), '-', '_');

    std::string parts[3];
    size_t start = 0;
    for (int part = 0; part < 3 && start <= text.size(); ++part) {
        // The variant takes the rest, separators and all ("de_AT_WIEN_OST").
        const size_t end = part == 2 ? std::string::npos : text.find('_', start);
        parts[part] = text.substr(start, end == std::string::npos ? std::string::npos : end - start);
        if (end == std::string::npos)
            break;
        start = end + 1;
    }
    std::transform(parts[0].begin(), parts[0].end(), parts[0].begin(), lowerAscii);
    std::transform(parts[1].begin(), parts[1].end(), parts[1].begin(), upperAscii);
    if (parts[2].empty())
        parts[2] = modifier;
    m_language = fromAscii(parts[0]);
    m_country = fromAscii(parts[1]);
    m_variant = fromAscii(parts[2]);
}

Locale::Locale(const String& language, const String& country, const String& variant)
{
    std::string lower = language.toUtf8();
    std::string upper = country.toUtf8();
    std::transform(lower.begin(), lower.end(), lower.begin(), lowerAscii);
    std::transform(upper.begin(), upper.end(), upper.begin(), upperAscii);
    m_language = fromAscii(lower);
    m_country = fromAscii(upper);
    m_variant = variant;
}

Locale::Locale(const Locale& other) = default;

Locale& Locale::operator=(const Locale& other) = default;

Locale::~Locale() = default;

QV_BEGIN_INTERFACE_MAP(Locale)
QV_INTERFACE_ENTRY(Locale, ILocale)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

Result Locale::GetLanguage(util::ICharBuffer* out) const
{
    return detail::fillCharBuffer(out, [this] { return getLanguage(); });
}

Result Locale::GetCountry(util::ICharBuffer* out) const
{
    return detail::fillCharBuffer(out, [this] { return getCountry(); });
}

Result Locale::GetVariant(util::ICharBuffer* out) const
{
    return detail::fillCharBuffer(out, [this] { return getVariant(); });
}

Result Locale::GetName(util::ICharBuffer* out) const
{
    return detail::fillCharBuffer(out, [this] { return toString(); });
}

Result Locale::GetDisplayLanguage(util::ICharBuffer* out) const
{
    return detail::fillCharBuffer(out, [this] { return getDisplayLanguage(); });
}

Result Locale::GetDisplayCountry(util::ICharBuffer* out) const
{
    return detail::fillCharBuffer(out, [this] { return getDisplayCountry(); });
}

Result Locale::GetDisplayName(util::ICharBuffer* out) const
{
    return detail::fillCharBuffer(out, [this] { return getDisplayName(); });
}

String Locale::getLanguage() const
{
    return m_language;
}

String Locale::getCountry() const
{
    return m_country;
}

String Locale::getVariant() const
{
    return m_variant;
}

bool Locale::isRoot() const
{
    return m_language.getLength() == 0 && m_country.getLength() == 0 && m_variant.getLength() == 0;
}

String Locale::toString()
{
    String name(m_language);
    if (m_country.getLength() > 0 || m_variant.getLength() > 0)
        name.append(u'_').append(m_country);
    if (m_variant.getLength() > 0)
        name.append(u'_').append(m_variant);
    return name;
}

String Locale::getDisplayLanguage() const
{
    return m_language.getLength() == 0 ? String() : lookUp(kLanguages, m_language);
}

String Locale::getDisplayCountry() const
{
    return m_country.getLength() == 0 ? String() : lookUp(kCountries, m_country);
}

String Locale::getDisplayName() const
{
    String name = getDisplayLanguage();
    String details = getDisplayCountry();
    if (m_variant.getLength() > 0) {
        if (details.getLength() > 0)
            details.append(u", ");
        details.append(m_variant);
    }
    if (details.getLength() == 0)
        return name;
    if (name.getLength() == 0)
        return details;
    return name.append(u" (").append(details).append(u')');
}

bool Locale::equals(const Object& other) const
{
    const Locale* locale = dynamic_cast<const Locale*>(&other);
    return locale != nullptr && *this == *locale;
}

uint32_t Locale::hashCode() const
{
    return toString().hashCode();
}

Object* Locale::clone() const
{
    return new Locale(*this);
}

Locale Locale::getDefault()
{
    char name[256];
    int32_t length = 0;
    if (QVGetMessagesLocaleName(name, sizeof name, &length) < 0)
        return Locale();
    return Locale(String(name, length, u"UTF-8"));
}

std::vector<Locale> Locale::getAvailable()
{
    int32_t length = 0;
    QVGetAvailableLocales(nullptr, 0, &length);
    std::string names;
    for (;;) {
        names.resize(static_cast<size_t>(length) + 1);
        const Result result = QVGetAvailableLocales(&names[0], length + 1, &length);
        if (result == results::BUFFER_TOO_SMALL)
            continue;
        if (failed(result))
            throw ResultException(result);
        break;
    }
    std::vector<Locale> locales;
    for (size_t start = 0; start < static_cast<size_t>(length) && names[start] != '\0';) {
        const size_t size = std::strlen(names.c_str() + start);
        Locale locale(String(names.c_str() + start, static_cast<int32_t>(size), u"UTF-8"));
        if (std::find(locales.begin(), locales.end(), locale) == locales.end())
            locales.push_back(locale);
        start += size + 1;
    }
    return locales;
}

bool operator==(const Locale& a, const Locale& b)
{
    return a.getLanguage() == b.getLanguage() && a.getCountry() == b.getCountry() && a.getVariant() == b.getVariant();
}

} // namespace i18n
} // namespace qv
