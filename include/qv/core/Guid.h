#ifndef QV_CORE_GUID_H
#define QV_CORE_GUID_H

#include <cstdint>
#include <cstring>

// The 16-byte interface and class identifier, laid out as the component
// model's GUID so identifiers can be written as the usual literals.
struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
};

// Identifiers are equal when all 16 bytes are.
inline bool operator==(const GUID& a, const GUID& b) noexcept
{
    return std::memcmp(&a, &b, sizeof(GUID)) == 0;
}

inline bool operator!=(const GUID& a, const GUID& b) noexcept
{
    return !(a == b);
}

#endif
