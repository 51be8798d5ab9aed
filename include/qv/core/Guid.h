#ifndef QV_CORE_GUID_H
#define QV_CORE_GUID_H

#include <qvcore3/qvcore3.h>

#include <cstdint>
#include <cstring>

// GUID, the 16-byte interface and class identifier, comes from the platform
// layer, which parses, formats and creates identifiers.

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
