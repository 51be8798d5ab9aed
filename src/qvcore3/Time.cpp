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

QVRESULT Now(bool local, STRUCT_QV_TIME* time) noexcept
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return Convert(now.tv_sec, static_cast<uint32_t>(now.tv_nsec / 1000000), local, time);
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
