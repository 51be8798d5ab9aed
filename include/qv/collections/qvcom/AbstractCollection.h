#ifndef QV_COLLECTIONS_QVCOM_ABSTRACTCOLLECTION_H
#define QV_COLLECTIONS_QVCOM_ABSTRACTCOLLECTION_H

#include <qv/collections/qvcom/AbstractIterator.h>
#include <qv/collections/qvcom/Collection.h>
#include <qv/collections/qvcom/IQVComparator.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>

namespace qv {

class String;

namespace collections {
namespace qvcom {

// Base of the collections. A derived class supplies getSize and the
// iterators (and add where it can grow); everything else works through them
// and through the element comparator (the default comparator unless the
// constructor was given another). The class operations throw; the interface
// operations call them and turn what they throw into result codes.
class QV_EXPORT AbstractCollection : public Object, public Collection {
    QV_DECLARE_INTERFACE_MAP()

public:
    ~AbstractCollection() override;

    virtual int32_t getSize() const = 0;
    bool isEmpty() const { return getSize() == 0; }
    virtual Reference<AbstractIterator> createIterator() = 0;
    // An iterator whose remove() throws UnsupportedOperationException.
    virtual Reference<AbstractIterator> createConstIterator() const = 0;

    virtual bool contains(const IQVUnknown* element) const;
    // UnsupportedOperationException unless a derived class can grow.
    virtual bool add(IQVUnknown* element);
    // Removes the first element equal to element.
    virtual bool remove(const IQVUnknown* element);
    virtual void clear();

    virtual bool containsAll(const Collection& other) const;
    // Takes a snapshot of other first, so adding a collection to itself works.
    virtual bool addAll(const Collection& other);
    virtual bool removeAll(const Collection& other);
    virtual bool retainAll(const Collection& other);
    // The library's lists and sets reach Collection along two paths (their
    // own interface derives from it too); these pick one.
    bool containsAll(const AbstractCollection& other) const { return containsAll(other.asCollection()); }
    bool addAll(const AbstractCollection& other) { return addAll(other.asCollection()); }
    bool removeAll(const AbstractCollection& other) { return removeAll(other.asCollection()); }
    bool retainAll(const AbstractCollection& other) { return retainAll(other.asCollection()); }
    const Collection& asCollection() const noexcept { return *this; }

    const IQVComparator* getComparator() const noexcept { return m_comparator.get(); }

    using Object::toString;
    // "[a, b, c]", each element by its toString() where it is a qv::Object.
    // Where the collection meets itself again among its elements, directly
    // or through other collections and maps, it is written
    // "(this collection)".
    String toString() override;

    Result GetSize(int32_t* size) const override;
    Result Contains(const IQVUnknown* element, bool* result) const override;
    Result ContainsAll(const Collection* other, bool* result) const override;
    Result Add(IQVUnknown* element, bool* changed) override;
    Result AddAll(const Collection* other, bool* changed) override;
    Result Remove(const IQVUnknown* element, bool* changed) override;
    Result RemoveAll(const Collection* other, bool* changed) override;
    Result RetainAll(const Collection* other, bool* changed) override;
    Result Clear() override;
    Result CreateIterator(Iterator** iterator) override;
    Result CreateConstIterator(ConstIterator** iterator) const override;

protected:
    // Null means the default comparator.
    explicit AbstractCollection(const IQVComparator* comparator = nullptr);
    // A copy is a new object: it starts unreferenced, with the source's
    // comparator.
    AbstractCollection(const AbstractCollection& other);
    AbstractCollection& operator=(const AbstractCollection&) = delete;

    bool elementsEqual(const IQVUnknown* a, const IQVUnknown* b) const;
    uint32_t elementHash(const IQVUnknown* element) const;

private:
    Reference<const IQVComparator> m_comparator;
};

// The Collection operations of an interface derived from Collection (List,
// Set), answered by AbstractCollection's.
#define QV_COLLECTION_OPERATIONS_FROM(Base)                                                                            \
    ::qv::Result GetSize(int32_t* size) const override                                                                 \
    {                                                                                                                  \
        return Base::GetSize(size);                                                                                    \
    }                                                                                                                  \
    ::qv::Result Contains(const IQVUnknown* element, bool* result) const override                                      \
    {                                                                                                                  \
        return Base::Contains(element, result);                                                                        \
    }                                                                                                                  \
    ::qv::Result ContainsAll(const ::qv::collections::qvcom::Collection* other, bool* result) const override           \
    {                                                                                                                  \
        return Base::ContainsAll(other, result);                                                                       \
    }                                                                                                                  \
    ::qv::Result Add(IQVUnknown* element, bool* changed) override                                                      \
    {                                                                                                                  \
        return Base::Add(element, changed);                                                                            \
    }                                                                                                                  \
    ::qv::Result AddAll(const ::qv::collections::qvcom::Collection* other, bool* changed) override                     \
    {                                                                                                                  \
        return Base::AddAll(other, changed);                                                                           \
    }                                                                                                                  \
    ::qv::Result Remove(const IQVUnknown* element, bool* changed) override                                             \
    {                                                                                                                  \
        return Base::Remove(element, changed);                                                                         \
    }                                                                                                                  \
    ::qv::Result RemoveAll(const ::qv::collections::qvcom::Collection* other, bool* changed) override                  \
    {                                                                                                                  \
        return Base::RemoveAll(other, changed);                                                                        \
    }                                                                                                                  \
    ::qv::Result RetainAll(const ::qv::collections::qvcom::Collection* other, bool* changed) override                  \
    {                                                                                                                  \
        return Base::RetainAll(other, changed);                                                                        \
    }                                                                                                                  \
    ::qv::Result Clear() override                                                                                      \
    {                                                                                                                  \
        return Base::Clear();                                                                                          \
    }                                                                                                                  \
    ::qv::Result CreateIterator(::qv::collections::qvcom::Iterator** iterator) override                                \
    {                                                                                                                  \
        return Base::CreateIterator(iterator);                                                                         \
    }                                                                                                                  \
    ::qv::Result CreateConstIterator(::qv::collections::qvcom::ConstIterator** iterator) const override                \
    {                                                                                                                  \
        return Base::CreateConstIterator(iterator);                                                                    \
    }

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
