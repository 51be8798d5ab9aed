#ifndef QV_I18N_COMPONENTSTRINGBUNDLE_H
#define QV_I18N_COMPONENTSTRINGBUNDLE_H

#include <qv/core/Reference.h>
#include <qv/i18n/IStringBundle.h>
#include <qv/i18n/StringBundle.h>

namespace qv {
namespace i18n {

// A bundle behind the component face: getString asks the component, and for
// a key it lacks (IStringBundle::MISSING_KEY) the parent. What getBundle
// makes of a level a module supplies; also how code that received an
// IStringBundle across a boundary gets a native bundle. Holds references to
// both; safe from any thread when the component is.
class QV_EXPORT ComponentStringBundle : public StringBundle {
public:
    // name: what getBundleName and MissingResourceException report. A null
    // component is ResultException 0x80004003.
    ComponentStringBundle(const String& name, IStringBundle* component, const StringBundle* parent = nullptr);
    ~ComponentStringBundle() override;

    // A key holding U+0000 cannot be passed as NUL-terminated text, so the
    // component is not asked for it. Any other failure of the component is
    // thrown as ResultException (OutOfMemoryException for 0x8007000E).
    String getString(const String& key) const override;
    String getBundleName() const override;

    const StringBundle* getParent() const;

private:
    String m_name;
    Reference<IStringBundle> m_component;
    Reference<const StringBundle> m_parent;
};

} // namespace i18n
} // namespace qv

#endif
