#ifndef QV_CORE_REFERENCE_H
#define QV_CORE_REFERENCE_H

#include <qv/core/IQVUnknown.h>

#include <cstddef>
#include <functional>
#include <type_traits>
#include <utility>

namespace qv {

// Owns one reference to a component object (a class derived from ComObject,
// or an interface). Every function that hands out a component object returns
// one, so the caller owns the reference it holds.
template <class T>
class Reference {
public:
    typedef T element_type;

    Reference() noexcept = default;
    Reference(std::nullptr_t) noexcept {}
    Reference(T* object) noexcept : m_object(object) { addRef(); }
    Reference(const Reference& other) noexcept : m_object(other.m_object) { addRef(); }
    Reference(Reference&& other) noexcept : m_object(other.m_object) { other.m_object = nullptr; }
    template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
    Reference(const Reference<U>& other) noexcept : m_object(other.get())
    {
        addRef();
    }
    template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
    Reference(Reference<U>&& other) noexcept : m_object(other.detach())
    {}
    ~Reference() { releaseHeld(); }

    Reference& operator=(const Reference& other) noexcept
    {
        reset(other.m_object);
        return *this;
    }
    Reference& operator=(Reference&& other) noexcept
    {
        if (this != &other) {
            T* old = m_object;
            m_object = other.m_object;
            other.m_object = nullptr;
            if (old)
                old->Release();
        }
        return *this;
    }
    // Spelled out so that assigning a reference to a derived class does not
    // compete with the conversion to T*.
    template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
    Reference& operator=(const Reference<U>& other) noexcept
    {
        reset(other.get());
        return *this;
    }
    template <class U, class = std::enable_if_t<std::is_convertible<U*, T*>::value>>
    Reference& operator=(Reference<U>&& other) noexcept
    {
        T* old = m_object;
        m_object = other.detach();
        if (old)
            old->Release();
        return *this;
    }
    Reference& operator=(T* object) noexcept
    {
        reset(object);
        return *this;
    }
    Reference& operator=(std::nullptr_t) noexcept
    {
        reset();
        return *this;
    }

    T* get() const noexcept { return m_object; }
    // Lets a reference be passed wherever the held pointer is taken, as in
    // logger.addProcessor(BasicLogWriter::create(writer)).
    operator T*() const noexcept { return m_object; }
    T* operator->() const noexcept { return m_object; }
    T& operator*() const noexcept { return *m_object; }
    explicit operator bool() const noexcept { return m_object != nullptr; }

    // Points at a new object (taking a reference) and drops the old one. The
    // new one is referenced first, so resetting to the object already held is
    // safe.
    void reset(T* object = nullptr) noexcept
    {
        if (object)
            object->AddRef();
        T* old = m_object;
        m_object = object;
        if (old)
            old->Release();
    }

    // Hands the held reference to the caller without releasing it.
    T* detach() noexcept
    {
        T* object = m_object;
        m_object = nullptr;
        return object;
    }

    // Takes over a reference the caller already owns (no AddRef).
    void attach(T* object) noexcept
    {
        T* old = m_object;
        m_object = object;
        if (old)
            old->Release();
    }

    // For output parameters of interface operations: drops the held object and
    // returns the slot the callee fills with a reference it has taken.
    T** put() noexcept
    {
        reset();
        return &m_object;
    }
    void** putVoid() noexcept { return reinterpret_cast<void**>(put()); }

    // Asks the object for another interface; null when it has none.
    template <class I>
    Reference<I> query() const noexcept
    {
        Reference<I> result;
        if (m_object)
            m_object->QueryInterface(I::iid, result.putVoid());
        return result;
    }

    // Converts between related classes: static for up-casts, dynamic for
    // down-casts (null when the object is not of that class).
    template <class U>
    Reference<U> cast() const noexcept
    {
        return Reference<U>(dynamic_cast<U*>(m_object));
    }

    void swap(Reference& other) noexcept { std::swap(m_object, other.m_object); }

private:
    void addRef() const noexcept
    {
        if (m_object)
            m_object->AddRef();
    }
    void releaseHeld() noexcept
    {
        if (m_object) {
            T* object = m_object;
            m_object = nullptr;
            object->Release();
        }
    }

    T* m_object = nullptr;
};

// Makes a new reference to a freshly created object: Reference<X> r = makeReference<X>(args...).
template <class T, class... Args>
Reference<T> makeReference(Args&&... args)
{
    return Reference<T>(new T(std::forward<Args>(args)...));
}

template <class T, class U>
bool operator==(const Reference<T>& a, const Reference<U>& b) noexcept
{
    return a.get() == b.get();
}
template <class T, class U>
bool operator!=(const Reference<T>& a, const Reference<U>& b) noexcept
{
    return a.get() != b.get();
}
template <class T, class U>
bool operator==(const Reference<T>& a, const U* b) noexcept
{
    return a.get() == b;
}
template <class T, class U>
bool operator!=(const Reference<T>& a, const U* b) noexcept
{
    return a.get() != b;
}
template <class T>
bool operator==(const Reference<T>& a, std::nullptr_t) noexcept
{
    return a.get() == nullptr;
}
template <class T>
bool operator!=(const Reference<T>& a, std::nullptr_t) noexcept
{
    return a.get() != nullptr;
}
template <class T>
bool operator<(const Reference<T>& a, const Reference<T>& b) noexcept
{
    return std::less<T*>()(a.get(), b.get());
}

} // namespace qv

namespace std {
template <class T>
struct hash<qv::Reference<T>> {
    size_t operator()(const qv::Reference<T>& r) const noexcept { return std::hash<T*>()(r.get()); }
};
} // namespace std

#endif
