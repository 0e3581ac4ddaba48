#include "toolkit/core/date_time.h"

#include <ctime>
#include <gtest/gtest.h>
#include <thread>

namespace {

std::time_t seconds_of(const date_time_t& dt) {
    std::tm tm = {};
    tm.tm_year = dt.year - 1900;
    tm.tm_mon = dt.month - 1;
    tm.tm_mday = dt.day;
    tm.tm_hour = dt.hour;
    tm.tm_min = dt.minute;
    tm.tm_sec = dt.second;
    tm.tm_isdst = -1;
    return std::mktime(&tm);
}

TEST(date_time, is_the_local_time_of_now) {
    date_time_t dt;
    const std::time_t before = std::time(nullptr);
    ASSERT_EQ(date_time_init(&dt), &dt);
    const std::time_t after = std::time(nullptr);
    EXPECT_GE(seconds_of(dt), before);
    EXPECT_LE(seconds_of(dt), after);
    EXPECT_GE(dt.year, 2024);
    EXPECT_TRUE(dt.month >= 1 && dt.month <= 12);
    EXPECT_TRUE(dt.day >= 1 && dt.day <= 31);
}

TEST(date_time, null_stays_null) { EXPECT_EQ(date_time_init(nullptr), nullptr); }

TEST(date_time, the_test_clock_stands_until_it_is_taken_out) {
    const date_time_t fixed = {13, 45, 23, 2025, 9, 29};
    date_time_set_test_clock(&fixed);
    date_time_t dt;
    std::thread([&dt] { date_time_init(&dt); }).join();
    EXPECT_EQ(dt.hour, 13);
    EXPECT_EQ(dt.minute, 45);
    EXPECT_EQ(dt.second, 23);
    EXPECT_EQ(dt.year, 2025);
    EXPECT_EQ(dt.month, 9);
    EXPECT_EQ(dt.day, 29);
    date_time_set_test_clock(nullptr);
    date_time_init(&dt);
    EXPECT_GE(seconds_of(dt), std::time(nullptr) - 5);
}

TEST(date_time, the_millisecond_clock_never_goes_back) {
    int64_t last = time_now_ms();
    const int64_t start = last;
    while (last < start + 5) {
        const int64_t now = time_now_ms();
        ASSERT_GE(now, last);
        last = now;
    }
}

} // namespace
