#ifndef QV_COLLECTIONS_QVCOM_UNMODIFIABLE_H
#define QV_COLLECTIONS_QVCOM_UNMODIFIABLE_H

#include <qv/collections/qvcom/AbstractList.h>
#include <qv/collections/qvcom/AbstractMap.h>
#include <qv/collections/qvcom/AbstractSet.h>
#include <qv/collections/qvcom/Collections.h>

namespace qv {
namespace collections {
namespace qvcom {

// The read-only views Collections::unmodifiable... hands out. Each holds the
// collection it shows (a reference when that one is reference-counted) and
// answers every change with UnsupportedOperationException.
template <class Base, class Shown>
class UnmodifiableView : public Base {
public:
    int32_t getSize() const override { return m_shown->getSize(); }
    bool contains(const IQVUnknown* element) const override { return m_shown->contains(element); }
    bool add(IQVUnknown*) override { Collections::throwUnmodifiable(); }
    bool remove(const IQVUnknown*) override { Collections::throwUnmodifiable(); }
    void clear() override { Collections::throwUnmodifiable(); }
    bool addAll(const Collection&) override { Collections::throwUnmodifiable(); }
    bool removeAll(const Collection&) override { Collections::throwUnmodifiable(); }
    bool retainAll(const Collection&) override { Collections::throwUnmodifiable(); }
    using Base::addAll;
    using Base::removeAll;
    using Base::retainAll;
    Reference<AbstractIterator> createIterator() override { return m_shown->createConstIterator(); }
    Reference<AbstractIterator> createConstIterator() const override { return m_shown->createConstIterator(); }

protected:
    explicit UnmodifiableView(Shown* shown) : Base(shown->getComparator()), m_shown(shown) {}

    CollectionHold<Shown> m_shown;
};

class QV_EXPORT UnmodifiableCollection final : public UnmodifiableView<AbstractCollection, AbstractCollection> {
public:
    explicit UnmodifiableCollection(AbstractCollection* collection) : UnmodifiableView(collection) {}
    ~UnmodifiableCollection() override;
};

class QV_EXPORT UnmodifiableSet final : public UnmodifiableView<AbstractSet, AbstractSet> {
public:
    explicit UnmodifiableSet(AbstractSet* set) : UnmodifiableView(set) {}
    ~UnmodifiableSet() override;
};

// Its list iterators are the shown list's read-only ones; its sublists are
// read-only views of the shown list's sublists, so they fail fast when the
// shown list changes.
class QV_EXPORT UnmodifiableList final : public UnmodifiableView<AbstractList, AbstractList> {
public:
    explicit UnmodifiableList(AbstractList* list) : UnmodifiableView(list) {}
    ~UnmodifiableList() override;

    Reference<IQVUnknown> get(int32_t index) const override { return m_shown->get(index); }
    Reference<IQVUnknown> set(int32_t, IQVUnknown*) override { Collections::throwUnmodifiable(); }
    void insert(int32_t, IQVUnknown*) override { Collections::throwUnmodifiable(); }
    Reference<IQVUnknown> removeAt(int32_t) override { Collections::throwUnmodifiable(); }
    int32_t indexOf(const IQVUnknown* element) const override { return m_shown->indexOf(element); }
    int32_t lastIndexOf(const IQVUnknown* element) const override { return m_shown->lastIndexOf(element); }
    Reference<AbstractListIterator> createListIterator(int32_t index = 0) override;
    Reference<AbstractListIterator> createConstListIterator(int32_t index = 0) const override;
    Reference<AbstractList> subList(int32_t from, int32_t to) override;
    Reference<AbstractIterator> createIterator() override { return createConstListIterator(0); }
    Reference<AbstractIterator> createConstIterator() const override { return createConstListIterator(0); }
};

// Its key set, values and entry set are views of this map, so they refuse
// changes too; its entries are copies whose SetValue is refused.
class QV_EXPORT UnmodifiableMap final : public AbstractMap {
public:
    explicit UnmodifiableMap(AbstractMap* map);
    ~UnmodifiableMap() override;

    int32_t getSize() const override { return m_shown->getSize(); }
    bool containsKey(const IQVUnknown* key) const override { return m_shown->containsKey(key); }
    bool containsValue(const IQVUnknown* value) const override { return m_shown->containsValue(value); }
    Reference<IQVUnknown> get(const IQVUnknown* key) const override { return m_shown->get(key); }
    Reference<IQVUnknown> put(IQVUnknown*, IQVUnknown*) override { Collections::throwUnmodifiable(); }
    Reference<IQVUnknown> remove(const IQVUnknown*) override { Collections::throwUnmodifiable(); }
    void clear() override { Collections::throwUnmodifiable(); }
    void putAll(const Map&) override { Collections::throwUnmodifiable(); }
    Reference<AbstractSet> createEntrySet() override;
    Reference<AbstractIterator> createConstEntryIterator() const override;
    Reference<AbstractIterator> createViewIterator(ViewKind kind, bool readOnly) const override;

private:
    CollectionHold<AbstractMap> m_shown;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
