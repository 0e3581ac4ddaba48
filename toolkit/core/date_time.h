// Local date and time.
#pragma once

#include <cstdint>
#include <string>

struct date_time_t {
    int32_t hour = 0;   ///< 0 to 23
    int32_t minute = 0; ///< 0 to 59
    int32_t second = 0; ///< 0 to 60
    int32_t year = 0;   ///< for example 2025
    int32_t month = 0;  ///< 1 to 12
    int32_t day = 0;    ///< 1 to 31
};

/// Fills `dt` with the current local time (or with the test clock's). Returns `dt`, null for null. Any thread.
date_time_t* date_time_init(date_time_t* dt);

/// Test aid: date_time_init answers `fixed` from now on; null restores the system's clock.
void date_time_set_test_clock(const date_time_t* fixed);

/// Milliseconds of a clock that never goes back. Any thread.
int64_t time_now_ms();

/// One moment on two clocks.
struct time_stamp {
    int64_t local_us = 0;  ///< microseconds of local time since 1970-01-01 00:00:00 local time
    int64_t steady_us = 0; ///< microseconds of the clock that never goes back
};
/// Now. The test clock stands for the local time, without microseconds. Any thread.
time_stamp time_stamp_now();
/// "2025-09-29 13:05:09" for microseconds of local time. Any thread.
std::string time_stamp_text(int64_t local_us);
