#ifndef QV_LOG_SYSLOGLOGPROCESSOR_H
#define QV_LOG_SYSLOGLOGPROCESSOR_H

#include <qv/core/Object.h>
#include <qv/core/Reference.h>
#include <qv/lang/String.h>
#include <qv/log/ILogProcessor.h>
#include <qv/sync/Mutex.h>

#include <chrono>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <string>

namespace qv {
namespace net {
namespace detail {
class SyslogConnection;
}
} // namespace net
namespace log {

// Sends each entry to a syslog server as an RFC 5424 message:
//
//   <PRI>1 TIMESTAMP HOSTNAME APP-NAME PROCID MSGID [SD-ID name="value" ...] text
//
// PRI comes from the entry's integer "level" through the level mapping;
// TIMESTAMP is the sending time in UTC to the millisecond; PROCID is this
// process's id; every field but "text" becomes a parameter of one
// structured-data element (in the entry's order, the value's toString()
// in UTF-8 with '"', '\' and ']' escaped; a name is cut to 32 characters and
// each character not allowed in a parameter name becomes '_'); the "text"
// field is the message, without a byte-order mark. No field but "text":
// the structured data is "-".
//
// Transports:
// - the local syslog socket (a unix datagram socket, "/dev/log" unless
//   told otherwise) and UDP: one datagram per entry. A failing send is
//   retried once on a fresh socket; a second failure is thrown from
//   process() as net::SocketException and the entry is lost. Datagrams
//   carry no acknowledgement: what the network or a stopped server drops is
//   gone.
// - TCP with octet-counted framing ("<length> <message>", RFC 6587). An
//   entry is queued, then sent when the connection is up; process() does
//   not throw for a connection that is down or breaks. A sent message stays
//   queued until TCP reports every one of its bytes acknowledged by the
//   server's host; when the connection is found closed or broken (checked
//   before every send), the messages not yet acknowledged are sent again,
//   in order, on a new connection, ahead of the newer ones. So what was not
//   yet sent, or was sent but not acknowledged, survives a server restart
//   (it may then arrive twice); a message the server's host acknowledged
//   but the server never read before it stopped is lost, as syslog over TCP
//   has no acknowledgement of its own. While the server is down, a new
//   connection is tried at most once per reconnect interval (1 s by
//   default) and entries wait in the queue; beyond the queue limit (65 536
//   messages by default) the oldest waiting message is dropped and counted.
//   A send waits at most 5 s for room in the socket; a connect, 5 s too.
//
// process() takes the processor's own lock, so it may be called from
// several threads.
class QV_EXPORT SyslogLogProcessor : public Object, public ILogProcessor {
    QV_DECLARE_INTERFACE_MAP()
public:
    enum Transport { LOCAL, UDP, TCP };

    // Nothing is connected before the first entry.
    SyslogLogProcessor(Transport transport, const String& target, uint16_t port);
    ~SyslogLogProcessor() override;
    SyslogLogProcessor(const SyslogLogProcessor&) = delete;
    SyslogLogProcessor& operator=(const SyslogLogProcessor&) = delete;

    static Reference<SyslogLogProcessor> createLocal(const String& socketPath = String(u"/dev/log"));
    static Reference<SyslogLogProcessor> createUdp(const String& host, uint16_t port = 514);
    static Reference<SyslogLogProcessor> createTcp(const String& host, uint16_t port = 514);

    // Header fields; empty text is sent as "-". Printable US-ASCII is kept,
    // anything else becomes '_', and the text is cut to the RFC's lengths
    // (255, 48, 128 and 32 characters). The host name defaults to this
    // machine's, the others to "-".
    void setHostName(const String& name);
    void setAppName(const String& name);
    void setProcId(const String& id);
    void setMessageId(const String& id);
    // The SD-ID of the fields' element; "fields@32473" by default. It must
    // be a valid SD-NAME holding one '@': else ResultException 0x80070057.
    void setStructuredDataId(const String& id);

    // Entries whose level is at least fromLevel (and below the next mapped
    // level) get this facility (0..23) and severity (0..7); other values
    // throw ResultException 0x80070057. The default mapping has facility 1
    // (user) and maps levels up to 0 to severity 7 (debug), 1 to 6 (info),
    // 2 to 5 (notice), 3 to 4 (warning), 4 to 3 (error), 5 to 2
    // (critical), 6 to 1 (alert), 7 and above to 0 (emergency). Levels
    // below the lowest mapped one take its mapping; an entry without an
    // integer level gets facility 1 and severity 5 (notice).
    void mapLevel(int32_t fromLevel, int32_t facility, int32_t severity);
    // Removes every mapping (until one is added, every entry gets facility
    // 1 and severity 5).
    void clearLevelMapping();
    // facility * 8 + severity for an entry of this level.
    int32_t getPriority(int32_t level) const;

    void setReconnectInterval(int32_t milliseconds);
    void setQueueLimit(int32_t messages);

    void process(const ILogEntry* entry) override;
    // The RFC 5424 message process() would send for entry (without framing).
    std::string format(const ILogEntry* entry) const;
    // TCP: connects now if needed, sends what waits and waits up to
    // timeoutMs until every sent message is acknowledged. True when nothing
    // is left unsent or unacknowledged. Datagram transports: true.
    bool flush(int32_t timeoutMs);
    // TCP: messages waiting or not yet acknowledged.
    int64_t getPendingCount() const;
    // TCP: messages dropped from a full queue.
    int64_t getDroppedCount() const;

private:
    using Clock = std::chrono::steady_clock;
    struct Sent {
        std::string bytes;
        uint64_t end = 0; // stream offset just after the message
    };
    void setHeaderField(std::string& field, const String& text, int32_t maxLength);
    void sendDatagram(const std::string& message);
    // Confirms acknowledged messages, reconnects when due (or forced), sends
    // what waits; never throws for the connection.
    void deliver(bool force);
    void confirm();
    void dropConnection();

    std::unique_ptr<net::detail::SyslogConnection> m_connection;
    mutable sync::Mutex m_lock;
    std::string m_hostName;
    std::string m_appName = "-";
    std::string m_procId;
    std::string m_messageId = "-";
    std::string m_structuredDataId = "fields@32473";
    std::map<int32_t, int32_t> m_priorities; // from level to facility * 8 + severity
    std::deque<std::string> m_waiting;       // framed, not yet sent
    std::deque<Sent> m_unacknowledged;
    uint64_t m_written = 0;
    int64_t m_dropped = 0;
    int32_t m_reconnectMs = 1000;
    size_t m_queueLimit = 65536;
    bool m_attempted = false;
    Clock::time_point m_lastAttempt;
};

} // namespace log
} // namespace qv

#endif
