// A step of a session as the progress window shows it.
#pragma once

#include "toolkit/core/date_time.h"

#include <cstdint>
#include <string>

/// Operation codes of a report. A report of 100 % with `connect_failed` is how every failure is shown.
namespace operation {
inline constexpr uint8_t connect = 0;
inline constexpr uint8_t connect_failed = 1;
inline constexpr uint8_t write = 2;
inline constexpr uint8_t read = 3;
inline constexpr uint8_t mode_change = 8;
} // namespace operation

struct progress_report {
    bool window_open; ///< whether a progress window was open when it was made
    uint32_t percent; ///< 0 to 100
    std::string text; ///< of the step
    uint8_t operation;
    int64_t at_ms = time_now_ms(); ///< when it was made
};
