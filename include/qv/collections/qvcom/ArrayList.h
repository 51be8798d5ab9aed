#ifndef QV_COLLECTIONS_QVCOM_ARRAYLIST_H
#define QV_COLLECTIONS_QVCOM_ARRAYLIST_H

#include <qv/collections/qvcom/AbstractList.h>

#include <new>

namespace qv {
namespace collections {
namespace qvcom {

// A list in one contiguous run of references that doubles when it is full,
// so appending is amortised constant time and positions are reached directly.
class QV_EXPORT ArrayList final : public AbstractList {
public:
    static constexpr int32_t DEFAULT_CAPACITY = 10;

    // A negative capacity gives ResultException 0x80070057. A null
    // comparator means the default comparator.
    explicit ArrayList(int32_t capacity = DEFAULT_CAPACITY, const IQVComparator* comparator = nullptr);
    // The elements of other, in its order.
    explicit ArrayList(const Collection& other, const IQVComparator* comparator = nullptr);
    explicit ArrayList(const AbstractCollection& other, const IQVComparator* comparator = nullptr)
        : ArrayList(other.asCollection(), comparator)
    {}
    ArrayList(const ArrayList& other);
    ArrayList& operator=(const ArrayList&) = delete;
    ~ArrayList() override;

    int32_t getSize() const override { return m_size; }
    int32_t getCapacity() const noexcept { return m_capacity; }
    // Room for capacity elements without another allocation.
    void ensureCapacity(int32_t capacity);
    // Gives back the room beyond the size.
    void trimToSize();

    bool add(IQVUnknown* element) override
    {
        if (m_size == m_capacity)
            grow(m_size + 1);
        new (m_data + m_size) Reference<IQVUnknown>(element);
        ++m_size;
        structuralChange();
        return true;
    }
    Reference<IQVUnknown> get(int32_t index) const override;
    // The element at index without taking a reference of the caller's own;
    // valid until the list changes.
    const Reference<IQVUnknown>& elementAt(int32_t index) const
    {
        if (static_cast<uint32_t>(index) >= static_cast<uint32_t>(m_size))
            throwBadIndex(index, m_size);
        return m_data[index];
    }
    Reference<IQVUnknown> set(int32_t index, IQVUnknown* element) override;
    void insert(int32_t index, IQVUnknown* element) override;
    Reference<IQVUnknown> removeAt(int32_t index) override;
    void clear() override;
    int32_t indexOf(const IQVUnknown* element) const override;
    int32_t lastIndexOf(const IQVUnknown* element) const override;

private:
    void grow(int32_t minCapacity);
    void reallocate(int32_t capacity);
    void appendAll(const Collection& other);
    void releaseAll() noexcept;

    Reference<IQVUnknown>* m_data = nullptr;
    int32_t m_size = 0;
    int32_t m_capacity = 0;
};

} // namespace qvcom
} // namespace collections
} // namespace qv

#endif
