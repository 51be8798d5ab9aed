#include <qv/i18n/MissingResourceException.h>

namespace qv {
namespace i18n {

MissingResourceException::MissingResourceException() = default;

MissingResourceException::MissingResourceException(const String& bundle, const String& key)
    : Exception(String(u"no text for key '").append(key).append(u"' in bundle '").append(bundle).append(u"'")),
      m_bundle(bundle), m_key(key)
{}

MissingResourceException::MissingResourceException(const String& message, const String& bundle, const String& key)
    : Exception(message), m_bundle(bundle), m_key(key)
{}

MissingResourceException::MissingResourceException(const MissingResourceException& other) = default;

MissingResourceException& MissingResourceException::operator=(const MissingResourceException& other) = default;

MissingResourceException::~MissingResourceException() = default;

String MissingResourceException::getBundleName() const
{
    return m_bundle;
}

String MissingResourceException::getKey() const
{
    return m_key;
}

Result MissingResourceException::getResult() const
{
    return results::FILE_NOT_FOUND;
}

} // namespace i18n
} // namespace qv
