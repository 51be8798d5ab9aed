#ifndef QV_LEGACY_CQVABSTRACTCONNECTOR_H
#define QV_LEGACY_CQVABSTRACTCONNECTOR_H

#include <qv/core/Reference.h>
#include <qv/net/ITransport.h>

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace qv {

// Kept for older callers: connects to a host and port, retrying with a
// doubling delay, and hands the connected transport to the subclass's
// onConnect. A subclass may veto further attempts in onConnectFailed; cancel()
// (from any thread) ends the waiting between attempts.
//
// Failures that another attempt cannot cure (an unknown host, a bad
// address) end the attempts at once.
class QV_EXPORT CQVAbstractConnector : public Object {
public:
    static constexpr int32_t DEFAULT_ATTEMPTS = 3;
    static constexpr int32_t DEFAULT_FIRST_DELAY = 100; // milliseconds
    static constexpr int32_t DEFAULT_MAX_DELAY = 5000;  // milliseconds

    CQVAbstractConnector(const String& host, uint16_t port);
    CQVAbstractConnector(const CQVAbstractConnector&) = delete;
    CQVAbstractConnector& operator=(const CQVAbstractConnector&) = delete;
    ~CQVAbstractConnector() noexcept(false) override;

    // maxAttempts >= 1; the delay before attempt n + 1 is firstDelay * 2^(n-1),
    // at most maxDelay.
    void setRetryPolicy(int32_t maxAttempts, int32_t firstDelay, int32_t maxDelay);
    // Per attempt, milliseconds; 0: the system's own limit.
    void setConnectTimeout(int32_t milliseconds);

    // Attempts until one connects, then calls onConnect with the transport.
    // Throws the last failure (SocketException or io::TimeoutException) when
    // every attempt failed, IllegalStateException when cancelled.
    void connect();
    // The same, as a result code: 0, the failure's code, or 0x80004004
    // (E_ABORT) when cancelled. Never throws.
    Result Connect() noexcept;
    void cancel();

    const String& getHost() const noexcept { return m_host; }
    uint16_t getPort() const noexcept { return m_port; }
    // Attempts made by the last connect.
    int32_t getAttempts() const noexcept { return m_attempts; }

protected:
    // The connection is the subclass's from here on.
    virtual void onConnect(const Reference<net::ITransport>& transport) = 0;
    // Called after each failed attempt (1-based) with the failure's code;
    // false stops the attempts. The default goes on.
    virtual bool onConnectFailed(Result code, int32_t attempt);

private:
    String m_host;
    uint16_t m_port;
    int32_t m_maxAttempts;
    int32_t m_firstDelay;
    int32_t m_maxDelay;
    int32_t m_connectTimeout;
    int32_t m_attempts;
    std::mutex m_lock;
    std::condition_variable m_wake;
    bool m_cancelled;
};

} // namespace qv

// Older callers name it without the namespace.
using qv::CQVAbstractConnector;

#endif
