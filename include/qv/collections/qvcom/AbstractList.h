#ifndef QV_COLLECTIONS_QVCOM_ABSTRACTLIST_H
#define QV_COLLECTIONS_QVCOM_ABSTRACTLIST_H

#include <qv/collections/qvcom/AbstractCollection.h>
#include <qv/collections/qvcom/AbstractListIterator.h>
#include <qv/collections/qvcom/List.h>

namespace qv {
namespace collections {
namespace qvcom {

// Base of the lists. A position outside [0, size) (for insert, [0, size])
// throws RangeErrorException and changes nothing. Equality, hash code and
// order follow the elements in sequence.
class QV_EXPORT AbstractList : public AbstractCollection, public List {
    QV_DECLARE_INTERFACE_MAP()

public:
    ~AbstractList() override;

    virtual Reference<IQVUnknown> get(int32_t index) const = 0;
    // Returns the element replaced.
    virtual Reference<IQVUnknown> set(int32_t index, IQVUnknown* element) = 0;
    virtual void insert(int32_t index, IQVUnknown* element) = 0;
    virtual Reference<IQVUnknown> removeAt(int32_t index) = 0;

    // Appends; always true.
    bool add(IQVUnknown* element) override;
    bool contains(const IQVUnknown* element) const override;
    virtual int32_t indexOf(const IQVUnknown* element) const;
    virtual int32_t lastIndexOf(const IQVUnknown* element) const;

    // A list iterator whose first next() returns the element at index; index
    // may equal the size. RangeErrorException outside [0, size].
    virtual Reference<AbstractListIterator> createListIterator(int32_t index = 0);
    // The same, refusing set, add and remove.
    virtual Reference<AbstractListIterator> createConstListIterator(int32_t index = 0) const;
    // The list iterators from position 0.
    Reference<AbstractIterator> createIterator() override;
    Reference<AbstractIterator> createConstIterator() const override;

    // A live view of the positions [from, to): reads and writes go to this
    // list, and insertions and removals through the view (or its iterators)
    // change this list. A structural change made to this list other than
    // through the view makes every later use of the view throw
    // IllegalStateException. RangeErrorException unless
    // 0 <= from <= to <= size.
    virtual Reference<AbstractList> subList(int32_t from, int32_t to);

    // Counts structural changes (insertions and removals, not replacements);
    // the iterators compare it.
    int32_t getModCount() const noexcept { return m_modCount; }

    // Another List of equal elements in the same order.
    bool equals(const Object& other) const override;
    // h = 31 * h + hash(element) over the elements, from 1. A collection that
    // meets itself again while its hash code is worked out (it contains
    // itself, directly or through other collections) counts 0 there; a pair
    // met again while being compared counts as equal (equals) or 0 (compareTo).
    uint32_t hashCode() const override;
    // Against another List: element by element, the first unequal pair
    // decides (by its IQVComparable order where the element has one, by
    // address otherwise); a proper prefix comes first. Anything else by address.
    int compareTo(const Object& other) const override;

    QV_COLLECTION_OPERATIONS_FROM(AbstractCollection)
    Result GetAt(int32_t index, IQVUnknown** element) const override;
    Result SetAt(int32_t index, IQVUnknown* element, IQVUnknown** previous) override;
    Result InsertAt(int32_t index, IQVUnknown* element) override;
    Result RemoveAt(int32_t index, IQVUnknown** removed) override;
    Result IndexOf(const IQVUnknown* element, int32_t* index) const override;
    Result LastIndexOf(const IQVUnknown* element, int32_t* index) const override;
    Result CreateListIterator(int32_t index, ListIterator** iterator) override;
    Result CreateSubList(int32_t from, int32_t to, List** view) override;

protected:
    explicit AbstractList(const IQVComparator* comparator = nullptr) : AbstractCollection(comparator) {}
    AbstractList(const AbstractList& other) : AbstractCollection(other) {}

    void structuralChange() noexcept { m_modCount = static_cast<int32_t>(static_cast<uint32_t>(m_modCount) + 1u); }
    [[noreturn]] static void throwBadIndex(int32_t index, int32_t size);
    // A cursor or insertion position outside [0, size].
    [[noreturn]] static void throwBadPosition(int32_t index, int32_t size);
    // Both throw IllegalStateException, the iterators' failure.
    [[noreturn]] static void throwConcurrentChange();
    [[noreturn]] static void throwNoMoreElements();

private:
    friend class IndexedListIterator;
    friend class LinkedListIterator;
    friend class SubList;

    int32_t m_modCount = 0;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
