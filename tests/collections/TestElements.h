#ifndef QVCL3_TESTS_COLLECTIONS_TESTELEMENTS_H
#define QVCL3_TESTS_COLLECTIONS_TESTELEMENTS_H

#include <qv/collections/qvcom/AbstractCollection.h>
#include <qv/collections/qvcom/AbstractIterator.h>
#include <qv/collections/qvcom/IQVComparator.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/lang/String.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace qvtest {

// A key with an identity of its own choosing and a hash code the test fixes,
// so that bucket placement (and so the order of iteration) is known.
class TestKey : public qv::Object {
public:
    TestKey(int32_t id, uint32_t hash) : m_id(id), m_hash(hash) {}
    int32_t id() const { return m_id; }
    uint32_t hashCode() const override { return m_hash; }
    int compareTo(const qv::Object& other) const override
    {
        const TestKey* key = dynamic_cast<const TestKey*>(&other);
        if (!key)
            return qv::Object::compareTo(other);
        return m_id < key->m_id ? -1 : (m_id > key->m_id ? 1 : 0);
    }
    bool equals(const qv::Object& other) const override { return compareTo(other) == 0; }
    qv::String toString() override { return qv::String::valueOf(m_id); }

private:
    int32_t m_id;
    uint32_t m_hash;
};

inline qv::Reference<TestKey> key(int32_t id, uint32_t hash)
{
    return qv::makeReference<TestKey>(id, hash);
}

inline qv::Reference<TestKey> key(int32_t id)
{
    return key(id, static_cast<uint32_t>(id));
}

template <class T>
IQVUnknown* unk(const qv::Reference<T>& object)
{
    return object ? object->GetUnknown() : nullptr;
}

// The id of a TestKey element, -1 for null, -2 for anything else.
inline int32_t idOf(const IQVUnknown* element)
{
    if (!element)
        return -1;
    const TestKey* key = dynamic_cast<const TestKey*>(element);
    return key ? key->id() : -2;
}

inline std::vector<int32_t> drain(qv::collections::qvcom::AbstractIterator& it)
{
    std::vector<int32_t> ids;
    while (it.hasNext())
        ids.push_back(idOf(it.next().get()));
    return ids;
}

// The ids of a collection's elements in iteration order.
inline std::vector<int32_t> idsOf(const qv::collections::qvcom::AbstractCollection& collection)
{
    qv::Reference<qv::collections::qvcom::AbstractIterator> it = collection.createConstIterator();
    return drain(*it);
}

// A new list of TestKeys with these ids (a negative id puts null).
template <class L>
qv::Reference<L> listOf(std::initializer_list<int32_t> ids)
{
    qv::Reference<L> list = qv::makeReference<L>();
    for (int32_t id : ids)
        list->add(id < 0 ? nullptr : unk(key(id)));
    return list;
}

// A comparator that fails for TestKey id 13, to check that maps stay as
// they were when their comparator gives up.
class FailingComparator final : public qv::ComObject, public qv::collections::qvcom::IQVComparator {
    QV_DECLARE_INTERFACE_MAP()

public:
    static constexpr qv::Result FAILURE = static_cast<qv::Result>(0x80070057u);

    qv::Result HashCode(const IQVUnknown* element, uint32_t* result) const override
    {
        if (idOf(element) == 13)
            return FAILURE;
        return qv::collections::qvcom::GetDefaultComparator()->HashCode(element, result);
    }
    qv::Result Equals(const IQVUnknown* a, const IQVUnknown* b, bool* result) const override
    {
        if (idOf(a) == 13 || idOf(b) == 13)
            return FAILURE;
        return qv::collections::qvcom::GetDefaultComparator()->Equals(a, b, result);
    }
};

} // namespace qvtest

#endif
