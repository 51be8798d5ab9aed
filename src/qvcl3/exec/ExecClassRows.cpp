#include "core/ClassTable.h"

#include <qv/exec/Process.h>
#include <qv/exec/Runnable.h>
#include <qv/exec/SharedLibrary.h>
#include <qv/exec/Thread.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_execClassRows[] = {
    QV_CLASS_ROW_NO_CREATOR(exec::Process),
    QV_CLASS_ROW(exec::Runnable),
    QV_CLASS_ROW_NO_CREATOR(exec::SharedLibrary),
    QV_CLASS_ROW(exec::Thread),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
