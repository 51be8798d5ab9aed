#ifndef QV_COLLECTIONS_QVCOM_MAP_H
#define QV_COLLECTIONS_QVCOM_MAP_H

#include <qv/collections/qvcom/Collection.h>
#include <qv/collections/qvcom/Iterator.h>
#include <qv/collections/qvcom/Set.h>
#include <qv/core/IQVUnknown.h>

#include <cstdint>

namespace qv {
namespace collections {
namespace qvcom {

// One key and its value, as a map's entry set and entry iterators hand them out.
class MapEntry : public IQVUnknown {
public:
    static constexpr GUID iid = {0x788D5CC5, 0x1AA7, 0x48E5, {0xBB, 0xDA, 0x97, 0x5B, 0xD9, 0x5B, 0xD3, 0x45}};

    virtual Result GetKey(IQVUnknown** key) const = 0;
    virtual Result GetValue(IQVUnknown** value) const = 0;
    // Replaces the value in place; previous may be null.
    virtual Result SetValue(IQVUnknown* value, IQVUnknown** previous) = 0;

protected:
    ~MapEntry() = default;
};

// Keys to values, both component objects held by reference count.
class Map : public IQVUnknown {
public:
    static constexpr GUID iid = {0x2F5089DF, 0x187D, 0x4D1D, {0x8A, 0xF3, 0xEC, 0xD8, 0xAF, 0xDD, 0x20, 0x86}};

    virtual Result GetSize(int32_t* size) const = 0;
    virtual Result ContainsKey(const IQVUnknown* key, bool* result) const = 0;
    virtual Result ContainsValue(const IQVUnknown* value, bool* result) const = 0;
    // 0 and the value when the key is present, 1 (S_FALSE) and null when not.
    virtual Result Get(const IQVUnknown* key, IQVUnknown** value) const = 0;
    // previous (may be null) receives the value replaced, null for a new key.
    virtual Result Put(IQVUnknown* key, IQVUnknown* value, IQVUnknown** previous) = 0;
    // 0 when the key was there, 1 (S_FALSE) when not; removed may be null.
    virtual Result Remove(const IQVUnknown* key, IQVUnknown** removed) = 0;
    virtual Result Clear() = 0;
    virtual Result PutAll(const Map* other) = 0;
    // A live view of the entries (MapEntry elements); removing from it
    // removes from the map, adding to it is refused.
    virtual Result CreateEntrySet(Set** entries) = 0;
    // A read-only walk over the entries.
    virtual Result CreateConstEntryIterator(ConstIterator** entries) const = 0;
    // Live views of the keys and of the values, in the map's order; removing
    // from them removes from the map, adding to them is refused.
    virtual Result CreateKeySet(Set** keys) = 0;
    virtual Result CreateValues(Collection** values) = 0;

protected:
    ~Map() = default;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
