#include "core/ClassTable.h"

#include <qv/util/BasicBuffer.h>
#include <qv/util/FilePath.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
const ClassTableRow g_utilClassRows[] = {
    QV_CLASS_ROW_NO_CREATOR(util::AbstractByteBuffer),
    QV_CLASS_ROW_NO_CREATOR(util::AbstractCharBuffer),
    QV_CLASS_ROW(util::FilePath),
    QV_CLASS_ROW(util::MTByteBuffer),
    QV_CLASS_ROW(util::MTCharBuffer),
    QV_CLASS_ROW(util::ROByteBuffer),
    QV_CLASS_ROW(util::ROCharBuffer),
    QV_CLASS_ROW(util::RWByteBuffer),
    QV_CLASS_ROW(util::RWCharBuffer),
    QV_CLASS_TABLE_END,
};

} // namespace detail
} // namespace qv
