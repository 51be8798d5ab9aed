#ifndef QV_LOG_TIMESTAMP_H
#define QV_LOG_TIMESTAMP_H

#include <qv/core/Object.h>
#include <qv/lang/String.h>
#include <qvcore3/qvcore3.h>

namespace qv {
namespace log {

// A calendar time to the millisecond, the value of a log entry's
// "timestamp" field.
class QV_EXPORT TimeStamp : public Object {
public:
    // Reads the clock: local time when local is true, UTC otherwise.
    // ResultException with the platform's code when the clock cannot be read.
    explicit TimeStamp(bool local = true);
    explicit TimeStamp(const STRUCT_QV_TIME& time) noexcept;
    // Seconds since the POSIX epoch, as local time.
    explicit TimeStamp(long seconds);
    // As TimeStamp(long): without it, TimeStamp(0) would be ambiguous between
    // the bool and the long constructor.
    explicit TimeStamp(int seconds);
    TimeStamp(const TimeStamp& other) noexcept;
    ~TimeStamp() override;

    const STRUCT_QV_TIME& getTime() const noexcept { return m_time; }

    // The compact sortable form "yyyymmddhhmmss.mmm" (the year unpadded).
    String toLog() const;
    // The user's locale form: the date (long or short), a space, the time.
    // ResultException when the locale formatting fails.
    String toString(bool longDate) const;
    using Object::toString;
    // toString(false).
    String toString() override;
    Object* clone() const override;

private:
    STRUCT_QV_TIME m_time;
};

} // namespace log
} // namespace qv

#endif
