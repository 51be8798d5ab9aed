#ifndef QVCL3_LANG_UNITSCRATCH_H
#define QVCL3_LANG_UNITSCRATCH_H

#include <qv/core/Exception.h>
#include <qvcore3/qvcore3.h>

#include <cstddef>
#include <cstdint>

namespace qv {
namespace detail {

// Longest text a String takes: its buffer needs one unit more and the
// capacity rounding sixteen.
constexpr int32_t kMaxStringLength = 0x7FFFFFFF - 32;

// Temporary room for UTF-16 units: on the stack when small, from the
// platform allocator otherwise (failure: OutOfMemoryException).
class UnitScratch {
public:
    explicit UnitScratch(int32_t count) : m_units(m_local)
    {
        if (count > static_cast<int32_t>(sizeof(m_local) / sizeof(m_local[0]))) {
            m_units = static_cast<char16_t*>(QVMemAlloc(static_cast<size_t>(count) * sizeof(char16_t)));
            if (!m_units)
                throw OutOfMemoryException();
        }
    }
    ~UnitScratch()
    {
        if (m_units != m_local)
            QVMemFree(m_units);
    }
    UnitScratch(const UnitScratch&) = delete;
    UnitScratch& operator=(const UnitScratch&) = delete;

    char16_t* get() noexcept { return m_units; }

private:
    char16_t m_local[128];
    char16_t* m_units;
};

} // namespace detail
} // namespace qv

#endif
