#include "FaultInjection.h"

#include <time.h>

namespace {

// Years STRUCT_QV_TIME cannot hold are invalid arguments.
QVRESULT Fill(const tm& broken, uint32_t milliseconds, STRUCT_QV_TIME* time) noexcept
{
    const long year = static_cast<long>(broken.tm_year) + 1900;
    if (year < 0 || year > 0xFFFF) {
        return QV_E_INVALIDARG;
    }
    time->wYear = static_cast<uint16_t>(year);
    time->wMonth = static_cast<uint16_t>(broken.tm_mon + 1);
    time->wDayOfWeek = static_cast<uint16_t>(broken.tm_wday);
    time->wDay = static_cast<uint16_t>(broken.tm_mday);
    time->wHour = static_cast<uint16_t>(broken.tm_hour);
    time->wMinute = static_cast<uint16_t>(broken.tm_min);
    // A leap second (60) is folded into the second before it.
    time->wSecond = static_cast<uint16_t>(broken.tm_sec > 59 ? 59 : broken.tm_sec);
    time->wMilliseconds = static_cast<uint16_t>(milliseconds);
    return QV_S_OK;
}

QVRESULT Convert(time_t seconds, uint32_t milliseconds, bool local, STRUCT_QV_TIME* time) noexcept
{
    tm broken{};
    if ((local ? localtime_r(&seconds, &broken) : gmtime_r(&seconds, &broken)) == nullptr) {
        return QV_E_INVALIDARG;
    }
    return Fill(broken, milliseconds, time);
}

// The last second a thread converted. Local conversion takes the C
// library's time zone lock and walks the zone's transitions, and loggers
// stamp many entries a second: the other readings of the same second reuse
// it with their own milliseconds. Zone changes happen on whole seconds; the
// zone's names and offsets (which tzset() sets) are part of the key, so a
// switch to another zone is seen at once.
struct ConvertedSecond {
    bool valid;
    bool local;
    time_t seconds;
    const char* names[2];
    long zone;
    int daylight;
    tm broken;

    bool matches(time_t wanted, bool wantLocal) const noexcept
    {
        return valid && seconds == wanted && local == wantLocal && names[0] == tzname[0] && names[1] == tzname[1] &&
               zone == timezone && daylight == ::daylight;
    }
};

thread_local ConvertedSecond t_lastSecond{};

QVRESULT Now(bool local, STRUCT_QV_TIME* time) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const uint32_t milliseconds = static_cast<uint32_t>(now.tv_nsec / 1000000);
    ConvertedSecond& last = t_lastSecond;
    if (last.matches(now.tv_sec, local)) {
        return Fill(last.broken, milliseconds, time);
    }
    tm broken{};
    if ((local ? localtime_r(&now.tv_sec, &broken) : gmtime_r(&now.tv_sec, &broken)) == nullptr) {
        return QV_E_INVALIDARG;
    }
    const QVRESULT filled = Fill(broken, milliseconds, time);
    if (filled == QV_S_OK) {
        // Read after the conversion, which may have set the zone up.
        last = ConvertedSecond{true, local, now.tv_sec, {tzname[0], tzname[1]}, timezone, ::daylight, broken};
    }
    return filled;
}

} // namespace

extern "C" QVRESULT QVTimeGetLocal(STRUCT_QV_TIME* time) noexcept
{
    if (!time) {
        return QV_E_POINTER;
    }
    QV_FAULT_POINT(QVTimeGetLocal);
    return Now(true, time);
}

extern "C" QVRESULT QVTimeGetSystem(STRUCT_QV_TIME* time) noexcept
{
    if (!time) {
        return QV_E_POINTER;
    }
    QV_FAULT_POINT(QVTimeGetSystem);
    return Now(false, time);
}

extern "C" QVRESULT QVTimeFromPosix(int64_t seconds, int32_t local, STRUCT_QV_TIME* time) noexcept
{
    if (!time) {
        return QV_E_POINTER;
    }
    QV_FAULT_POINT(QVTimeFromPosix);
    return Convert(static_cast<time_t>(seconds), 0, local != 0, time);
}

extern "C" QVRESULT QVTimeFormat(const STRUCT_QV_TIME* time, int32_t part, char* buffer, int32_t capacity,
                                 int32_t* written) noexcept
{
    if (!time || !buffer || !written) {
        return QV_E_POINTER;
    }
    if (capacity <= 0 || time->wMonth < 1 || time->wMonth > 12 || time->wDay < 1 || time->wDay > 31 ||
        time->wDayOfWeek > 6 || time->wHour > 23 || time->wMinute > 59 || time->wSecond > 60) {
        return QV_E_INVALIDARG;
    }
    const char* format = nullptr;
    switch (part) {
    case QV_TIME_FORMAT_TIME: format = "%X"; break;
    case QV_TIME_FORMAT_SHORTDATE: format = "%x"; break;
    case QV_TIME_FORMAT_LONGDATE:
        // The C library has no long date of the locale; this form takes the
        // locale's names for the weekday and the month.
        format = "%A, %d %B %Y";
        break;
    default: return QV_E_INVALIDARG;
    }
    QV_FAULT_POINT(QVTimeFormat);
    tm broken{};
    broken.tm_year = static_cast<int>(time->wYear) - 1900;
    broken.tm_mon = time->wMonth - 1;
    broken.tm_mday = time->wDay;
    broken.tm_wday = time->wDayOfWeek;
    broken.tm_hour = time->wHour;
    broken.tm_min = time->wMinute;
    broken.tm_sec = time->wSecond;
    broken.tm_isdst = -1;
    const size_t length = strftime(buffer, static_cast<size_t>(capacity), format, &broken);
    // Every form above yields at least one character, so 0 means no room.
    if (length == 0) {
        buffer[0] = '\0';
        return static_cast<QVRESULT>(0x8007007A);
    }
    *written = static_cast<int32_t>(length);
    return QV_S_OK;
}
