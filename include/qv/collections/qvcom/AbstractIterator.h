#ifndef QV_COLLECTIONS_QVCOM_ABSTRACTITERATOR_H
#define QV_COLLECTIONS_QVCOM_ABSTRACTITERATOR_H

#include <qv/collections/qvcom/Iterator.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>

namespace qv {
namespace collections {
namespace qvcom {

// How an iterator or a view keeps hold of its collection. A collection that
// is reference-counted (count above 0) is referenced, so it lives as long as
// its iterators. One that lives by scope (on the stack, or as a member) has a
// count of 0: taking and dropping a reference would destroy it, so it is only
// borrowed and must outlive its iterators.
template <class T>
class CollectionHold {
public:
    explicit CollectionHold(T* collection) noexcept : m_collection(collection), m_counted(collection->GetRefCount() > 0)
    {
        if (m_counted)
            m_collection->AddRef();
    }
    CollectionHold(const CollectionHold&) = delete;
    CollectionHold& operator=(const CollectionHold&) = delete;
    ~CollectionHold()
    {
        if (m_counted)
            m_collection->Release();
    }

    T* get() const noexcept { return m_collection; }
    T* operator->() const noexcept { return m_collection; }

private:
    T* m_collection;
    bool m_counted;
};

// Base of the collections' iterators: the class operations throw, the
// interface operations answer by result code. Every iterator of the library
// is fail-fast: a structural change made to the collection other than through
// the iterator itself makes its next call of next() throw.
class QV_EXPORT AbstractIterator : public Object, public Iterator {
    QV_DECLARE_INTERFACE_MAP()

public:
    ~AbstractIterator() override;

    virtual bool hasNext() = 0;
    virtual Reference<IQVUnknown> next() = 0;
    // Removes the element next() returned last. Read-only iterators (made by
    // createConstIterator) throw UnsupportedOperationException.
    virtual void remove();

    Result HasNext(bool* result) override;
    Result Next(IQVUnknown** element) override;
    Result Remove() override;

protected:
    AbstractIterator() noexcept = default;
    AbstractIterator(const AbstractIterator&) = delete;
    AbstractIterator& operator=(const AbstractIterator&) = delete;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
