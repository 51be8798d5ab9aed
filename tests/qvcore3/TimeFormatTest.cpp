#include "TestSupport.h"

#include <gtest/gtest.h>

#include <cstring>
#include <ctime>
#include <string>

namespace {

STRUCT_QV_TIME sample()
{
    STRUCT_QV_TIME t{};
    t.wYear = 2014;
    t.wMonth = 3;
    t.wDay = 5;
    t.wDayOfWeek = 3;
    t.wHour = 7;
    t.wMinute = 8;
    t.wSecond = 9;
    return t;
}

TEST(TimeFormat, LocaleFormsAndFailures)
{
    const STRUCT_QV_TIME t = sample();
    char buffer[200];
    int32_t written = -1;
    ASSERT_EQ(QVTimeFormat(&t, QV_TIME_FORMAT_TIME, buffer, sizeof buffer, &written), QV_S_OK);
    tm broken{};
    broken.tm_year = 114;
    broken.tm_mon = 2;
    broken.tm_mday = 5;
    broken.tm_wday = 3;
    broken.tm_hour = 7;
    broken.tm_min = 8;
    broken.tm_sec = 9;
    char expected[200];
    size_t n = strftime(expected, sizeof expected, "%X", &broken);
    EXPECT_EQ(std::string(buffer, written), std::string(expected, n));
    ASSERT_EQ(QVTimeFormat(&t, QV_TIME_FORMAT_SHORTDATE, buffer, sizeof buffer, &written), QV_S_OK);
    n = strftime(expected, sizeof expected, "%x", &broken);
    EXPECT_EQ(std::string(buffer, written), std::string(expected, n));
    ASSERT_EQ(QVTimeFormat(&t, QV_TIME_FORMAT_LONGDATE, buffer, sizeof buffer, &written), QV_S_OK);
    EXPECT_NE(std::string(buffer, written).find("2014"), std::string::npos);
    EXPECT_EQ(std::strlen(buffer), static_cast<size_t>(written));

    EXPECT_EQ(QVTimeFormat(nullptr, 0, buffer, sizeof buffer, &written), QV_E_POINTER);
    EXPECT_EQ(QVTimeFormat(&t, 0, nullptr, sizeof buffer, &written), QV_E_POINTER);
    EXPECT_EQ(QVTimeFormat(&t, 7, buffer, sizeof buffer, &written), QV_E_INVALIDARG);
    EXPECT_EQ(QVTimeFormat(&t, 0, buffer, 0, &written), QV_E_INVALIDARG);
    EXPECT_EQ(static_cast<uint32_t>(QVTimeFormat(&t, QV_TIME_FORMAT_LONGDATE, buffer, 3, &written)), 0x8007007Au);
    STRUCT_QV_TIME bad = t;
    bad.wHour = 24;
    EXPECT_EQ(QVTimeFormat(&bad, 0, buffer, sizeof buffer, &written), QV_E_INVALIDARG);
}

} // namespace
