#ifndef QVCL3_TESTS_MODULES_KILLPATTERN_H
#define QVCL3_TESTS_MODULES_KILLPATTERN_H

// What the helper processes write, so that the tests can tell a whole value
// from a torn one and know which keys the churning processes leave.

#include <qv/core/Guid.h>

#include <cstdint>
#include <string>

namespace qvtest {

// Value n: its generation, then a run whose units and length follow from the
// generation, so any mix of two writes fails the check.
inline std::u16string killValue(uint32_t n)
{
    const uint32_t generation = n & 0x7FFF;
    const size_t length = (generation * 997u) % 40000u + 2;
    std::u16string value(length, u'\0');
    value[0] = static_cast<char16_t>(generation + 1);
    for (size_t i = 1; i < length; ++i)
        value[i] = static_cast<char16_t>(((generation * 31u + i) & 0x7FFF) + 1);
    return value;
}

inline bool isWholeKillValue(const std::u16string& value)
{
    return !value.empty() && value[0] >= 1 && value == killValue(value[0] - 1u);
}

inline std::u16string killValueName(uint32_t n)
{
    return u"v" + std::u16string(1, static_cast<char16_t>(u'0' + n % 8));
}

inline GUID churnClassId(int index)
{
    return GUID{0x51C0FFEEu, 0x1234, static_cast<uint16_t>(index), {0x80, 0, 0, 0, 0, 0, 0, 0x42}};
}

inline std::u16string churnProgId(int index, bool versioned)
{
    std::u16string id = u"Churn.Class" + std::u16string(1, static_cast<char16_t>(u'0' + index));
    return versioned ? id + u".1" : id;
}

} // namespace qvtest

#endif
