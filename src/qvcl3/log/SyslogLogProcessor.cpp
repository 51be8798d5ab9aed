#include <qv/log/SyslogLogProcessor.h>

#include <qv/core/Exception.h>
#include <qv/lang/Integer32.h>
#include <qv/net/SocketException.h>

#include "log/LockHolder.h"
#include "net/SyslogConnection.h"

#include <qvcore3/qvcore3.h>

#include <cstdint>
#include <cstdio>
#include <iterator>
#include <thread>

namespace qv {
namespace log {

namespace {

const int32_t kDefaultFacility = 1;
const int32_t kUnleveledSeverity = 5;
const int32_t kConnectTimeoutMs = 5000;
const int32_t kSendTimeoutMs = 5000;

bool isNameCharacter(char16_t c)
{
    return c > 32 && c < 127 && c != u'=' && c != u']' && c != u'"';
}

// Printable US-ASCII, cut to maxLength; "-" for empty text.
std::string headerField(const String& text, int32_t maxLength)
{
    std::string result;
    const char16_t* data = text.getData();
    for (int32_t i = 0; i < text.getLength() && static_cast<int32_t>(result.size()) < maxLength; ++i)
        result += data[i] > 32 && data[i] < 127 ? static_cast<char>(data[i]) : '_';
    return result.empty() ? "-" : result;
}

std::string parameterName(const String& name)
{
    std::string result;
    const char16_t* data = name.getData();
    for (int32_t i = 0; i < name.getLength() && result.size() < 32; ++i)
        result += isNameCharacter(data[i]) ? static_cast<char>(data[i]) : '_';
    return result.empty() ? "_" : result;
}

void appendEscaped(std::string& out, const std::string& value)
{
    for (char c : value) {
        if (c == '"' || c == '\\' || c == ']')
            out += '\\';
        out += c;
    }
}

int32_t priority(int32_t facility, int32_t severity)
{
    if (facility < 0 || facility > 23 || severity < 0 || severity > 7)
        throw ResultException(results::INVALIDARG);
    return facility * 8 + severity;
}

} // namespace

QV_BEGIN_INTERFACE_MAP(SyslogLogProcessor)
QV_INTERFACE_ENTRY(SyslogLogProcessor, ILogProcessor)
QV_INTERFACE_CHAIN(Object)
QV_END_INTERFACE_MAP()

SyslogLogProcessor::SyslogLogProcessor(Transport transport, const String& target, uint16_t port)
    : m_connection(
          new net::detail::SyslogConnection(static_cast<net::detail::SyslogConnection::Kind>(transport), target, port)),
      m_hostName(headerField(String(net::detail::SyslogConnection::hostName().c_str(), -1, u"UTF-8"), 255)),
      m_procId(std::to_string(QVProcessGetCurrentId()))
{
    if (transport < LOCAL || transport > TCP || target.getLength() == 0)
        throw ResultException(results::INVALIDARG);
    static const int32_t defaults[][2] = {{INT32_MIN, 7}, {1, 6}, {2, 5}, {3, 4}, {4, 3}, {5, 2}, {6, 1}, {7, 0}};
    for (const auto& row : defaults)
        m_priorities[row[0]] = priority(kDefaultFacility, row[1]);
}

SyslogLogProcessor::~SyslogLogProcessor()
{
    // One last attempt, not waiting for acknowledgements: a destructor must
    // not hang on an unreachable server.
    try {
        LockHolder hold(m_lock);
        if (m_connection->getKind() == net::detail::SyslogConnection::TCP)
            deliver(true);
    } catch (const Exception&) {
    }
}

Reference<SyslogLogProcessor> SyslogLogProcessor::createLocal(const String& socketPath)
{
    return Reference<SyslogLogProcessor>(new SyslogLogProcessor(LOCAL, socketPath, 0));
}

Reference<SyslogLogProcessor> SyslogLogProcessor::createUdp(const String& host, uint16_t port)
{
    return Reference<SyslogLogProcessor>(new SyslogLogProcessor(UDP, host, port));
}

Reference<SyslogLogProcessor> SyslogLogProcessor::createTcp(const String& host, uint16_t port)
{
    return Reference<SyslogLogProcessor>(new SyslogLogProcessor(TCP, host, port));
}

void SyslogLogProcessor::setHeaderField(std::string& field, const String& text, int32_t maxLength)
{
    std::string value = headerField(text, maxLength);
    LockHolder hold(m_lock);
    field.swap(value);
}

void SyslogLogProcessor::setHostName(const String& name)
{
    setHeaderField(m_hostName, name, 255);
}

void SyslogLogProcessor::setAppName(const String& name)
{
    setHeaderField(m_appName, name, 48);
}

void SyslogLogProcessor::setProcId(const String& id)
{
    setHeaderField(m_procId, id, 128);
}

void SyslogLogProcessor::setMessageId(const String& id)
{
    setHeaderField(m_messageId, id, 32);
}

void SyslogLogProcessor::setStructuredDataId(const String& id)
{
    const std::string name = parameterName(id);
    if (id.getLength() == 0 || id.getLength() > 32 || name != id.toUtf8() || name.find('@') == std::string::npos ||
        name.find('@') != name.rfind('@'))
        throw ResultException(results::INVALIDARG);
    LockHolder hold(m_lock);
    m_structuredDataId = name;
}

void SyslogLogProcessor::mapLevel(int32_t fromLevel, int32_t facility, int32_t severity)
{
    const int32_t value = priority(facility, severity);
    LockHolder hold(m_lock);
    m_priorities[fromLevel] = value;
}

void SyslogLogProcessor::clearLevelMapping()
{
    LockHolder hold(m_lock);
    m_priorities.clear();
}

int32_t SyslogLogProcessor::getPriority(int32_t level) const
{
    LockHolder hold(m_lock);
    if (m_priorities.empty())
        return kDefaultFacility * 8 + kUnleveledSeverity;
    auto at = m_priorities.upper_bound(level);
    return at == m_priorities.begin() ? at->second : std::prev(at)->second;
}

void SyslogLogProcessor::setReconnectInterval(int32_t milliseconds)
{
    LockHolder hold(m_lock);
    m_reconnectMs = milliseconds < 0 ? 0 : milliseconds;
}

void SyslogLogProcessor::setQueueLimit(int32_t messages)
{
    if (messages < 1)
        throw ResultException(results::INVALIDARG);
    LockHolder hold(m_lock);
    m_queueLimit = static_cast<size_t>(messages);
}

std::string SyslogLogProcessor::format(const ILogEntry* entry) const
{
    if (!entry)
        throw ResultException(results::POINTER);
    static const String levelKey(u"level");
    static const String textKey(u"text");
    const Reference<const Object> level = entry->getField(levelKey);
    const Integer32* levelValue = dynamic_cast<const Integer32*>(level.get());
    const int32_t pri = levelValue ? getPriority(levelValue->getValue()) : kDefaultFacility * 8 + kUnleveledSeverity;

    STRUCT_QV_TIME now{};
    const Result clock = QVTimeGetSystem(&now);
    if (failed(clock))
        throw ResultException(clock);
    char head[64];
    std::snprintf(head, sizeof head, "<%d>1 %04u-%02u-%02uT%02u:%02u:%02u.%03uZ ", pri, now.wYear, now.wMonth, now.wDay,
                  now.wHour, now.wMinute, now.wSecond, now.wMilliseconds);
    std::string message(head);
    {
        LockHolder hold(m_lock);
        message += m_hostName + ' ' + m_appName + ' ' + m_procId + ' ' + m_messageId + ' ';
    }

    const Reference<const collections::Set<String>> names = entry->getFieldNames();
    std::string data;
    for (const String& name : *names) {
        if (name.equals(textKey))
            continue;
        const Reference<const Object> value = entry->getField(name);
        data += ' ';
        data += parameterName(name);
        data += "=\"";
        if (value)
            appendEscaped(data, value->toString().toUtf8());
        data += '"';
    }
    if (data.empty()) {
        message += '-';
    } else {
        message += '[';
        message += m_structuredDataId;
        message += data;
        message += ']';
    }
    const Reference<const Object> text = entry->getField(textKey);
    if (text) {
        message += ' ';
        message += text->toString().toUtf8();
    }
    return message;
}

void SyslogLogProcessor::process(const ILogEntry* entry)
{
    const std::string message = format(entry);
    LockHolder hold(m_lock);
    if (m_connection->getKind() != net::detail::SyslogConnection::TCP) {
        sendDatagram(message);
        return;
    }
    m_waiting.push_back(std::to_string(message.size()) + ' ' + message);
    if (m_waiting.size() > m_queueLimit) {
        m_waiting.pop_front();
        ++m_dropped;
    }
    deliver(false);
}

void SyslogLogProcessor::sendDatagram(const std::string& message)
{
    for (int attempt = 0;; ++attempt) {
        try {
            if (!m_connection->isOpen())
                m_connection->open(kConnectTimeoutMs);
            m_connection->send(message.data(), message.size(), kSendTimeoutMs);
            return;
        } catch (const net::SocketException&) {
            // A restarted server, or a port refused by an earlier datagram:
            // one more try on a fresh socket.
            m_connection->close();
            if (attempt > 0)
                throw;
        }
    }
}

void SyslogLogProcessor::confirm()
{
    // The queue size first: a reset after it purges the queue, and the
    // check that follows sees the reset.
    const int64_t queued = m_connection->unacknowledged();
    if (m_connection->isBroken()) {
        dropConnection();
        return;
    }
    if (queued < 0)
        return;
    const uint64_t acknowledged = m_written - static_cast<uint64_t>(queued);
    while (!m_unacknowledged.empty() && m_unacknowledged.front().end <= acknowledged)
        m_unacknowledged.pop_front();
}

void SyslogLogProcessor::dropConnection()
{
    m_connection->close();
    // Not acknowledged: sent again, first, on the next connection.
    while (!m_unacknowledged.empty()) {
        m_waiting.push_front(std::move(m_unacknowledged.back().bytes));
        m_unacknowledged.pop_back();
    }
}

void SyslogLogProcessor::deliver(bool force)
{
    if (m_connection->isOpen())
        confirm();
    if (!m_connection->isOpen()) {
        if (m_waiting.empty())
            return;
        const Clock::time_point now = Clock::now();
        if (!force && m_attempted && now - m_lastAttempt < std::chrono::milliseconds(m_reconnectMs))
            return;
        m_attempted = true;
        m_lastAttempt = now;
        try {
            m_connection->open(kConnectTimeoutMs);
        } catch (const Exception&) {
            // The server is away: the messages wait for the next attempt.
            return;
        }
        m_written = 0;
    }
    while (!m_waiting.empty()) {
        // Room first: a message once sent must find its place among the
        // unacknowledged ones.
        m_unacknowledged.emplace_back();
        try {
            m_connection->send(m_waiting.front().data(), m_waiting.front().size(), kSendTimeoutMs);
        } catch (const Exception&) {
            // Part of the message may have gone to a dead connection: a
            // server drops an incomplete frame, so it is sent whole again.
            m_unacknowledged.pop_back();
            dropConnection();
            return;
        }
        m_written += m_waiting.front().size();
        m_unacknowledged.back().bytes.swap(m_waiting.front());
        m_unacknowledged.back().end = m_written;
        m_waiting.pop_front();
    }
}

bool SyslogLogProcessor::flush(int32_t timeoutMs)
{
    if (m_connection->getKind() != net::detail::SyslogConnection::TCP)
        return true;
    const Clock::time_point deadline = Clock::now() + std::chrono::milliseconds(timeoutMs < 0 ? 0 : timeoutMs);
    bool forced = false;
    for (;;) {
        {
            LockHolder hold(m_lock);
            deliver(!forced);
            forced = true;
            if (m_connection->isOpen())
                confirm();
            if (m_waiting.empty() && m_unacknowledged.empty())
                return true;
        }
        if (Clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

int64_t SyslogLogProcessor::getPendingCount() const
{
    LockHolder hold(m_lock);
    return static_cast<int64_t>(m_waiting.size() + m_unacknowledged.size());
}

int64_t SyslogLogProcessor::getDroppedCount() const
{
    LockHolder hold(m_lock);
    return m_dropped;
}

} // namespace log
} // namespace qv
