#ifndef QVCL3_MATH_TEXTBRIDGE_H
#define QVCL3_MATH_TEXTBRIDGE_H

// The arithmetic works on ASCII std::string text; these are the only places
// where it meets qv::String.

#include <qv/lang/String.h>

#include <cstddef>
#include <string>

namespace qv {
namespace math {
namespace detail {

String toQvString(const std::string& ascii);

struct TextView {
    const char16_t* data;
    size_t length;
};

TextView viewOf(const String& text) noexcept;

} // namespace detail
} // namespace math
} // namespace qv

#endif
