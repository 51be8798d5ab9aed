#include "core/ClassTable.h"

#include <qv/lang/Boolean.h>
#include <qv/lang/Double.h>
#include <qv/lang/Float.h>
#include <qv/lang/Integer16.h>
#include <qv/lang/Integer32.h>
#include <qv/lang/Integer64.h>
#include <qv/lang/Integer8.h>
#include <qv/lang/String.h>
#include <qv/lang/UInteger16.h>
#include <qv/lang/UInteger32.h>
#include <qv/lang/UInteger64.h>
#include <qv/lang/UInteger8.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_langClassRows[] = {
    QV_CLASS_ROW(Boolean),
    QV_CLASS_ROW(Double),
    QV_CLASS_ROW(Float),
    QV_CLASS_ROW(Integer16),
    QV_CLASS_ROW(Integer32),
    QV_CLASS_ROW(Integer64),
    QV_CLASS_ROW(Integer8),
    QV_CLASS_ROW_NO_CREATOR(Number),
    QV_CLASS_ROW_NO_CREATOR(SignedInteger),
    QV_CLASS_ROW(String),
    QV_CLASS_ROW(UInteger16),
    QV_CLASS_ROW(UInteger32),
    QV_CLASS_ROW(UInteger64),
    QV_CLASS_ROW(UInteger8),
    QV_CLASS_ROW_NO_CREATOR(UnsignedInteger),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
