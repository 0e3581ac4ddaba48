#include "toolkit/core/date_time.h"

#include "platform/system.h"
#include "toolkit/core/text.h"

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

/// The test clock's time when there is one, else that of `seconds` since 1970 UTC; true for the latter.
bool read_clock(std::time_t seconds, date_time_t* dt) {
    {
        test_clock_t& clock = test_clock();
        const std::lock_guard<std::mutex> guard(clock.lock);
        if (clock.fixed) {
            *dt = *clock.fixed;
            return false;
        }
    }
    std::tm local = {};
    if (!platform_local_time(seconds, &local)) local = std::tm{};
    dt->hour = local.tm_hour;
    dt->minute = local.tm_min;
    dt->second = local.tm_sec;
    dt->year = local.tm_year + 1900;
    dt->month = local.tm_mon + 1;
    dt->day = local.tm_mday;
    return true;
}

std::chrono::local_days day_of(const date_time_t& dt) {
    return std::chrono::local_days(std::chrono::year(dt.year) / dt.month / dt.day);
}

} // namespace

date_time_t* date_time_init(date_time_t* dt) {
    if (dt != nullptr) read_clock(std::time(nullptr), dt);
    return dt;
}

time_stamp time_stamp_now() {
    using namespace std::chrono;
    const auto now = system_clock::now();
    const auto second = floor<seconds>(now);
    date_time_t dt;
    const bool real = read_clock(system_clock::to_time_t(second), &dt);
    const microseconds local =
        day_of(dt).time_since_epoch() + hours(dt.hour) + minutes(dt.minute) + seconds(dt.second);
    const microseconds part = real ? duration_cast<microseconds>(now - second) : microseconds(0);
    const auto steady = duration_cast<microseconds>(steady_clock::now().time_since_epoch());
    return {(local + part).count(), steady.count()};
}

std::string time_stamp_text(int64_t local_us) {
    using namespace std::chrono;
    const std::chrono::local_time<microseconds> at{microseconds(local_us)};
    const auto day = floor<days>(at);
    const year_month_day date(day);
    const hh_mm_ss time(at - day);
    return tk_format("%04d-%02u-%02u %02d:%02d:%02d", static_cast<int>(date.year()),
                     static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                     static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                     static_cast<int>(time.seconds().count()));
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
