#ifndef QV_COLLECTIONS_QVCOM_SET_H
#define QV_COLLECTIONS_QVCOM_SET_H

#include <qv/collections/qvcom/Collection.h>

namespace qv {
namespace collections {
namespace qvcom {

// A collection without duplicates (as its comparator judges them) and without
// an order callers may rely on. Adds no operations: the identifier says that
// equality and hash code follow set rules.
class Set : public Collection {
public:
    static constexpr GUID iid = {0x5A0EB105, 0xD5E4, 0x45D6, {0x8D, 0x09, 0x89, 0x56, 0x32, 0xD4, 0xF6, 0x48}};

protected:
    ~Set() = default;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
