#ifndef QV_UTIL_GUID_H
#define QV_UTIL_GUID_H

#include <qv/core/Export.h>
#include <qv/core/Guid.h>
#include <qv/lang/String.h>

#include <cstddef>
#include <functional>

namespace qv {
namespace util {

// A class or interface identifier as a value: made at random, parsed from and
// written as the braced upper-case text "{XXXXXXXX-XXXX-XXXX-XXXX-XXXXXXXXXXXX}",
// compared in the order of that text and hashed.
class QV_EXPORT Guid {
public:
    // The null identifier, all zeros.
    constexpr Guid() noexcept : m_value{} {}
    constexpr Guid(const GUID& value) noexcept : m_value(value) {}

    // A version-4 identifier from the system's random source.
    static Guid createRandom();
    // Either case; anything but the braced form throws
    // ResultException(0x80070057), as does a null text.
    static Guid parse(const char16_t* text);
    static bool tryParse(const char16_t* text, Guid& out) noexcept;

    String toString() const;
    const GUID& get() const noexcept { return m_value; }
    operator const GUID&() const noexcept { return m_value; }
    bool isNull() const noexcept;
    // The version field (4 for random identifiers).
    int getVersion() const noexcept { return m_value.Data3 >> 12; }

    // <0, 0, >0 in the order of the text form.
    int compareTo(const Guid& other) const noexcept;
    uint32_t hashCode() const noexcept;

    bool operator==(const Guid& other) const noexcept { return m_value == other.m_value; }
    bool operator!=(const Guid& other) const noexcept { return !(m_value == other.m_value); }
    bool operator<(const Guid& other) const noexcept { return compareTo(other) < 0; }
    bool operator>(const Guid& other) const noexcept { return compareTo(other) > 0; }
    bool operator<=(const Guid& other) const noexcept { return compareTo(other) <= 0; }
    bool operator>=(const Guid& other) const noexcept { return compareTo(other) >= 0; }

private:
    GUID m_value;
};

} // namespace util
} // namespace qv

template <>
struct std::hash<qv::util::Guid> {
    size_t operator()(const qv::util::Guid& guid) const noexcept { return guid.hashCode(); }
};

#endif
