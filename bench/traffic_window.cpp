// The program's own window with the data page open on COM9: how late its event loop is while CAN frames come in,
// and what became of every byte. bench_traffic runs it beside a simulated module and measures what it costs.
//
//   bench_traffic_window SECONDS   prints "begin", and after so many seconds "end LATE_P99_MS LATE_WORST_MS FRAMES
//                                  LOST_BYTES"; when no more comes in, "all BYTES_READ FRAMES LOST_BYTES
//                                  PURGED_BYTES" since the page opened
//   bench_traffic_window page      prints what single things take with a million records, see page_times.h
#include "app/application.h"
#include "bench/page_times.h"
#include "bench/program_up.h"
#include "monitor/pages/data_page.h"
#include "toolkit/core/idle.h"
#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/ravel.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

namespace {

using steady = std::chrono::steady_clock;

constexpr uint32_t probe_ms = 5;
constexpr uint32_t up_to_speed_ms = 1500;
constexpr uint32_t patience_ms = 60000;

bool play(const std::string& script) {
    bool ended = false;
    bool good = false;
    const auto echo = [](const std::string& line) {
        if (line.starts_with("FAIL")) std::fputs(line.c_str(), stderr);
    };
    const auto end = [&](bool well) {
        ended = true;
        good = well;
    };
    drive_play(script, {.echo = echo, .ended = end});
    return drive_wait([&] { return ended; }, patience_ms) && good;
}

void wait_ms(uint32_t ms) {
    drive_wait([] { return false; }, ms);
}

/// How late each turn of a timer came, in milliseconds, in order of size.
std::vector<double> lateness(uint32_t seconds) {
    std::vector<double> late;
    late.reserve(seconds * 1000 / probe_ms + 1);
    auto due = steady::now() + std::chrono::milliseconds(probe_ms);
    const uint32_t probe = timer_add(
        [&] {
            const auto now = steady::now();
            late.push_back(std::max(0.0, std::chrono::duration<double, std::milli>(now - due).count()));
            due = now + std::chrono::milliseconds(probe_ms);
            return RET_REPEAT;
        },
        probe_ms);
    wait_ms(seconds * 1000);
    timer_remove(probe);
    std::ranges::sort(late);
    return late;
}

/// Until the module, which is stopped now, has had its say.
void wait_quiet() {
    constexpr auto quiet = std::chrono::milliseconds(500);
    uint64_t seen = 0;
    auto since = steady::now();
    const auto done = [&] {
        const uint64_t now = data_page_traffic().counters().bytes_read;
        if (std::exchange(seen, now) != now) since = steady::now();
        return steady::now() - since > quiet;
    };
    drive_wait(done, patience_ms);
}

bool measure(uint32_t seconds) {
    wait_ms(up_to_speed_ms);
    const traffic_counters before = data_page_traffic().counters();
    std::puts("begin");
    std::fflush(stdout);
    const std::vector<double> late = lateness(seconds);
    const traffic_counters after = data_page_traffic().counters();
    const double p99 = late.empty() ? 1e9 : late[late.size() * 99 / 100];
    std::printf("end %.3f %.3f %llu %llu\n", p99, late.empty() ? 1e9 : late.back(),
                static_cast<unsigned long long>(after.frames_received - before.frames_received),
                static_cast<unsigned long long>(after.lost.all() - before.lost.all()));
    std::fflush(stdout);
    wait_quiet();
    const traffic_counters all = data_page_traffic().counters();
    const uint64_t purged = all.lost[traffic_loss::purged];
    std::printf("all %llu %llu %llu %llu\n", static_cast<unsigned long long>(all.bytes_read),
                static_cast<unsigned long long>(all.frames_received),
                static_cast<unsigned long long>(all.lost.all() - purged), static_cast<unsigned long long>(purged));
    return true;
}

} // namespace

int main(int argc, char** argv) {
    const std::string what = argc > 1 ? argv[1] : "";
    const int seconds = std::atoi(what.c_str());
    if ((seconds < 1 && what != "page") || !bench_program_up("bench_traffic_window")) {
        std::fputs("bench_traffic_window: needs SECONDS or page; bench_traffic runs it\n", stderr);
        return 1;
    }
    bool good =
        play("pick home_page/combo_box_ex_dev VKT610B\nwait home_page/combo_box_ex_serial option COM9 20000\n"
             "type home_page/combo_box_ex_serial COM9\nkey Tab\nclick home_page/button\n"
             "wait progress/ok visible 1 20000\nclick progress/ok\nclick home_page/button_data\n"
             "wait progress/ok visible 1 20000\n");
    if (good && seconds < 1) good = page_times();
    if (good && seconds > 0)
        good = play("click progress/ok\nwait data_page/state_word text 传输模式 5000\n") &&
               measure(static_cast<uint32_t>(seconds));
    application_exit();
    tk_exit();
    return good ? 0 : 1;
}
