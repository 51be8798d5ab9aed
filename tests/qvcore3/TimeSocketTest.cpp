#include "TestSupport.h"

#include <gtest/gtest.h>
#include <netdb.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <string>
#include <time.h>

namespace {

// Every field of a time: "YYYY-MM-DD (day of week) hh:mm:ss.mmm".
std::string Fields(const STRUCT_QV_TIME& t)
{
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d (%d) %02d:%02d:%02d.%03d", t.wYear, t.wMonth, t.wDay, t.wDayOfWeek,
                  t.wHour, t.wMinute, t.wSecond, t.wMilliseconds);
    return text;
}

TEST(Time, FromPosixInUtc)
{
    STRUCT_QV_TIME t{};
    ASSERT_EQ(QVTimeFromPosix(0, 0, &t), QV_S_OK);
    EXPECT_EQ(Fields(t), "1970-01-01 (4) 00:00:00.000"); // a Thursday, 0 is Sunday
    ASSERT_EQ(QVTimeFromPosix(951782400 + 3723, 0, &t), QV_S_OK);
    EXPECT_EQ(Fields(t), "2000-02-29 (2) 01:02:03.000");
    EXPECT_EQ(QVTimeFromPosix(INT64_MAX, 0, &t), QV_E_INVALIDARG);
    EXPECT_EQ(QVTimeFromPosix(-100000000000LL, 1, &t), QV_E_INVALIDARG); // before year 0
    EXPECT_EQ(QVTimeFromPosix(0, 0, nullptr), QV_E_POINTER);
}

// Within a generous window of the clock the test reads itself.
TEST(Time, NowMatchesTheClock)
{
    STRUCT_QV_TIME system{};
    STRUCT_QV_TIME local{};
    STRUCT_QV_TIME expected{};
    STRUCT_QV_TIME expectedLocal{};
    const int64_t now = static_cast<int64_t>(std::time(nullptr));
    ASSERT_EQ(QVTimeGetSystem(&system), QV_S_OK);
    ASSERT_EQ(QVTimeGetLocal(&local), QV_S_OK);
    ASSERT_EQ(QVTimeFromPosix(now, 0, &expected), QV_S_OK);
    ASSERT_EQ(QVTimeFromPosix(now, 1, &expectedLocal), QV_S_OK);
    auto minutes = [](const STRUCT_QV_TIME& t) { return ((t.wDay * 24 + t.wHour) * 60 + t.wMinute) * 60 + t.wSecond; };
    EXPECT_LE(std::abs(minutes(system) - minutes(expected)), 5);
    EXPECT_LE(std::abs(minutes(local) - minutes(expectedLocal)), 5);
    EXPECT_EQ(system.wYear, expected.wYear);
    EXPECT_LT(system.wMilliseconds, 1000);
    EXPECT_LT(system.wDayOfWeek, 7);
}

// Readings within one second share their conversion; a change of zone in
// between must still show, and the milliseconds must keep moving.
TEST(Time, LocalReadingsFollowAZoneChangeWithinASecond)
{
    const char* saved = std::getenv("TZ");
    const std::string previous = saved ? saved : "";
    auto hourOf = [](const char* zone) {
        setenv("TZ", zone, 1);
        tzset();
        // Local readings only, one after the other, as a logger makes them.
        STRUCT_QV_TIME local{};
        EXPECT_EQ(QVTimeGetLocal(&local), QV_S_OK);
        const time_t now = std::time(nullptr);
        tm utc{};
        gmtime_r(&now, &utc);
        // Hours east of UTC, 0..23, whichever reading crossed a second.
        return ((local.wHour - utc.tm_hour) % 24 + 24) % 24;
    };
    int eastOfUtc[3] = {};
    for (int attempt = 0; attempt < 3; ++attempt) {
        eastOfUtc[0] = hourOf("UTC0");
        eastOfUtc[1] = hourOf("QVA-5");
        eastOfUtc[2] = hourOf("UTC0");
        if (eastOfUtc[0] == 0 && eastOfUtc[1] == 5 && eastOfUtc[2] == 0)
            break;
    }
    EXPECT_EQ(eastOfUtc[0], 0);
    EXPECT_EQ(eastOfUtc[1], 5);
    EXPECT_EQ(eastOfUtc[2], 0);

    STRUCT_QV_TIME first{};
    STRUCT_QV_TIME later{};
    ASSERT_EQ(QVTimeGetLocal(&first), QV_S_OK);
    const timespec pause{0, 30 * 1000 * 1000};
    nanosleep(&pause, nullptr);
    ASSERT_EQ(QVTimeGetLocal(&later), QV_S_OK);
    auto milliseconds = [](const STRUCT_QV_TIME& t) { return (t.wMinute * 60 + t.wSecond) * 1000 + t.wMilliseconds; };
    const int elapsed = ((milliseconds(later) - milliseconds(first)) % 3600000 + 3600000) % 3600000;
    EXPECT_GE(elapsed, 25);
    EXPECT_LT(elapsed, 5000);

    if (saved)
        setenv("TZ", previous.c_str(), 1);
    else
        unsetenv("TZ");
    tzset();
}

