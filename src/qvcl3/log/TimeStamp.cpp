#include <qv/log/TimeStamp.h>

#include <qv/core/Boundary.h>

#include <charconv>

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

TimeStamp::TimeStamp(int seconds) : TimeStamp(static_cast<long>(seconds)) {}

TimeStamp::TimeStamp(const TimeStamp& other) noexcept : Object(), m_time(other.m_time) {}

TimeStamp::~TimeStamp() = default;

Object* TimeStamp::clone() const
{
    return new TimeStamp(*this);
}

String TimeStamp::toLog() const
{
    // The fields are read as one decimal number, yyyymmddhhmmss then three
    // digits of milliseconds, so a field out of its calendar range still
    // prints (carrying into the field before it) rather than wrapping. With
    // 16-bit fields the total stays below 2^63.
    uint64_t value = m_time.wYear;
    value = value * 100 + m_time.wMonth;
    value = value * 100 + m_time.wDay;
    value = value * 100 + m_time.wHour;
    value = value * 100 + m_time.wMinute;
    value = value * 100 + m_time.wSecond;
    value = value * 1000 + m_time.wMilliseconds;
    char text[32];
    char* end = std::to_chars(text, text + sizeof text - 4, value / 1000).ptr;
    const unsigned fraction = static_cast<unsigned>(value % 1000);
    *end++ = '.';
    *end++ = static_cast<char>('0' + fraction / 100);
    *end++ = static_cast<char>('0' + fraction / 10 % 10);
    *end++ = static_cast<char>('0' + fraction % 10);
    char16_t units[sizeof text];
    const int32_t length = static_cast<int32_t>(end - text);
    for (int32_t i = 0; i < length; ++i)
        units[i] = static_cast<char16_t>(text[i]);
    return String(units, length);
}

String TimeStamp::toString(bool longDate) const
{
    String text = formatPart(m_time, longDate ? QV_TIME_FORMAT_LONGDATE : QV_TIME_FORMAT_SHORTDATE);
    text.append(u' ');
    text.append(formatPart(m_time, QV_TIME_FORMAT_TIME));
    return text;
}

String TimeStamp::toString()
{
    return toString(false);
}

} // namespace log
} // namespace qv
