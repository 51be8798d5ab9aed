#include <qv/i18n/ListStringBundle.h>

#include <qv/i18n/MissingResourceException.h>

#include <algorithm>

namespace qv {
namespace i18n {

ListStringBundle::ListStringBundle() = default;

ListStringBundle::ListStringBundle(const String& name, const StringBundle* parent) : m_name(name)
{
    setParent(parent);
}

ListStringBundle::ListStringBundle(const String& name, std::initializer_list<std::pair<String, String>> entries,
                                   const StringBundle* parent)
    : m_name(name)
{
    for (const auto& entry : entries)
        put(entry.first, entry.second);
    setParent(parent);
}

ListStringBundle::~ListStringBundle() = default;

const String* ListStringBundle::find(const String& key, String& fromOther) const
{
    const ListStringBundle* bundle = this;
    for (;;) {
        const auto found = bundle->m_texts.find(key);
        if (found != bundle->m_texts.end())
            return &found->second;
        const StringBundle* parent = bundle->m_parent.get();
        if (parent == nullptr)
            return nullptr;
        bundle = dynamic_cast<const ListStringBundle*>(parent);
        if (bundle == nullptr) {
            // Another kind of bundle only answers through getString.
            try {
                fromOther = parent->getString(key);
                return &fromOther;
            } catch (const MissingResourceException&) {
                return nullptr;
            }
        }
    }
}

String ListStringBundle::getString(const String& key) const
{
    String fromOther;
    const String* text = find(key, fromOther);
    if (text == nullptr)
        throw MissingResourceException(m_name, key);
    return *text;
}

String ListStringBundle::getBundleName() const
{
    return m_name;
}

void ListStringBundle::put(const String& key, const String& text)
{
    m_texts[key] = text;
}

void ListStringBundle::setParent(const StringBundle* parent)
{
    for (const StringBundle* ancestor = parent; ancestor != nullptr;) {
        if (ancestor == this)
            throw IllegalStateException(String(u"bundle '").append(m_name).append(u"' would be its own parent"));
        const ListStringBundle* list = dynamic_cast<const ListStringBundle*>(ancestor);
        ancestor = list == nullptr ? nullptr : list->getParent();
    }
    m_parent = parent;
}

const StringBundle* ListStringBundle::getParent() const
{
    return m_parent.get();
}

bool ListStringBundle::containsKey(const String& key) const
{
    String fromOther;
    return find(key, fromOther) != nullptr;
}

std::vector<String> ListStringBundle::getKeys() const
{
    std::vector<String> keys;
    keys.reserve(m_texts.size());
    for (const auto& entry : m_texts)
        keys.push_back(entry.first);
    std::sort(keys.begin(), keys.end());
    return keys;
}

int32_t ListStringBundle::getSize() const
{
    return static_cast<int32_t>(m_texts.size());
}

} // namespace i18n
} // namespace qv
