// The time of day in tests.
#pragma once

#include "toolkit/core/date_time.h"

inline constexpr date_time_t fixed_time = {
    .hour = 13, .minute = 5, .second = 9, .year = 2025, .month = 9, .day = 29};
