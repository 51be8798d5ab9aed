#include "core/ClassTable.h"

#include <qv/math/BigDecimal.h>
#include <qv/math/BigInteger.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_mathClassRows[] = {
    QV_CLASS_ROW(math::BigDecimal),
    QV_CLASS_ROW(math::BigInteger),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
