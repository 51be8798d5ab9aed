#ifndef QV_I18N_LISTSTRINGBUNDLE_H
#define QV_I18N_LISTSTRINGBUNDLE_H

#include <qv/core/Reference.h>
#include <qv/i18n/StringBundle.h>

#include <cstddef>
#include <initializer_list>
#include <unordered_map>
#include <utility>
#include <vector>

namespace qv {
namespace i18n {

// A bundle held in memory: key/text pairs given in code (or loaded from a
// file by getBundle), and an optional parent asked for keys this one lacks.
// Filling it (put, setParent) is not synchronised; once filled it may be
// read from any number of threads.
class QV_EXPORT ListStringBundle : public StringBundle {
public:
    ListStringBundle();
    explicit ListStringBundle(const String& name, const StringBundle* parent = nullptr);
    // A later pair with the same key replaces an earlier one.
    ListStringBundle(const String& name, std::initializer_list<std::pair<String, String>> entries,
                     const StringBundle* parent = nullptr);
    ~ListStringBundle() override;

    // Here first, then in the parents; MissingResourceException names this
    // bundle when none has the key.
    String getString(const String& key) const override;
    String getBundleName() const override;

    void put(const String& key, const String& text);
    // Holds a reference to parent (null: none). A bundle cannot be its own
    // ancestor: that is IllegalStateException.
    void setParent(const StringBundle* parent);
    const StringBundle* getParent() const;

    // Here or in a parent.
    bool containsKey(const String& key) const;
    // This bundle's own keys, sorted.
    std::vector<String> getKeys() const;
    int32_t getSize() const;

private:
    struct KeyHash {
        size_t operator()(const String& key) const { return key.hashCode(); }
    };

    // The text for key here or in a parent, or null.
    const String* find(const String& key, String& fromOther) const;

    String m_name;
    std::unordered_map<String, String, KeyHash> m_texts;
    Reference<const StringBundle> m_parent;
};

} // namespace i18n
} // namespace qv

#endif
