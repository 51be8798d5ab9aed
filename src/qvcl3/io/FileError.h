#ifndef QVCL3_IO_FILEERROR_H
#define QVCL3_IO_FILEERROR_H

#include <qv/core/Result.h>
#include <qv/lang/String.h>

namespace qv {
namespace io {
namespace detail {

// Throws IoException "<what>: <name>: <system text>", for example
// "cannot open file: /no/such: No such file or directory". Call it right
// after the failing platform call: the system text comes from the thread's
// last error when that matches the code.
[[noreturn]] void throwFileError(const char16_t* what, const String& name, Result code);

// "handle <n>", the name of a stream made from a handle.
String handleName(int32_t handle);

} // namespace detail
} // namespace io
} // namespace qv

#endif
