#ifndef QV_I18N_LOCALE_H
#define QV_I18N_LOCALE_H

#include <qv/core/Object.h>
#include <qv/i18n/ILocale.h>
#include <qv/lang/String.h>

#include <vector>

namespace qv {
namespace i18n {

// A language, a country and a variant, as "de_AT_WIEN" names them. The
// language is kept in lower case, the country in upper case, the variant as
// given; the root locale has all three empty and is what "C", "POSIX" and ""
// name. Names are never rejected: a name this class cannot read gives the
// pieces it could, and an unknown language simply finds no bundle of its own.
// ILocale is its component face.
class QV_EXPORT Locale : public Object, public ILocale {
    QV_DECLARE_INTERFACE_MAP()

public:
    // The root locale.
    Locale();
    // "de_DE", "de-DE", "de_DE.UTF-8", "sr_RS@latin" (variant "latin"),
    // "de_AT_WIEN", "C", "POSIX". A code set after '.' is dropped.
    explicit Locale(const String& name);
    Locale(const String& language, const String& country, const String& variant = String());
    Locale(const Locale& other);
    Locale& operator=(const Locale& other);
    ~Locale() override;

    String getLanguage() const;
    String getCountry() const;
    String getVariant() const;
    bool isRoot() const;
    using Object::toString;
    // "de_AT_WIEN", "de_AT", "de", "" for the root; "de__WIEN" when only the
    // country is missing.
    String toString() override;

    // English names: "German", "Austria", "German (Austria, WIEN)". An
    // unknown code is shown as the code itself.
    String getDisplayLanguage() const;
    String getDisplayCountry() const;
    String getDisplayName() const;

    Result GetLanguage(util::ICharBuffer* out) const override;
    Result GetCountry(util::ICharBuffer* out) const override;
    Result GetVariant(util::ICharBuffer* out) const override;
    Result GetName(util::ICharBuffer* out) const override;
    Result GetDisplayLanguage(util::ICharBuffer* out) const override;
    Result GetDisplayCountry(util::ICharBuffer* out) const override;
    Result GetDisplayName(util::ICharBuffer* out) const override;

    bool equals(const Object& other) const override;
    uint32_t hashCode() const override;
    Object* clone() const override;

    // The locale messages are shown in: LC_ALL, else LC_MESSAGES, else LANG
    // (the first that is set and not empty), else the root.
    static Locale getDefault();
    // What the C library has installed, without duplicates ("de_DE.utf8" and
    // "de_DE" both give de_DE); the root first.
    static std::vector<Locale> getAvailable();

private:
    String m_language;
    String m_country;
    String m_variant;
};

QV_EXPORT bool operator==(const Locale& a, const Locale& b);
inline bool operator!=(const Locale& a, const Locale& b)
{
    return !(a == b);
}

} // namespace i18n
} // namespace qv

#endif
