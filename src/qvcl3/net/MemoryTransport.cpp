#include <qv/net/MemoryTransport.h>

#include <qv/net/SocketException.h>

#include "net/SocketCalls.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace qv {
namespace net {

// Two one-way pipes; side s writes pipe s and reads pipe 1 - s.
struct MemoryTransport::Channel {
    struct Pipe {
        std::deque<char> bytes;
        bool writerClosed = false;
        bool readerClosed = false;
    };
    std::mutex lock;
    std::condition_variable changed;
    Pipe pipes[2];
    size_t capacity;
};

MemoryTransport::Pair MemoryTransport::createPair(int32_t capacity)
{
    auto channel = std::make_shared<Channel>();
    channel->capacity = static_cast<size_t>(std::max(capacity, 1));
    Reference<MemoryTransport> first(new MemoryTransport(channel, 0));
    Reference<MemoryTransport> second(new MemoryTransport(channel, 1));
    return Pair(first, second);
}

MemoryTransport::MemoryTransport() : m_side(0), m_readTimeout(0) {}

MemoryTransport::MemoryTransport(std::shared_ptr<Channel> channel, int side)
    : m_channel(std::move(channel)), m_side(side), m_readTimeout(0)
{}

MemoryTransport::~MemoryTransport() noexcept(false)
{
    close();
}

int32_t MemoryTransport::read(void* buffer, int32_t count)
{
    if (!m_channel)
        return -1;
    if (count < 1)
        return 0;
    std::unique_lock<std::mutex> guard(m_channel->lock);
    Channel::Pipe& pipe = m_channel->pipes[1 - m_side];
    if (pipe.readerClosed)
        detail::throwClosed();
    const auto ready = [&pipe] { return !pipe.bytes.empty() || pipe.writerClosed || pipe.readerClosed; };
    if (m_readTimeout > 0) {
        if (!m_channel->changed.wait_for(guard, std::chrono::milliseconds(m_readTimeout), ready))
            detail::throwTimeout();
    } else {
        m_channel->changed.wait(guard, ready);
    }
    if (pipe.bytes.empty())
        return -1;
    const size_t n = std::min(pipe.bytes.size(), static_cast<size_t>(count));
    std::copy_n(pipe.bytes.begin(), n, static_cast<char*>(buffer));
    pipe.bytes.erase(pipe.bytes.begin(), pipe.bytes.begin() + static_cast<std::ptrdiff_t>(n));
    guard.unlock();
    m_channel->changed.notify_all();
    return static_cast<int32_t>(n);
}

void MemoryTransport::write(const void* data, int32_t count)
{
    if (!m_channel)
        throw SocketException(QV_E_SOCKET_ENOTCONN);
    const char* bytes = static_cast<const char*>(data);
    std::unique_lock<std::mutex> guard(m_channel->lock);
    Channel::Pipe& pipe = m_channel->pipes[m_side];
    int32_t done = 0;
    while (done < count) {
        if (pipe.writerClosed)
            detail::throwClosed();
        if (pipe.readerClosed)
            throw SocketException(QV_E_SOCKET_ECONNRESET);
        const size_t room = m_channel->capacity - std::min(m_channel->capacity, pipe.bytes.size());
        if (room == 0) {
            m_channel->changed.wait(guard);
            continue;
        }
        const size_t n = std::min(room, static_cast<size_t>(count - done));
        pipe.bytes.insert(pipe.bytes.end(), bytes + done, bytes + done + n);
        done += static_cast<int32_t>(n);
        m_channel->changed.notify_all();
    }
}

void MemoryTransport::flush() {}

void MemoryTransport::close()
{
    if (!m_channel)
        return;
    {
        std::lock_guard<std::mutex> guard(m_channel->lock);
        m_channel->pipes[m_side].writerClosed = true;
        m_channel->pipes[1 - m_side].readerClosed = true;
    }
    m_channel->changed.notify_all();
}

bool MemoryTransport::isOpen() const
{
    if (!m_channel)
        return false;
    std::lock_guard<std::mutex> guard(m_channel->lock);
    return !m_channel->pipes[m_side].writerClosed;
}

String MemoryTransport::getPeerDescription() const
{
    return String(m_side == 0 ? u"memory:1" : u"memory:0");
}

void MemoryTransport::setReadTimeout(int32_t milliseconds)
{
    m_readTimeout = std::max(milliseconds, 0);
}

} // namespace net
} // namespace qv
