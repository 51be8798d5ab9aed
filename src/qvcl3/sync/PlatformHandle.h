#ifndef QVCL3_SYNC_PLATFORMHANDLE_H
#define QVCL3_SYNC_PLATFORMHANDLE_H

#include <qv/core/Boundary.h>
#include <qvcore3/qvcore3.h>

namespace qv {
namespace sync {

// Creates a platform object; a failure throws its code and leaves no object.
template <class Create, class... Args>
QVHANDLE createHandle(Create create, Args... args)
{
    QVHANDLE handle = QV_INVALID_HANDLE;
    qvcom::throwIfFailed(create(args..., &handle));
    return handle;
}

// Timed waits of events and gates: only exactly 0 counts as signalled; the
// time-out and any other success code are false; other failures throw.
inline bool timedWaitResult(QVRESULT r)
{
    if (r == QV_E_TIMEOUT)
        return false;
    qvcom::throwIfFailed(r);
    return r == QV_S_OK;
}

} // namespace sync
} // namespace qv

#endif
