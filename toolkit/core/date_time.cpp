#include "toolkit/core/date_time.h"

#include "platform/system.h"

#include <chrono>
#include <ctime>
#include <mutex>
#include <optional>

namespace {

struct test_clock_t {
    std::mutex lock;
    std::optional<date_time_t> fixed;
};

test_clock_t& test_clock() {
    static test_clock_t* const the_clock = new test_clock_t;
    return *the_clock;
}

} // namespace

date_time_t* date_time_init(date_time_t* dt) {
    if (dt == nullptr) return nullptr;
    {
        test_clock_t& clock = test_clock();
        const std::lock_guard<std::mutex> guard(clock.lock);
        if (clock.fixed) {
            *dt = *clock.fixed;
            return dt;
        }
    }
    std::tm local = {};
    if (!platform_local_time(std::time(nullptr), &local)) local = std::tm{};
    dt->hour = local.tm_hour;
    dt->minute = local.tm_min;
    dt->second = local.tm_sec;
    dt->year = local.tm_year + 1900;
    dt->month = local.tm_mon + 1;
    dt->day = local.tm_mday;
    return dt;
}

void date_time_set_test_clock(const date_time_t* fixed) {
    test_clock_t& clock = test_clock();
    const std::lock_guard<std::mutex> guard(clock.lock);
    if (fixed != nullptr) {
        clock.fixed = *fixed;
    } else {
        clock.fixed.reset();
    }
}

int64_t time_now_ms() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}
