#ifndef QV_I18N_STRINGBUNDLE_H
#define QV_I18N_STRINGBUNDLE_H

#include <qv/core/Object.h>
#include <qv/lang/String.h>

namespace qv {
namespace i18n {

// A lookup from a key to a text, as loggers and programs take their
// messages. getString throws MissingResourceException naming the key and
// the bundle when the key has no text.
class QV_EXPORT StringBundle : public Object {
public:
    ~StringBundle() override;

    virtual String getString(const String& key) const = 0;
    // The bundle's name as messages give it (a base name and its locale).
    virtual String getBundleName() const = 0;

protected:
    StringBundle();
};

} // namespace i18n
} // namespace qv

#endif
