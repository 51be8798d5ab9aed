#ifndef QVCL3_IO_FILESUPPORT_H
#define QVCL3_IO_FILESUPPORT_H

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

// The handle of a file stream: IoException "stream closed" once it is -1.
void ensureOpen(int32_t handle);
// Closes a file stream: the handle becomes -1 and, when owned, is closed
// (a failure throws, naming the file). A closed stream is left alone.
void closeHandle(int32_t& handle, bool owns, const String& name);

} // namespace detail
} // namespace io
} // namespace qv

#endif
