#ifndef QV_TEXT_CHARSET_ENCINFO_H
#define QV_TEXT_CHARSET_ENCINFO_H

#include <qv/core/Export.h>
#include <qv/core/Result.h>
#include <qv/core/TextSpelling.h>

#include <cstddef>
#include <cstdint>

// One encoding the library converts: its canonical name (constant text owned
// by the library), its code page, and a word reserved for later use (0).
struct EncInfo {
    const char16_t* name;
    uint32_t codePage;
    uint32_t reserved;
};

namespace qv {
namespace text {
namespace charset {
// Also reachable beside the converters it describes.
using ::EncInfo;
} // namespace charset
} // namespace text
} // namespace qv

// The known encodings, for callers outside the library. The table is built
// at library start-up; while the library is stopped every call answers
// 0x80004005. None of them throws.
extern "C" {
// Case-insensitive; canonical names and aliases ("WINDOWS-1250", "MS932").
// Null argument: 0x80070057; unknown name: 0x80004005.
QV_EXPORT qv::Result QVGetEncInfoByName(const char16_t* name, EncInfo* out) noexcept;
// Unknown code page: 0x80004005.
QV_EXPORT qv::Result QVGetEncInfoByCodePage(int32_t codePage, EncInfo* out) noexcept;
// Copies all records when *count is at least their number; otherwise copies
// nothing and answers 0x80004009. Either way *count becomes the number of
// records, so a call with 0 and null asks for it. A null count, or a
// non-zero count with a null array: 0x80070057.
QV_EXPORT qv::Result QVEnumerateEncInfo(uint32_t* count, EncInfo* out) noexcept;
}

template <class T, qv::IfUShortText<T> = 0>
inline qv::Result QVGetEncInfoByName(const T* name, EncInfo* out) noexcept
{
    return QVGetEncInfoByName(reinterpret_cast<const char16_t*>(name), out);
}

#endif
