#ifndef QV_I18N_MISSINGRESOURCEEXCEPTION_H
#define QV_I18N_MISSINGRESOURCEEXCEPTION_H

#include <qv/core/Exception.h>

namespace qv {
namespace i18n {

// A key that a string bundle (and every bundle it falls back to) lacks. The
// message names both: "no text for key 'greeting' in bundle 'messages_de'".
// Its result code is 0x80070002, as for any name that is not found.
class QV_EXPORT MissingResourceException : public Exception {
public:
    MissingResourceException();
    MissingResourceException(const String& bundle, const String& key);
    // For a bundle that cannot be found at all (key empty).
    MissingResourceException(const String& message, const String& bundle, const String& key);
    MissingResourceException(const MissingResourceException& other);
    MissingResourceException& operator=(const MissingResourceException& other);
    ~MissingResourceException() override;

    String getBundleName() const;
    String getKey() const;
    Result getResult() const override;

private:
    String m_bundle;
    String m_key;
};

} // namespace i18n
} // namespace qv

#endif
