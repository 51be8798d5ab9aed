#ifndef QVCL3_CORE_OBJECTCAST_H
#define QVCL3_CORE_OBJECTCAST_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>

namespace qv {
namespace qvcom {

// dynamic_cast<const Object*>(element), with the answer remembered per
// class and interface face: a cross-cast walks the class hierarchy and costs
// some thirty nanoseconds, while the class of an object and the face the
// pointer is (both read from its virtual table) are enough to find its
// Object base again. Null for null and for objects that are not qv::Object.
// Thread-safe; never allocates.
const Object* objectOf(const IQVUnknown* element) noexcept;

// The IQVComparable face of an element, for the length of one call made
// while the caller holds the element. A qv::Object's face is its
// IQVComparable base, which is what Object's interface map answers, so it is
// borrowed without the query and the reference the query would hand out;
// any other object is asked with QueryInterface and the answer held here.
// False when the element is null or has no IQVComparable.
class ComparableFace {
public:
    explicit ComparableFace(const IQVUnknown* element) noexcept
    {
        if (const Object* object = objectOf(element)) {
            m_face = object;
        } else if (element) {
            if (const_cast<IQVUnknown*>(element)->QueryInterface(IQVComparable::iid, m_held.putVoid()) < 0)
                m_held = nullptr;
            m_face = m_held.get();
        }
    }
    ComparableFace(const ComparableFace&) = delete;
    ComparableFace& operator=(const ComparableFace&) = delete;

    explicit operator bool() const noexcept { return m_face != nullptr; }
    const IQVComparable* operator->() const noexcept { return m_face; }

private:
    const IQVComparable* m_face = nullptr;
    Reference<IQVComparable> m_held;
};

} // namespace qvcom
} // namespace qv

#endif
