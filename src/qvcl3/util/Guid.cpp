#include <qv/core/Boundary.h>
#include <qv/util/Guid.h>

namespace qv {
namespace util {

Guid Guid::createRandom()
{
    GUID value;
    qvcom::throwIfFailed(QVComCreateGUID(&value));
    return Guid(value);
}

Guid Guid::parse(const char16_t* text)
{
    GUID value;
    const Result result = QVComGUIDFromString(text, &value);
    // A null text is an argument fault like any other malformed one here.
    qvcom::throwIfFailed(result == results::POINTER ? results::INVALIDARG : result);
    return Guid(value);
}

bool Guid::tryParse(const char16_t* text, Guid& out) noexcept
{
    GUID value;
    if (QVComGUIDFromString(text, &value) < 0)
        return false;
    out = Guid(value);
    return true;
}

String Guid::toString() const
{
    char16_t text[39];
    QVComStringFromGUID(&m_value, text, 39);
    return String(text, 38);
}

bool Guid::isNull() const noexcept
{
    return m_value == GUID{};
}

int Guid::compareTo(const Guid& other) const noexcept
{
    const GUID& a = m_value;
    const GUID& b = other.m_value;
    if (a.Data1 != b.Data1)
        return a.Data1 < b.Data1 ? -1 : 1;
    if (a.Data2 != b.Data2)
        return a.Data2 < b.Data2 ? -1 : 1;
    if (a.Data3 != b.Data3)
        return a.Data3 < b.Data3 ? -1 : 1;
    const int bytes = std::memcmp(a.Data4, b.Data4, sizeof a.Data4);
    return bytes < 0 ? -1 : bytes > 0 ? 1 : 0;
}

uint32_t Guid::hashCode() const noexcept
{
    // FNV-1a over the 16 bytes: random identifiers need no more, and
    // hand-made ones that differ in one field still spread.
    const auto* bytes = reinterpret_cast<const unsigned char*>(&m_value);
    uint32_t hash = 2166136261u;
    for (size_t i = 0; i < sizeof m_value; ++i) {
        hash ^= bytes[i];
        hash *= 16777619u;
    }
    return hash;
}

} // namespace util
} // namespace qv
