#ifndef QV_COLLECTIONS_QVCOM_HASHSET_H
#define QV_COLLECTIONS_QVCOM_HASHSET_H

#include <qv/collections/qvcom/AbstractSet.h>
#include <qv/collections/qvcom/HashMap.h>

namespace qv {
namespace collections {
namespace qvcom {

// A set kept as the keys of a HashMap of its own (each stored with one
// shared marker value), so it follows the map's table rules, iteration order
// and fail-fast iterators.
class QV_EXPORT HashSet : public AbstractSet {
public:
    explicit HashSet(int32_t capacity = HashMap::DEFAULT_CAPACITY, float load = HashMap::DEFAULT_LOAD);
    // Null means the default comparator.
    explicit HashSet(const IQVComparator* comparator, int32_t capacity = HashMap::DEFAULT_CAPACITY,
                     float load = HashMap::DEFAULT_LOAD);
    // calcCapacity(other's size) buckets, then every element of other.
    explicit HashSet(const Collection& other, const IQVComparator* comparator = nullptr);
    explicit HashSet(const AbstractCollection& other, const IQVComparator* comparator = nullptr)
        : HashSet(other.asCollection(), comparator)
    {}
    HashSet(const HashSet& other);
    HashSet& operator=(const HashSet&) = delete;
    ~HashSet() override;

    int32_t getSize() const override;
    // True when element was not yet present.
    bool add(IQVUnknown* element) override;
    bool remove(const IQVUnknown* element) override;
    bool contains(const IQVUnknown* element) const override;
    // The map's clear(): the size stays as it was (see HashTable::clear).
    void clear() override;
    Reference<AbstractIterator> createIterator() override;
    Reference<AbstractIterator> createConstIterator() const override;

    int32_t getCapacity() const noexcept { return m_map->getCapacity(); }

private:
    Reference<HashMap> m_map;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
