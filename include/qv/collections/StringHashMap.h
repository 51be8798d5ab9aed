#ifndef QV_COLLECTIONS_STRINGHASHMAP_H
#define QV_COLLECTIONS_STRINGHASHMAP_H

#include <qv/collections/KeyedHashMap.h>
#include <qv/lang/String.h>

namespace qv {
namespace collections {

struct StringKeyTraits {
    static uint32_t hash(const String& key) { return key.hashCode(false); }
    static bool equal(const String& stored, const String& key) { return stored == key; }
    // Shares the key's buffer; the key's later edits copy it first.
    static String store(const String& key) { return key; }
};

// qv::String keys (case-sensitive, hashed by String::hashCode) to component
// objects.
class QV_EXPORT StringHashMap final : public KeyedHashMap<String, StringKeyTraits> {
public:
    using KeyedHashMap::KeyedHashMap;
    StringHashMap(const StringHashMap& other);
    ~StringHashMap() override;
};

} // namespace collections
} // namespace qv

#endif
