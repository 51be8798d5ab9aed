#include <qv/io/IoException.h>

#include "core/ExceptionDefinition.h"

namespace qv {
namespace io {

QV_DEFINE_EXCEPTION(IoException, Exception)
QV_DEFINE_EXCEPTION(TimeoutException, IoException)
QV_DEFINE_EXCEPTION(UnexpectedEOFException, Exception)

} // namespace io
} // namespace qv
