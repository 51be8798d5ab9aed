#ifndef QV_IO_IOEXCEPTION_H
#define QV_IO_IOEXCEPTION_H

#include <qv/core/Exception.h>

namespace qv {
namespace io {

QV_DECLARE_EXCEPTION(IoException, Exception)
QV_DECLARE_EXCEPTION(TimeoutException, IoException)
// Deliberately not an IoException: a handler for I/O failures does not see
// the end of the data.
QV_DECLARE_EXCEPTION(UnexpectedEOFException, Exception)

} // namespace io
} // namespace qv

#endif
