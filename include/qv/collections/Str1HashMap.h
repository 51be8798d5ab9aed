#ifndef QV_COLLECTIONS_STR1HASHMAP_H
#define QV_COLLECTIONS_STR1HASHMAP_H

#include <qv/collections/KeyedHashMap.h>
#include <qv/lang/Str1.h>

namespace qv {
namespace collections {

struct Str1KeyTraits {
    static uint32_t hash(const Str1& key) noexcept { return key.hashCode(false); }
    static bool equal(const Str1& stored, const Str1& key) noexcept { return stored.equals(key); }
    static Str1 store(const Str1& key) { return key; }
    static int compare(const Str1& a, const Str1& b) noexcept { return a.compare(b); }
    static uint64_t digest(const Str1& key) noexcept
    {
        return HashTable::digestUnits(key.getData(), key.getLength(), false);
    }
};

// Keys are kept lower-cased, and looked up with case folded, so a key is
// found whatever the case it is given in.
struct Str1LowerCaseKeyTraits {
    static uint32_t hash(const Str1& key) noexcept { return key.hashCode(true); }
    static bool equal(const Str1& stored, const Str1& key) noexcept { return stored.equals(key, true); }
    static Str1 store(const Str1& key)
    {
        Str1 lower(key);
        lower.toLower();
        return lower;
    }
    static int compare(const Str1& a, const Str1& b) noexcept { return a.compare(b, true); }
    static uint64_t digest(const Str1& key) noexcept
    {
        return HashTable::digestUnits(key.getData(), key.getLength(), true);
    }
};

// Str1 keys, case-sensitive, to component objects.
class QV_EXPORT Str1HashMap final : public KeyedHashMap<Str1, Str1KeyTraits> {
public:
    using KeyedHashMap::KeyedHashMap;
    Str1HashMap(const Str1HashMap& other);
    ~Str1HashMap() override;
};

// Str1 keys without regard to case: stored lower-cased (as getKey() gives
// them back) and found in any case.
class QV_EXPORT Str1HashMapLC final : public KeyedHashMap<Str1, Str1LowerCaseKeyTraits> {
public:
    using KeyedHashMap::KeyedHashMap;
    Str1HashMapLC(const Str1HashMapLC& other);
    ~Str1HashMapLC() override;
};

} // namespace collections
} // namespace qv

#endif
