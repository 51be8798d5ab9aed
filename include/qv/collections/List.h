#ifndef QV_COLLECTIONS_LIST_H
#define QV_COLLECTIONS_LIST_H

#include <qv/core/Exception.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>

#include <cstdint>
#include <initializer_list>
#include <vector>

namespace qv {
namespace collections {

// An ordered list of held references to objects, for native interfaces that
// pass a sequence of objects (arguments, names). The list is itself a
// reference-counted Object. Elements may be null. Not synchronised.
template <class T>
class List : public Object {
public:
    typedef typename std::vector<Reference<T>>::const_iterator const_iterator;

    // Java-style walk over a snapshot-free view: valid while the list is not
    // changed.
    class Iterator {
    public:
        explicit Iterator(const List& list) noexcept : m_list(&list) {}
        bool hasNext() const noexcept { return m_index < m_list->size(); }
        const Reference<T>& next()
        {
            if (!hasNext())
                throw ResultException(static_cast<Result>(0x8000000Bu));
            return m_list->m_items[static_cast<size_t>(m_index++)];
        }

    private:
        const List* m_list;
        int32_t m_index = 0;
    };

    List() = default;
    List(std::initializer_list<T*> items)
    {
        m_items.reserve(items.size());
        for (T* item : items)
            add(item);
    }
    List(const List& other) : Object(), m_items(other.m_items) {}
    List& operator=(const List& other)
    {
        m_items = other.m_items;
        return *this;
    }

    int32_t size() const noexcept { return static_cast<int32_t>(m_items.size()); }
    bool isEmpty() const noexcept { return m_items.empty(); }
    // ResultException 0x8000000B (out of bounds) outside 0..size()-1.
    const Reference<T>& get(int32_t index) const
    {
        if (index < 0 || index >= size())
            throw ResultException(static_cast<Result>(0x8000000Bu));
        return m_items[static_cast<size_t>(index)];
    }
    const Reference<T>& operator[](int32_t index) const { return get(index); }
    // Appends, taking a reference.
    void add(T* item)
    {
        // Referenced before the vector may grow, so that a fresh object is
        // released, not leaked, when the growth fails.
        Reference<T> held(item);
        m_items.push_back(held);
    }
    void add(const Reference<T>& item) { m_items.push_back(item); }
    void clear() noexcept { m_items.clear(); }

    Iterator iterator() const noexcept { return Iterator(*this); }
    const_iterator begin() const noexcept { return m_items.begin(); }
    const_iterator end() const noexcept { return m_items.end(); }

private:
    std::vector<Reference<T>> m_items;
};

} // namespace collections
} // namespace qv

#endif
