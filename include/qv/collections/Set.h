#ifndef QV_COLLECTIONS_SET_H
#define QV_COLLECTIONS_SET_H

#include <qv/core/Exception.h>
#include <qv/core/Object.h>
#include <qv/core/Reference.h>

#include <cstdint>
#include <vector>

namespace qv {
namespace collections {

// A set of held references to objects, equal elements (Object::equals)
// counted once. Iteration follows the order of insertion, so a set filled
// from a map's keys keeps the map's order. The set is itself a
// reference-counted Object. Not synchronised; contains() and add() are
// linear, which suits the small sets it is made for (field names, keys).
template <class T>
class Set : public Object {
public:
    typedef typename std::vector<Reference<T>>::const_iterator const_iterator;

    class Iterator {
    public:
        explicit Iterator(const Set& set) noexcept : m_set(&set) {}
        bool hasNext() const noexcept { return m_index < m_set->size(); }
        const T& next()
        {
            if (!hasNext())
                throw ResultException(static_cast<Result>(0x8000000Bu));
            return *m_set->m_items[static_cast<size_t>(m_index++)];
        }

    private:
        const Set* m_set;
        int32_t m_index = 0;
    };

    // Walks the elements as values (begin()/end() give T const&).
    class ValueIterator {
    public:
        explicit ValueIterator(const_iterator at) noexcept : m_at(at) {}
        const T& operator*() const noexcept { return **m_at; }
        const T* operator->() const noexcept { return m_at->get(); }
        ValueIterator& operator++() noexcept
        {
            ++m_at;
            return *this;
        }
        bool operator==(const ValueIterator& other) const noexcept { return m_at == other.m_at; }
        bool operator!=(const ValueIterator& other) const noexcept { return m_at != other.m_at; }

    private:
        const_iterator m_at;
    };

    Set() = default;
    Set(const Set& other) : Object(), m_items(other.m_items) {}
    Set& operator=(const Set& other)
    {
        m_items = other.m_items;
        return *this;
    }

    int32_t size() const noexcept { return static_cast<int32_t>(m_items.size()); }
    bool isEmpty() const noexcept { return m_items.empty(); }
    bool contains(const T& value) const
    {
        for (const Reference<T>& item : m_items) {
            if (item->equals(value))
                return true;
        }
        return false;
    }
    // Elements in iteration order; ResultException 0x8000000B (out of
    // bounds) outside 0..size()-1.
    const T& get(int32_t index) const
    {
        if (index < 0 || index >= size())
            throw ResultException(static_cast<Result>(0x8000000Bu));
        return *m_items[static_cast<size_t>(index)];
    }
    const T& operator[](int32_t index) const { return get(index); }
    // Takes a reference on item unless an equal element is there already;
    // true when it was added. A null item is refused with 0x80004003.
    bool add(T* item)
    {
        if (!item)
            throw ResultException(results::POINTER);
        if (contains(*item))
            return false;
        // Referenced before the vector may grow, so that a fresh object is
        // released, not leaked, when the growth fails.
        Reference<T> held(item);
        m_items.push_back(held);
        return true;
    }
    // Adds a copy of value (T must be copyable).
    bool add(const T& value)
    {
        if (contains(value))
            return false;
        Reference<T> held(new T(value));
        m_items.push_back(held);
        return true;
    }
    void clear() noexcept { m_items.clear(); }

    Iterator iterator() const noexcept { return Iterator(*this); }
    ValueIterator begin() const noexcept { return ValueIterator(m_items.begin()); }
    ValueIterator end() const noexcept { return ValueIterator(m_items.end()); }

private:
    std::vector<Reference<T>> m_items;
};

} // namespace collections
} // namespace qv

#endif
