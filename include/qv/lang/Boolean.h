#ifndef QV_LANG_BOOLEAN_H
#define QV_LANG_BOOLEAN_H

#include <qv/core/Object.h>
#include <qv/lang/String.h>

namespace qv {

// A boxed truth value, for the places that hold any qv::Object (property
// sets, collections). Its text is "true" or "false"; false orders before true.
class QV_EXPORT Boolean : public Object {
public:
    Boolean() noexcept;
    Boolean(bool value) noexcept;
    Boolean(const Boolean& other) noexcept;
    Boolean& operator=(const Boolean& other) noexcept;
    ~Boolean() override;

    bool booleanValue() const noexcept { return m_value; }

    bool equals(const Object& other) const override;
    // 1231 for true and 1237 for false, as Java users know them.
    uint32_t hashCode() const override;
    // CastFailedException for anything but a Boolean.
    int compareTo(const Object& other) const override;
    using Object::toString;
    String toString() override;
    Object* clone() const override;

    // "true" and "false" in any case; anything else throws
    // ResultException(0x80070057).
    static bool parse(const String& text);

private:
    bool m_value;
};

} // namespace qv

#endif
