#include <qv/i18n/ComponentStringBundle.h>

#include <qv/core/Boundary.h>
#include <qv/i18n/MissingResourceException.h>

namespace qv {
namespace i18n {

ComponentStringBundle::ComponentStringBundle(const String& name, IStringBundle* component, const StringBundle* parent)
    : m_name(name), m_component(component), m_parent(parent)
{
    if (component == nullptr)
        throw ResultException(results::POINTER, String(u"bundle '").append(name).append(u"' has no component"));
}

ComponentStringBundle::~ComponentStringBundle() = default;

String ComponentStringBundle::getString(const String& key) const
{
    if (key.indexOf(u'\0') < 0) {
        // The component writes straight into the String that is returned.
        String text;
        const Result result = m_component->GetString(key.getData(), &text);
        if (result >= 0)
            return text;
        if (result != MISSING_KEY)
            qvcom::throwIfFailed(result);
    }
    if (m_parent) {
        // The bundle asked is the one the message names, as for a file level.
        try {
            return m_parent->getString(key);
        } catch (const MissingResourceException&) {
        }
    }
    throw MissingResourceException(m_name, key);
}

String ComponentStringBundle::getBundleName() const
{
    return m_name;
}

const StringBundle* ComponentStringBundle::getParent() const
{
    return m_parent.get();
}

} // namespace i18n
} // namespace qv
