#include <qv/core/Object.h>

#include "core/ObjectCast.h"

#include <qv/core/Boundary.h>
#include <qv/core/Class.h>
#include <qv/core/Exception.h>
#include <qv/lang/String.h>

#include <functional>
#include <typeinfo>

namespace qv {

QV_BEGIN_INTERFACE_MAP(Object)
QV_INTERFACE_ENTRY(Object, IQVComparable)
QV_END_INTERFACE_MAP()

Object::~Object() noexcept(false) = default;

Object* Object::clone() const
{
    if (typeid(*this) != typeid(Object))
        throw CloneNotSupportedException();
    return new Object();
}

int Object::compareTo(const Object& other) const
{
    const void* self = this;
    const void* that = &other;
    if (self == that)
        return 0;
    return std::less<const void*>()(self, that) ? -1 : 1;
}

bool Object::equals(const Object& other) const
{
    return this == &other;
}

const Class* Object::getClass() const
{
    return Class::forType(&typeid(*this));
}

uint32_t Object::hashCode() const
{
    return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(this));
}

String Object::toString() const
{
    return const_cast<Object*>(this)->toString();
}

String Object::toString()
{
    // The registered class name where there is one, the type's own name
    // otherwise, so that objects of unregistered classes still print.
    String text;
    try {
        text = String(getClass()->getName());
    } catch (const ClassNotFoundException&) {
        const char* name = typeid(*this).name();
        while (*name)
            text += static_cast<char16_t>(static_cast<unsigned char>(*name++));
    }
    text += u'@';
    static const char16_t digits[] = u"0123456789abcdef";
    uint32_t hash = hashCode();
    char16_t hex[8];
    int n = 0;
    do {
        hex[n++] = digits[hash & 0xF];
        hash >>= 4;
    } while (hash != 0);
    while (n > 0)
        text += hex[--n];
    return text;
}

Result Object::CompareTo(const IQVUnknown* other, int* result) const
{
    if (!result)
        return results::POINTER;
    *result = 0;
    return qvcom::guardBoundary([&] {
        const Object* object = qvcom::objectOf(other);
        if (object) {
            *result = compareTo(*object);
        } else {
            const void* self = static_cast<const ComObject*>(this);
            const void* that = other;
            *result = self == that ? 0 : (std::less<const void*>()(self, that) ? -1 : 1);
        }
    });
}

Result Object::HashCode(uint32_t* result) const
{
    if (!result)
        return results::POINTER;
    return qvcom::guardBoundary([&] { *result = hashCode(); });
}

} // namespace qv