TEST(SocketError, ErrnoTable)
{
    const std::pair<int, int32_t> table[] = {
        {EINTR, 10004},           {EBADF, 10009},           {EACCES, 10013},
        {EFAULT, 10014},          {EINVAL, 10022},          {EMFILE, 10024},
        {EWOULDBLOCK, 10035},     {EAGAIN, 10035},          {EINPROGRESS, 10036},
        {EALREADY, 10037},        {ENOTSOCK, 10038},        {EDESTADDRREQ, 10039},
        {EMSGSIZE, 10040},        {EPROTOTYPE, 10041},      {ENOPROTOOPT, 10042},
        {EPROTONOSUPPORT, 10043}, {ESOCKTNOSUPPORT, 10044}, {EOPNOTSUPP, 10045},
        {EPFNOSUPPORT, 10046},    {EAFNOSUPPORT, 10047},    {EADDRINUSE, 10048},
        {EADDRNOTAVAIL, 10049},   {ENETDOWN, 10050},        {ENETUNREACH, 10051},
        {ENETRESET, 10052},       {ECONNABORTED, 10053},    {ECONNRESET, 10054},
        {ENOBUFS, 10055},         {EISCONN, 10056},         {ENOTCONN, 10057},
        {ESHUTDOWN, 10058},       {ETOOMANYREFS, 10059},    {ETIMEDOUT, 10060},
        {ECONNREFUSED, 10061},    {ELOOP, 10062},           {ENAMETOOLONG, 10063},
        {EHOSTDOWN, 10064},       {EHOSTUNREACH, 10065},    {ENOTEMPTY, 10066},
        {EUSERS, 10068},          {EDQUOT, 10069},          {ESTALE, 10070},
        {EREMOTE, 10071},         {ECANCELED, 10103},       {0, 0},
        {ENOENT, ENOENT},         {EPIPE, EPIPE},
    };
    for (const auto& entry : table) {
        EXPECT_EQ(QVSocketErrorFromErrno(entry.first), entry.second) << entry.first;
    }
    errno = ECONNREFUSED;
    EXPECT_EQ(QVLastNativeSocketError(), 10061);
    EXPECT_EQ(QVSocketLayerStartup(), QV_S_OK);
    EXPECT_EQ(QVSocketLayerShutdown(), 0);
}

TEST(SocketError, ResolverTable)
{
    const std::pair<int, int32_t> table[] = {
        {EAI_MEMORY, 2008},           {EAI_BADFLAGS, 12022},
        {EAI_SOCKTYPE, 12044},        {EAI_FAMILY, 12047},
        {EAI_SERVICE, 12109},         {EAI_NONAME, 13001},
        {EAI_AGAIN, 13002},           {EAI_FAIL, 13003},
        {EAI_NODATA, 14001},          {0, 0},
        {EAI_OVERFLOW, EAI_OVERFLOW},
    };
    for (const auto& entry : table) {
        EXPECT_EQ(QVSocketErrorFromEai(entry.first), entry.second) << entry.first;
    }
    errno = ETIMEDOUT;
    EXPECT_EQ(QVSocketErrorFromEai(EAI_SYSTEM), 10060);
}

} // namespace
