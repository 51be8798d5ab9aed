#ifndef QV_COLLECTIONS_INTEGERHASHMAP_H
#define QV_COLLECTIONS_INTEGERHASHMAP_H

#include <qv/collections/KeyedHashMap.h>

#include <cstdint>

namespace qv {
namespace collections {

struct IntegerKeyTraits {
    // The key's own bits: no spreading, as for every table of the library.
    static uint32_t hash(int32_t key) noexcept { return static_cast<uint32_t>(key); }
    static bool equal(int32_t stored, int32_t key) noexcept { return stored == key; }
    static int32_t store(int32_t key) noexcept { return key; }
    static int compare(int32_t a, int32_t b) noexcept { return a < b ? -1 : (a > b ? 1 : 0); }
    static uint64_t digest(int32_t key) noexcept { return static_cast<uint32_t>(key); }
};

// int32_t keys to component objects.
class QV_EXPORT IntegerHashMap final : public KeyedHashMap<int32_t, IntegerKeyTraits> {
public:
    using KeyedHashMap::KeyedHashMap;
    IntegerHashMap(const IntegerHashMap& other);
    ~IntegerHashMap() override;
};

} // namespace collections
} // namespace qv

#endif
