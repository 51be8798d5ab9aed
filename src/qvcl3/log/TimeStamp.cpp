#include <qv/log/TimeStamp.h>

#include <qv/core/Boundary.h>
#include <qv/math/BigDecimal.h>
#include <qv/math/BigInteger.h>

namespace qv {
namespace log {

namespace {

// The locale forms are short; 200 bytes as the original buffers had.
String formatPart(const STRUCT_QV_TIME& time, int32_t part)
{
    char buffer[200];
    int32_t written = 0;
    qvcom::throwIfFailed(QVTimeFormat(&time, part, buffer, static_cast<int32_t>(sizeof buffer), &written));
    return String(buffer, written);
}

} // namespace

TimeStamp::TimeStamp(bool local) : m_time()
{
    qvcom::throwIfFailed(local ? QVTimeGetLocal(&m_time) : QVTimeGetSystem(&m_time));
}

TimeStamp::TimeStamp(const STRUCT_QV_TIME& time) noexcept : m_time(time) {}

TimeStamp::TimeStamp(long seconds) : m_time()
{
    qvcom::throwIfFailed(QVTimeFromPosix(static_cast<int64_t>(seconds), 1, &m_time));
}

TimeStamp::TimeStamp(const TimeStamp& other) noexcept : Object(), m_time(other.m_time) {}

TimeStamp::~TimeStamp() = default;

Object* TimeStamp::clone() const
{
    return new TimeStamp(*this);
}

String TimeStamp::toLog() const
{
    using math::BigInteger;
    // Exact with any field values, so an out-of-range field still prints
    // rather than wrapping.
    const BigInteger hundred(100);
    BigInteger value(static_cast<int>(m_time.wYear));
    value = value * hundred + BigInteger(static_cast<int>(m_time.wMonth));
    value = value * hundred + BigInteger(static_cast<int>(m_time.wDay));
    value = value * hundred + BigInteger(static_cast<int>(m_time.wHour));
    value = value * hundred + BigInteger(static_cast<int>(m_time.wMinute));
    value = value * hundred + BigInteger(static_cast<int>(m_time.wSecond));
    value = value * BigInteger(1000) + BigInteger(static_cast<int>(m_time.wMilliseconds));
    return math::BigDecimal(value, 3).toString();
}

String TimeStamp::toString(bool longDate) const
{
    String text = formatPart(m_time, longDate ? QV_TIME_FORMAT_LONGDATE : QV_TIME_FORMAT_SHORTDATE);
    text.append(u' ');
    text.append(formatPart(m_time, QV_TIME_FORMAT_TIME));
    return text;
}

String TimeStamp::toString() const
{
    return toString(false);
}

} // namespace log
} // namespace qv
