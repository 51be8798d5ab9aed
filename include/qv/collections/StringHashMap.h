#ifndef QV_COLLECTIONS_STRINGHASHMAP_H
#define QV_COLLECTIONS_STRINGHASHMAP_H

#include <qv/collections/KeyedHashMap.h>
#include <qv/lang/String.h>

#include <cstring>
#include <string>

namespace qv {
namespace collections {

struct StringKeyTraits {
    static uint32_t hash(const String& key) { return key.hashCode(false); }
    static bool equal(const String& stored, const String& key) { return stored == key; }
    // Shares the key's buffer; the key's later edits copy it first.
    static String store(const String& key) { return key; }
    // Any order that is 0 exactly for equal keys serves the table: units in
    // turn, then length.
    static int compare(const String& a, const String& b) noexcept
    {
        const int32_t lengthA = a.getLength();
        const int32_t lengthB = b.getLength();
        // The index compares keys mostly to confirm a match: one block
        // comparison settles that.
        if (lengthA == lengthB &&
            std::memcmp(a.getData(), b.getData(), static_cast<size_t>(lengthA) * sizeof(char16_t)) == 0)
            return 0;
        const int order = std::char_traits<char16_t>::compare(
            a.getData(), b.getData(), static_cast<size_t>(lengthA < lengthB ? lengthA : lengthB));
        if (order != 0)
            return order;
        return lengthA == lengthB ? 0 : (lengthA < lengthB ? -1 : 1);
    }
    static uint64_t digest(const String& key) noexcept
    {
        return HashTable::digestUnits(key.getData(), key.getLength(), false);
    }
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
