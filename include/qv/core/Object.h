#ifndef QV_CORE_OBJECT_H
#define QV_CORE_OBJECT_H

#include <qv/core/ComObject.h>
#include <qv/core/Export.h>

#include <cstdint>

namespace qv {

class Class;
class String;

// Root of the library's class hierarchy: a component object that is also
// comparable through IQVComparable.
class QV_EXPORT Object : public ComObject, public IQVComparable {
    QV_DECLARE_INTERFACE_MAP()

public:
    Object() noexcept = default;
    Object(const Object& other) noexcept = default;
    Object& operator=(const Object& other) noexcept = default;
    ~Object() noexcept(false) override;

    // A new qv::Object; any subclass that does not override it throws
    // CloneNotSupportedException.
    virtual Object* clone() const;
    // By address: 1, -1, or 0 for the very same object.
    virtual int compareTo(const Object& other) const;
    // True only for the very same object.
    virtual bool equals(const Object& other) const;
    virtual const Class* getClass() const;
    // The low 32 bits of the object's address.
    virtual uint32_t hashCode() const;
    // "<class name>@<hash code in lower-case hexadecimal>".
    virtual String toString();
    // The overridable form is non-const, yet callers print const objects
    // too: this forwards to it, so subclasses override only the form above.
    String toString() const;

    Result CompareTo(const IQVUnknown* other, int* result) const override;
    Result HashCode(uint32_t* result) const override;
};

} // namespace qv

#endif
