#ifndef QV_COLLECTIONS_QVCOM_ABSTRACTSET_H
#define QV_COLLECTIONS_QVCOM_ABSTRACTSET_H

#include <qv/collections/qvcom/AbstractCollection.h>
#include <qv/collections/qvcom/Set.h>

namespace qv {
namespace collections {
namespace qvcom {

// Base of the sets: equality, hash code and order that ignore the order of
// the elements.
class QV_EXPORT AbstractSet : public AbstractCollection, public Set {
    QV_DECLARE_INTERFACE_MAP()

public:
    ~AbstractSet() override;

    // Another Set of the same size all of whose elements this set contains.
    bool equals(const Object& other) const override;
    // The sum of the elements' hash codes.
    uint32_t hashCode() const override;
    // Against another Set: 0 when equal, otherwise by size, then by hash
    // code, then by address. Anything else by address.
    int compareTo(const Object& other) const override;

    QV_COLLECTION_OPERATIONS_FROM(AbstractCollection)

protected:
    explicit AbstractSet(const IQVComparator* comparator = nullptr) : AbstractCollection(comparator) {}
    AbstractSet(const AbstractSet& other) : AbstractCollection(other) {}
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
