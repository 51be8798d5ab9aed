#include "core/ClassTable.h"

#include <qv/io/ByteArrayInputStream.h>
#include <qv/io/ByteArrayOutputStream.h>
#include <qv/io/FilterInputStream.h>
#include <qv/io/FilterOutputStream.h>
#include <qv/io/InputStream.h>
#include <qv/io/IoException.h>
#include <qv/io/OutputStream.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
const ClassTableRow g_ioClassRows[] = {
    QV_CLASS_ROW_NO_CREATOR(io::ByteArrayInputStream), QV_CLASS_ROW(io::ByteArrayOutputStream),
    QV_CLASS_ROW_NO_CREATOR(io::FilterInputStream),    QV_CLASS_ROW_NO_CREATOR(io::FilterOutputStream),
    QV_CLASS_ROW_NO_CREATOR(io::InputStream),          QV_CLASS_ROW(io::IoException),
    QV_CLASS_ROW_NO_CREATOR(io::OutputStream),         QV_CLASS_ROW(io::TimeoutException),
    QV_CLASS_ROW(io::UnexpectedEOFException),          QV_CLASS_TABLE_END,
};

} // namespace detail
} // namespace qv
