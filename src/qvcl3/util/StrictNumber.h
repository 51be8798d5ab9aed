#ifndef QVCL3_UTIL_STRICTNUMBER_H
#define QVCL3_UTIL_STRICTNUMBER_H

#include <qv/lang/String.h>

#include <cstdint>

namespace qv {
namespace util {
namespace detail {

// Numbers read from configuration text: the whole text must be the number
// (decimal, optional sign; a double as C reads it) and in range. False
// otherwise, with the output untouched.
bool parseStrict(const String& text, int64_t& value);
bool parseStrict(const String& text, uint64_t& value);
bool parseStrict(const String& text, double& value);

} // namespace detail
} // namespace util
} // namespace qv

#endif
