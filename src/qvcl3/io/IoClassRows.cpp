#include "core/ClassTable.h"

#include <qv/io/IoException.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
const ClassTableRow g_ioClassRows[] = {
    QV_CLASS_ROW(io::IoException),
    QV_CLASS_ROW(io::TimeoutException),
    QV_CLASS_ROW(io::UnexpectedEOFException),
    QV_CLASS_TABLE_END,
};

} // namespace detail
} // namespace qv
