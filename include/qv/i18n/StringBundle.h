#ifndef QV_I18N_STRINGBUNDLE_H
#define QV_I18N_STRINGBUNDLE_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/i18n/IStringBundle.h>
#include <qv/lang/String.h>

namespace qv {
namespace i18n {

class Locale;

// A lookup from a key to a text, as loggers and programs take their
// messages. getString throws MissingResourceException naming the key and
// the bundle when the key has no text. Every bundle also answers through its
// component face IStringBundle (a missing key is IStringBundle::MISSING_KEY
// there), so it can be handed to code on the far side of a component
// boundary.
class QV_EXPORT StringBundle : public Object, public IStringBundle {
    QV_DECLARE_INTERFACE_MAP()

public:
    ~StringBundle() override;

    virtual String getString(const String& key) const = 0;
    // The bundle's name as messages give it (a base name and its locale).
    virtual String getBundleName() const = 0;

    Result GetString(const char16_t* key, util::ICharBuffer* out) const override;
    Result GetBundleName(util::ICharBuffer* out) const override;
    using IStringBundle::GetString;

    // The bundle for baseName in locale: the first of language_COUNTRY_variant,
    // language_COUNTRY, language and the root that exists, each found level
    // the parent of the one before. A level exists when a component is
    // registered under "Velmara.StringBundle." + baseName (+ "." + the level,
    // e.g. "Velmara.StringBundle.msg.de_AT") or, failing that, when a file
    // baseName[_level].properties is in the search path. Loaded once per
    // (base name, level) and shared; safe from any thread. Throws
    // MissingResourceException when no level exists, BundleFormatException
    // for a malformed file, ResultException when a registered component
    // cannot be created.
    static Reference<const StringBundle> getBundle(const String& baseName, const Locale& locale);
    // In Locale::getDefault().
    static Reference<const StringBundle> getBundle(const String& baseName);

    // Directories searched before those of the environment variable
    // QV_BUNDLE_PATH, separated by ':'. Setting it empties the cache.
    static void setSearchPath(const String& directories);
    static String getSearchPath();
    // Forgets every loaded bundle; bundles already handed out stay valid.
    static void clearCache();

protected:
    StringBundle();
};

} // namespace i18n
} // namespace qv

#endif
