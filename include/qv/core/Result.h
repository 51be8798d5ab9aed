#ifndef QV_CORE_RESULT_H
#define QV_CORE_RESULT_H

#include <cstdint>

namespace qv {

// A 32-bit status in the component model's layout: 0 success, negative failure.
typedef int32_t Result;

inline constexpr bool succeeded(Result r) noexcept
{
    return r >= 0;
}

inline constexpr bool failed(Result r) noexcept
{
    return r < 0;
}

namespace results {
constexpr Result OK = 0;
constexpr Result FALSE_ = 1;
constexpr Result FAIL = static_cast<Result>(0x80004005u);
constexpr Result OUTOFMEMORY = static_cast<Result>(0x8007000Eu);
constexpr Result INVALIDARG = static_cast<Result>(0x80070057u);
constexpr Result NOTIMPL = static_cast<Result>(0x80004001u);
constexpr Result NOINTERFACE = static_cast<Result>(0x80004002u);
constexpr Result POINTER = static_cast<Result>(0x80004003u);
constexpr Result ILLEGAL_METHOD_CALL = static_cast<Result>(0x80004007u);
constexpr Result BUFFER_TOO_SMALL = static_cast<Result>(0x80004009u);
constexpr Result NOAGGREGATION = static_cast<Result>(0x80040110u);
constexpr Result CLASSNOTAVAILABLE = static_cast<Result>(0x80040111u);
constexpr Result FILE_NOT_FOUND = static_cast<Result>(0x80070002u);
constexpr Result INVALID_DATA = static_cast<Result>(0x8007000Du);
constexpr Result NO_MORE_ITEMS = static_cast<Result>(0x80070103u);
constexpr Result CLASSNOTREG = static_cast<Result>(0x80040154u);
constexpr Result HANDLE_EOF = static_cast<Result>(0x80070026u);
constexpr Result TIMEOUT = static_cast<Result>(0x800705B4u);
constexpr Result INVALID_CHARACTER = static_cast<Result>(0x8BB34101u);
constexpr Result UNMAPPABLE_CHARACTER = static_cast<Result>(0x8BB34102u);
constexpr Result UNKNOWN_ENCODING = static_cast<Result>(0x8BB34103u);
} // namespace results

} // namespace qv

#endif
