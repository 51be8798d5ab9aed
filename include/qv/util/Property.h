#ifndef QV_UTIL_PROPERTY_H
#define QV_UTIL_PROPERTY_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/lang/String.h>

namespace qv {
namespace util {

// A named value. The value is any qv::Object; a property set holds Strings,
// the boxed numbers and qv::Boolean.
class QV_EXPORT Property : public Object {
public:
    Property();
    Property(const String& name, const Reference<Object>& value);
    Property(const Property& other);
    Property& operator=(const Property& other);
    ~Property() override;

    String getName() const;
    Reference<Object> getValue() const;
    void setValue(const Reference<Object>& value);

    // Name and value are equal (values by their own equals).
    bool equals(const Object& other) const override;
    uint32_t hashCode() const override;
    using Object::toString;
    // "name=value", the value as its own text ("name=" for none).
    String toString() override;

private:
    String m_name;
    Reference<Object> m_value;
};

} // namespace util
} // namespace qv

#endif
