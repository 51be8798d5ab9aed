#ifndef QV_CORE_TEXTSPELLING_H
#define QV_CORE_TEXTSPELLING_H

#include <type_traits>

namespace qv {

// UTF-16 text is taken as char16_t and, for older callers, as unsigned
// short. The unsigned short form of each such function is a template that
// only unsigned short deduces: a null pointer literal (nullptr, NULL, 0)
// then picks the char16_t form instead of fitting both.
template <class T>
using IfUShortText = std::enable_if_t<std::is_same<T, unsigned short>::value, int>;

} // namespace qv

#endif
