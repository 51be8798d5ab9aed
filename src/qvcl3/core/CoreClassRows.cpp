#include "core/ClassTable.h"

#include <qv/core/Class.h>
#include <qv/core/Exception.h>
#include <qv/core/ExternalException.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_coreClassRows[] = {
    QV_CLASS_ROW_NO_CREATOR(AccessViolationException),
    QV_CLASS_ROW_NO_CREATOR(ArrayBoundsException),
    QV_CLASS_ROW(CastFailedException),
    QV_CLASS_ROW_NO_CREATOR(Class),
    QV_CLASS_ROW(ClassNotFoundException),
    QV_CLASS_ROW(CloneNotSupportedException),
    QV_CLASS_ROW(Exception),
    QV_CLASS_ROW_NO_CREATOR(ExternalException),
    QV_CLASS_ROW(IllegalAccessException),
    QV_CLASS_ROW_NO_CREATOR(IllegalInstructionException),
    QV_CLASS_ROW(IllegalStateException),
    QV_CLASS_ROW(IntDivByZeroException),
    QV_CLASS_ROW(IntErrorException),
    QV_CLASS_ROW(IntOverflowException),
    QV_CLASS_ROW(InvalidPathException),
    QV_CLASS_ROW_NO_CREATOR(MathDivByZeroException),
    QV_CLASS_ROW_NO_CREATOR(MathErrorException),
    QV_CLASS_ROW_NO_CREATOR(MathInvalidOpException),
    QV_CLASS_ROW_NO_CREATOR(MathOverflowException),
    QV_CLASS_ROW_NO_CREATOR(MathUnderflowException),
    QV_CLASS_ROW(Object),
    QV_CLASS_ROW(OutOfMemoryException),
    QV_CLASS_ROW(RangeErrorException),
    QV_CLASS_ROW(ReadOnlyException),
    QV_CLASS_ROW_NO_CREATOR(StackOverflowException),
    QV_CLASS_ROW(UnsupportedOperationException),
    QV_CLASS_ROW_NO_CREATOR(UserAbortException),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
