#include <qv/net/TcpServer.h>

#include <qv/core/Boundary.h>
#include <qv/exec/Runnable.h>
#include <qv/exec/Thread.h>
#include <qv/io/IoException.h>
#include <qv/net/SocketException.h>

#include "net/SocketCalls.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

namespace qv {
namespace net {

ITcpConnectionHandler::~ITcpConnectionHandler() noexcept(false) = default;

namespace {

// Starts body on a thread of its own (stackSize 0: the platform default).
// Nothing may escape it: the loops handle their own failures, and whatever
// slips through ends the thread quietly instead of being reported as a
// thread that failed.
std::unique_ptr<exec::Thread> startThread(std::function<void()> body, uint32_t stackSize = 0)
{
    auto thread =
        std::make_unique<exec::Thread>(makeReference<exec::Runnable>([body] { qvcom::guardBoundary(body); }).get());
    thread->setStackSize(stackSize);
    thread->start();
    return thread;
}

} // namespace

struct TcpServer::State {
    Reference<ITcpConnectionHandler> handler;
    TcpServerParams params;
    TcpServerSocket socket;
    InetSocketAddress address;
    // The acceptor waits on the listening socket and on the read end of
    // this pair; stop() writes to the other end to wake it.
    int wake[2] = {-1, -1};

    std::mutex lock;
    std::condition_variable work;    // a connection was queued, or stopping
    std::condition_variable settled; // a handler finished
    std::deque<Reference<TcpWorkerSocket>> queue;
    std::vector<TcpWorkerSocket*> active;
    // Every thread started is joined by stop().
    std::vector<std::unique_ptr<exec::Thread>> workers;
    int32_t idleWorkers = 0;
    bool started = false;
    bool stopping = false;
    std::unique_ptr<exec::Thread> acceptor;

    std::atomic<uint64_t> accepted{0};
    std::atomic<uint64_t> refused{0};
    std::atomic<uint64_t> failed{0};
    std::atomic<int32_t> activeCount{0};
    std::atomic<int32_t> queuedCount{0};
    std::atomic<int32_t> threadCount{0};

    ~State()
    {
        detail::closeQuietly(wake[0]);
        detail::closeQuietly(wake[1]);
    }

    void acceptLoop();
    void workerLoop();
    void dispatch(Reference<TcpWorkerSocket> connection);
};

void TcpServer::State::acceptLoop()
{
    for (;;) {
        pollfd entries[2] = {{socket.getDescriptor(), POLLIN, 0}, {wake[0], POLLIN, 0}};
        const int rc = ::poll(entries, 2, -1);
        if (rc < 0 && errno != EINTR)
            return;
        if (entries[1].revents != 0)
            return;
        if (rc <= 0 || entries[0].revents == 0)
            continue;
        Reference<TcpWorkerSocket> connection;
        try {
            // The poll said a connection is waiting; the short time-out only
            // guards against one that vanished in between.
            connection = socket.accept(1);
        } catch (const io::TimeoutException&) {
            continue;
        } catch (const io::IoException&) {
            // Out of descriptors or memory for a moment: keep serving the
            // connections there are, and try again shortly.
            QVThreadSleep(10);
            continue;
        } catch (const std::bad_alloc&) {
            QVThreadSleep(10);
            continue;
        }
        accepted.fetch_add(1, std::memory_order_relaxed);
        try {
            dispatch(connection);
        } catch (...) {
            // No thread for it: the connection is refused, the server goes on.
            refused.fetch_add(1, std::memory_order_relaxed);
        }
    }
}

void TcpServer::State::dispatch(Reference<TcpWorkerSocket> connection)
{
    if (params.readTimeout > 0)
        connection->setReadTimeout(params.readTimeout);
    if (params.noDelay)
        connection->setTcpNoDelay(true);
    std::unique_lock<std::mutex> guard(lock);
    // Connections being handled or waiting, against the threads that may
    // run and the queue behind them; counting queued ones (not idle threads)
    // keeps the limit exact while new threads are still starting.
    const size_t load = active.size() + queue.size();
    if (load >= static_cast<size_t>(params.maxThreads) + static_cast<size_t>(params.maxQueued)) {
        guard.unlock();
        refused.fetch_add(1, std::memory_order_relaxed);
        connection->close();
        return;
    }
    queue.push_back(connection);
    queuedCount.store(static_cast<int32_t>(queue.size()), std::memory_order_relaxed);
    if (idleWorkers < static_cast<int32_t>(queue.size()) && static_cast<int32_t>(workers.size()) < params.maxThreads) {
        try {
            workers.push_back(startThread([this] { workerLoop(); }, params.threadStackSize));
            threadCount.store(static_cast<int32_t>(workers.size()), std::memory_order_relaxed);
        } catch (...) {
            // Served by the threads there are, or refused if there are none.
            if (workers.empty()) {
                queue.pop_back();
                queuedCount.store(static_cast<int32_t>(queue.size()), std::memory_order_relaxed);
                throw;
            }
        }
    }
    guard.unlock();
    work.notify_one();
}

void TcpServer::State::workerLoop()
{
    std::unique_lock<std::mutex> guard(lock);
    for (;;) {
        ++idleWorkers;
        work.wait(guard, [this] { return stopping || !queue.empty(); });
        --idleWorkers;
        if (queue.empty())
            return; // stopping
        Reference<TcpWorkerSocket> connection = queue.front();
        queue.pop_front();
        queuedCount.store(static_cast<int32_t>(queue.size()), std::memory_order_relaxed);
        active.push_back(connection.get());
        activeCount.store(static_cast<int32_t>(active.size()), std::memory_order_relaxed);
        guard.unlock();
        try {
            handler->handleConnection(*connection);
        } catch (...) {
            failed.fetch_add(1, std::memory_order_relaxed);
        }
        guard.lock();
        active.erase(std::find(active.begin(), active.end(), connection.get()));
        activeCount.store(static_cast<int32_t>(active.size()), std::memory_order_relaxed);
        // Closed under the lock: stop() may be shutting this socket down.
        connection->close();
        settled.notify_all();
    }
}

TcpServer::TcpServer(const Reference<ITcpConnectionHandler>& handler, const InetSocketAddress& address,
                     const TcpServerParams& params)
    : m_state(std::make_unique<State>())
{
    if (!handler)
        throw SocketException(QV_E_SOCKET_EINVAL);
    m_state->handler = handler;
    m_state->params = params;
    m_state->params.maxThreads = std::max(params.maxThreads, 1);
    m_state->params.maxQueued = std::max(params.maxQueued, 0);
    m_state->socket.bind(address);
    m_state->address = m_state->socket.getLocalAddress();
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, m_state->wake) != 0)
        detail::throwLastError();
}

