#include "core/ClassTable.h"

#include <qv/ipc/Semaphore.h>
#include <qv/ipc/SemaphoreR.h>
#include <qv/ipc/SharedMemory.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_ipcClassRows[] = {
    QV_CLASS_ROW_NO_CREATOR(ipc::Semaphore),
    QV_CLASS_ROW_NO_CREATOR(ipc::SemaphoreR),
    QV_CLASS_ROW_NO_CREATOR(ipc::SharedMemory),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
