#include <qv/legacy/CQVAbstractConnector.h>

#include <qv/core/Boundary.h>
#include <qv/io/IoException.h>
#include <qv/net/SocketException.h>
#include <qv/net/SocketTransport.h>
#include <qv/net/TcpClientSocket.h>

#include <algorithm>
#include <chrono>

namespace qv {

namespace {

constexpr Result kAborted = static_cast<Result>(0x80004004u);

bool isPermanent(Result code)
{
    return code == QV_E_SOCKET_EAI_NONAME || code == QV_E_SOCKET_EAI_NODATA || code == QV_E_SOCKET_EAI_FAIL ||
           code == QV_E_SOCKET_EAI_FAMILY || code == QV_E_SOCKET_EINVAL || code == QV_E_SOCKET_EAFNOSUPPORT;
}

} // namespace

CQVAbstractConnector::CQVAbstractConnector(const String& host, uint16_t port)
    : m_host(host), m_port(port), m_maxAttempts(DEFAULT_ATTEMPTS), m_firstDelay(DEFAULT_FIRST_DELAY),
      m_maxDelay(DEFAULT_MAX_DELAY), m_connectTimeout(0), m_attempts(0), m_cancelled(false)
{}

CQVAbstractConnector::~CQVAbstractConnector() noexcept(false) = default;

void CQVAbstractConnector::setRetryPolicy(int32_t maxAttempts, int32_t firstDelay, int32_t maxDelay)
{
    m_maxAttempts = std::max(maxAttempts, 1);
    m_firstDelay = std::max(firstDelay, 0);
    m_maxDelay = std::max(maxDelay, m_firstDelay);
}

void CQVAbstractConnector::setConnectTimeout(int32_t milliseconds)
{
    m_connectTimeout = std::max(milliseconds, 0);
}

void CQVAbstractConnector::cancel()
{
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_cancelled = true;
    }
    m_wake.notify_all();
}

bool CQVAbstractConnector::onConnectFailed(Result, int32_t)
{
    return true;
}

void CQVAbstractConnector::connect()
{
    {
        std::lock_guard<std::mutex> guard(m_lock);
        m_cancelled = false;
    }
    m_attempts = 0;
    int64_t delay = m_firstDelay;
    for (;;) {
        ++m_attempts;
        Reference<net::TcpClientSocket> socket = makeReference<net::TcpClientSocket>();
        try {
            socket->connect(m_host, m_port, m_connectTimeout);
        } catch (const io::IoException& failure) {
            const Result code = dynamic_cast<const io::TimeoutException*>(&failure) != nullptr ? QV_E_SOCKET_ETIMEDOUT
                                                                                               : failure.getResult();
            if (m_attempts >= m_maxAttempts || isPermanent(code) || !onConnectFailed(code, m_attempts))
                throw;
            std::unique_lock<std::mutex> guard(m_lock);
            if (m_wake.wait_for(guard, std::chrono::milliseconds(delay), [this] { return m_cancelled; }))
                throw IllegalStateException(String(u"connect cancelled"));
            delay = std::min<int64_t>(delay * 2, m_maxDelay);
            continue;
        }
        onConnect(Reference<net::ITransport>(new net::SocketTransport(socket)));
        return;
    }
}

Result CQVAbstractConnector::Connect() noexcept
{
    return qvcom::guardBoundary([this]() -> Result {
        try {
            connect();
        } catch (const io::TimeoutException&) {
            return QV_E_SOCKET_ETIMEDOUT;
        } catch (const IllegalStateException& e) {
            std::lock_guard<std::mutex> guard(m_lock);
            return m_cancelled ? kAborted : e.getResult();
        }
        return 0;
    });
}

} // namespace qv
