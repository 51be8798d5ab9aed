#ifndef QVCL3_EXEC_PLATFORMFAILURE_H
#define QVCL3_EXEC_PLATFORMFAILURE_H

#include <qv/core/Boundary.h>
#include <qv/core/Exception.h>

namespace qv {
namespace exec {

using qvcom::throwIfFailed;

// A failing platform call with the class's message: ResultException with the
// platform's code, except that running out of memory is OutOfMemoryException
// as everywhere else.
inline void throwIfFailed(Result code, const STRUCT_QV_STR_LIT_INFO& message)
{
    if (code == results::OUTOFMEMORY)
        throw OutOfMemoryException();
    if (code < 0)
        throw ResultException(code, String(message));
}

} // namespace exec
} // namespace qv

#endif
