#include "net/WorkerThread.h"

#include <qv/core/Boundary.h>

namespace qv {
namespace net {
namespace detail {

WorkerThread::WorkerThread(std::function<void()> body, uint32_t stackSize)
    : m_body(std::move(body)), m_handle(0), m_joined(false)
{
    qvcom::throwIfFailed(QVThreadCreate(&WorkerThread::entry, this, 0, stackSize, &m_handle, nullptr));
}

WorkerThread::~WorkerThread()
{
    join();
}

void WorkerThread::join() noexcept
{
    if (!m_joined) {
        m_joined = true;
        QVThreadJoin(m_handle, nullptr);
    }
}

void* WorkerThread::entry(void* argument)
{
    // Nothing may escape a thread's entry: the bodies handle their own
    // failures, and whatever slips through ends the thread quietly.
    qvcom::guardBoundary([argument] { static_cast<WorkerThread*>(argument)->m_body(); });
    return nullptr;
}

} // namespace detail
} // namespace net
} // namespace qv