TcpServer::~TcpServer() noexcept(false)
{
    stop(0);
}

void TcpServer::start()
{
    std::lock_guard<std::mutex> guard(m_state->lock);
    if (m_state->started)
        throw IllegalStateException(String(u"TcpServer already started"));
    State* state = m_state.get();
    m_state->acceptor = startThread([state] { state->acceptLoop(); });
    m_state->started = true;
}

bool TcpServer::stop(int32_t deadline)
{
    State& s = *m_state;
    {
        std::lock_guard<std::mutex> guard(s.lock);
        if (!s.started || s.stopping)
            return true;
        s.stopping = true;
    }
    const char byte = 1;
    while (::write(s.wake[1], &byte, 1) < 0 && errno == EINTR) {
    }
    // Should the acceptor sit in accept() (a connection that vanished after
    // poll saw it), shutting the listening socket down wakes it too.
    ::shutdown(s.socket.getDescriptor(), SHUT_RDWR);
    s.acceptor->join();
    s.socket.close();

    std::unique_lock<std::mutex> guard(s.lock);
    for (Reference<TcpWorkerSocket>& waiting : s.queue) {
        waiting->close();
        s.refused.fetch_add(1, std::memory_order_relaxed);
    }
    s.queue.clear();
    s.queuedCount.store(0, std::memory_order_relaxed);
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(std::max(deadline, 0));
    const bool finished = s.settled.wait_until(guard, until, [&s] { return s.active.empty(); });
    if (!finished) {
        for (TcpWorkerSocket* socket : s.active) {
            ::shutdown(socket->getDescriptor(), SHUT_RDWR);
        }
        s.settled.wait(guard, [&s] { return s.active.empty(); });
    }
    guard.unlock();
    s.work.notify_all();
    for (auto& worker : s.workers)
        worker->join();
    return finished;
}

bool TcpServer::isRunning() const noexcept
{
    std::lock_guard<std::mutex> guard(m_state->lock);
    return m_state->started && !m_state->stopping;
}

uint16_t TcpServer::getPort() const
{
    return getAddress().getPort();
}

InetSocketAddress TcpServer::getAddress() const
{
    return m_state->address;
}

const TcpServerParams& TcpServer::getParams() const noexcept
{
    return m_state->params;
}

uint64_t TcpServer::getAcceptedCount() const noexcept
{
    return m_state->accepted.load(std::memory_order_relaxed);
}

int32_t TcpServer::getActiveCount() const noexcept
{
    return m_state->activeCount.load(std::memory_order_relaxed);
}

uint64_t TcpServer::getRefusedCount() const noexcept
{
    return m_state->refused.load(std::memory_order_relaxed);
}

int32_t TcpServer::getQueuedCount() const noexcept
{
    return m_state->queuedCount.load(std::memory_order_relaxed);
}

int32_t TcpServer::getThreadCount() const noexcept
{
    return m_state->threadCount.load(std::memory_order_relaxed);
}

uint64_t TcpServer::getFailedCount() const noexcept
{
    return m_state->failed.load(std::memory_order_relaxed);
}

} // namespace net
} // namespace qv
