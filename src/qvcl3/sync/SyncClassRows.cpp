#include "core/ClassTable.h"

#include <qv/sync/Condition.h>
#include <qv/sync/Event.h>
#include <qv/sync/FakeMutex.h>
#include <qv/sync/Gate.h>
#include <qv/sync/Mutex.h>
#include <qv/sync/ReaderWriterLock.h>
#include <qv/sync/Semaphore.h>

namespace qv {
namespace detail {

// In the order of the class names; ends with a row whose type is null.
// clang-format off
const ClassTableRow g_syncClassRows[] = {
    QV_CLASS_ROW(sync::Condition),
    QV_CLASS_ROW(sync::Event),
    QV_CLASS_ROW(sync::FakeMutex),
    QV_CLASS_ROW(sync::Gate),
    QV_CLASS_ROW_NO_CREATOR(sync::LockObject),
    QV_CLASS_ROW(sync::Mutex),
    QV_CLASS_ROW_NO_CREATOR(sync::Object),
    QV_CLASS_ROW(sync::ReaderWriterLock),
    QV_CLASS_ROW(sync::Semaphore),
    QV_CLASS_TABLE_END,
};
// clang-format on

} // namespace detail
} // namespace qv
