#include "toolkit/core/date_time.h"

#include "toolkit/core/text.h"

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

TEST(time_stamp_now, is_now_on_both_clocks) {
    date_time_t before;
    date_time_t after;
    date_time_init(&before);
    const int64_t steady_before = time_now_ms();
    const time_stamp stamp = time_stamp_now();
    const int64_t steady_after = time_now_ms();
    date_time_init(&after);
    const auto text = [](const date_time_t& dt) {
        return tk_format("%04d-%02d-%02d %02d:%02d:%02d", dt.year, dt.month, dt.day, dt.hour, dt.minute, dt.second);
    };
    EXPECT_GE(time_stamp_text(stamp.local_us), text(before));
    EXPECT_LE(time_stamp_text(stamp.local_us), text(after));
    EXPECT_GE(stamp.steady_us / 1000, steady_before);
    EXPECT_LE(stamp.steady_us / 1000, steady_after);
}

TEST(time_stamp_now, has_microseconds) {
    const int64_t end = time_now_ms() + 5000;
    while (time_stamp_now().local_us % 1000 == 0) ASSERT_LT(time_now_ms(), end);
}

TEST(time_stamp_now, the_test_clock_stands) {
    const date_time_t fixed = {13, 45, 23, 2025, 9, 29};
    date_time_set_test_clock(&fixed);
    const time_stamp stamp = time_stamp_now();
    date_time_set_test_clock(nullptr);
    EXPECT_EQ(stamp.local_us, 1759153523000000);
    EXPECT_GT(stamp.steady_us, 0);
}

TEST(time_stamp_text, two_digits_each_and_four_of_the_year) {
    EXPECT_EQ(time_stamp_text(0), "1970-01-01 00:00:00");
    EXPECT_EQ(time_stamp_text(1759153523999999), "2025-09-29 13:45:23");
    EXPECT_EQ(time_stamp_text(1709164799000000), "2024-02-28 23:59:59");
    EXPECT_EQ(time_stamp_text(1709164800000000), "2024-02-29 00:00:00");
    EXPECT_EQ(time_stamp_text(-1), "1969-12-31 23:59:59");
}

} // namespace
