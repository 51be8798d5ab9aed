#ifndef QV_COLLECTIONS_QVCOM_COLLECTIONS_H
#define QV_COLLECTIONS_QVCOM_COLLECTIONS_H

#include <qv/collections/qvcom/AbstractList.h>
#include <qv/collections/qvcom/AbstractMap.h>
#include <qv/collections/qvcom/AbstractSet.h>
#include <qv/collections/qvcom/IQVComparator.h>

#include <cstdint>

namespace qv {
namespace collections {
namespace qvcom {

// Algorithms over the collections, and read-only wrappers. A null ordering
// means GetNaturalOrdering(). When an ordering fails, its code is thrown as
// ResultException and the list is left as it was; so is it when memory runs
// out. Reordering (sort, reverse, shuffle) replaces elements in place, which
// is not a structural change: iterators and sublists stay valid.
class QV_EXPORT Collections {
public:
    Collections() = delete;

    // Stable: elements the ordering puts together keep their relative order.
    static void sort(AbstractList& list, const IQVOrdering* ordering = nullptr);
    // Searches a list sorted by ordering: the position of an element the
    // ordering puts together with key, or -(insertion point) - 1.
    static int32_t binarySearch(const AbstractList& list, const IQVUnknown* key, const IQVOrdering* ordering = nullptr);
    static void reverse(AbstractList& list);
    // Walks from the last position down, swapping position i with a position
    // in [0, i] drawn from a fixed 64-bit generator started at the caller's seed:
    // the same seed gives the same order on every platform.
    static void shuffle(AbstractList& list, uint64_t seed);
    // The first smallest (largest) element in iteration order;
    // IllegalStateException when the collection is empty.
    static Reference<IQVUnknown> min(const AbstractCollection& collection, const IQVOrdering* ordering = nullptr);
    static Reference<IQVUnknown> max(const AbstractCollection& collection, const IQVOrdering* ordering = nullptr);

    // Live read-only views: reads go to the collection, every change (through
    // the view, its iterators, sublists or map views, MapEntry::SetValue)
    // throws UnsupportedOperationException.
    static Reference<AbstractCollection> unmodifiableCollection(AbstractCollection& collection);
    static Reference<AbstractSet> unmodifiableSet(AbstractSet& set);
    static Reference<AbstractList> unmodifiableList(AbstractList& list);
    static Reference<AbstractMap> unmodifiableMap(AbstractMap& map);

    [[noreturn]] static void throwUnmodifiable();
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
