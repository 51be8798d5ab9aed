#ifndef QVCL3_NET_WORKERTHREAD_H
#define QVCL3_NET_WORKERTHREAD_H

#include <qvcore3/qvcore3.h>

#include <functional>

namespace qv {
namespace net {
namespace detail {

// One thread of the platform layer running a function, joined by join() or
// at the latest by the destructor. Kept this small so that the servers can
// move onto the library's Thread class without changing their own code.
class WorkerThread {
public:
    // stackSize 0: the platform default. Throws ResultException when the
    // thread cannot be started.
    explicit WorkerThread(std::function<void()> body, uint32_t stackSize = 0);
    WorkerThread(const WorkerThread&) = delete;
    WorkerThread& operator=(const WorkerThread&) = delete;
    ~WorkerThread();

    void join() noexcept;

private:
    static void* entry(void* argument);

    std::function<void()> m_body;
    QVHANDLE m_handle;
    bool m_joined;
};

} // namespace detail
} // namespace net
} // namespace qv

#endif
