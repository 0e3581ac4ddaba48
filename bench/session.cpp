// A whole read and a whole write against a module paced at 9600 8N2, beside the time that their bytes need on the
// wire.
#include "dev_generic/family.h"
#include "sim/module.h"
#include "toolkit/core/date_time.h"
#include "toolkit/core/idle.h"

#include <algorithm>
#include <cstdio>
#include <vector>

namespace {

constexpr double bits_per_byte = 11; // start, eight data, two stop bits
constexpr double bits_per_second = 9600;
constexpr int rounds = 9;
constexpr double limit = 1.03;
constexpr uint32_t patience_ms = 20000;

struct measured {
    session_kind kind;
    const char* what;
    int bytes; // both ways
};
constexpr measured sessions[] = {
    {session_kind::read, "read: 5 bytes out, 65 in", 70},
    {session_kind::write, "write: 65 bytes out, 6 in", 71},
};

bool finished = false;
bool failed = false;

session_reports reports() {
    const auto post = [](bool* flag) {
        idle_queue([flag] {
            *flag = true;
            return RET_OK;
        });
    };
    session_reports out;
    out.finished = [post](uint32_t) { post(&finished); };
    out.failed = [post](const session_failure&) { post(&failed); };
    return out;
}

dev_obj& device() {
    static const family_descriptor* const families[] = {&generic_family};
    static const auto dev = dev_open(families, "VKT531A", reports());
    return *dev;
}

bool run(session_kind kind) {
    finished = failed = false;
    session_input input = dev_session_input(device(), kind, false);
    input.port_text = "COM7";
    if (device().session.start(kind, std::move(input)) != RET_OK) return false;
    const bool ended = idle_run_until([] { return finished || failed; }, patience_ms);
    device().session.join(device().session.last_run());
    return ended && !failed;
}

double median_ms(session_kind kind) {
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) {
        const int64_t begin = time_now_ms();
        if (!run(kind)) return -1;
        times.push_back(static_cast<double>(time_now_ms() - begin));
    }
    std::nth_element(times.begin(), times.begin() + rounds / 2, times.end());
    return times[rounds / 2];
}

bool print(const measured& m) {
    const double wire_ms = m.bytes * bits_per_byte / bits_per_second * 1000;
    const double took_ms = median_ms(m.kind);
    if (took_ms < 0) {
        std::printf("     MISS %s: the session failed\n", m.what);
        return false;
    }
    const bool held = took_ms <= wire_ms * limit;
    std::printf("%8.3fx (at most %.2fx) %s %s: %.0f ms, on the wire %.1f ms\n", took_ms / wire_ms, limit,
                held ? "ok  " : "MISS", m.what, took_ms, wire_ms);
    return held;
}

} // namespace

int main() {
    idle_set_gui_thread();
    session_log_path() = "bench_session_log.txt";
    const auto module = sim::module_start(sim::model::vkt531a, "COM7");
    if (module == nullptr || !run(session_kind::connect)) {
        std::fputs("bench_session: no connection to the simulated module\n", stderr);
        return 1;
    }
    module->set_paced(true);
    bool good = true;
    for (const measured& m : sessions) good = print(m) && good;
    device().session.drop();
    std::remove("bench_session_log.txt");
    return good ? 0 : 1;
}
