#ifndef QV_COLLECTIONS_QVCOM_ABSTRACTLISTITERATOR_H
#define QV_COLLECTIONS_QVCOM_ABSTRACTLISTITERATOR_H

#include <qv/collections/qvcom/AbstractIterator.h>
#include <qv/collections/qvcom/ListIterator.h>

namespace qv {
namespace collections {
namespace qvcom {

class AbstractList;

// Base of the list iterators, which walk both ways. Like every iterator of
// the library they are fail-fast: once the list has changed structurally
// other than through the iterator, next, previous, set, add and remove throw
// IllegalStateException (hasNext and hasPrevious answer true, so that a loop
// reaches the exception). next past the end and previous before the start
// throw IllegalStateException too; set and remove without an element
// returned since the last add or remove throw IllegalStateException. The
// read-only iterators refuse set, add and remove with
// UnsupportedOperationException.
class QV_EXPORT AbstractListIterator : public AbstractIterator, public ListIterator {
    QV_DECLARE_INTERFACE_MAP()

public:
    ~AbstractListIterator() override;

    virtual bool hasPrevious() = 0;
    virtual Reference<IQVUnknown> previous() = 0;
    virtual int32_t nextIndex() const = 0;
    int32_t previousIndex() const { return nextIndex() - 1; }
    // Replaces the element returned last; returns the one replaced.
    virtual Reference<IQVUnknown> set(IQVUnknown* element) = 0;
    // Inserts before the cursor.
    virtual void add(IQVUnknown* element) = 0;

    Result HasNext(bool* result) override { return AbstractIterator::HasNext(result); }
    Result Next(IQVUnknown** element) override { return AbstractIterator::Next(element); }
    Result Remove() override { return AbstractIterator::Remove(); }
    Result HasPrevious(bool* result) override;
    Result Previous(IQVUnknown** element) override;
    Result NextIndex(int32_t* index) override;
    Result PreviousIndex(int32_t* index) override;
    Result Set(IQVUnknown* element, IQVUnknown** previous) override;
    Result Add(IQVUnknown* element) override;

protected:
    AbstractListIterator() noexcept = default;

    [[noreturn]] static void throwNothingToChange();
};

// A list iterator that reaches the elements by position (get, set, insert,
// removeAt of the list), which serves every list with direct access: the
// array list, sublists and wrappers.
class QV_EXPORT IndexedListIterator final : public AbstractListIterator {
public:
    // index in [0, size] (RangeErrorException otherwise, checked by the list).
    IndexedListIterator(AbstractList* list, int32_t index, bool readOnly);
    ~IndexedListIterator() override;

    bool hasNext() override;
    Reference<IQVUnknown> next() override;
    void remove() override;
    bool hasPrevious() override;
    Reference<IQVUnknown> previous() override;
    int32_t nextIndex() const override { return m_cursor; }
    Reference<IQVUnknown> set(IQVUnknown* element) override;
    void add(IQVUnknown* element) override;

private:
    void checkForChange() const;
    void checkWritable() const;

    CollectionHold<AbstractList> m_list;
    int32_t m_expectedModCount;
    int32_t m_cursor;
    int32_t m_lastReturned = -1;
    bool m_readOnly;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
