// The program's own window with the data page open while a simulated module sends CAN frames: how late the event
// loop is, what all threads of the program cost, whether memory stays flat, and that every byte ends in a row or in
// a count. bench_traffic_window [SECONDS a rate] (15)
#include "app/application.h"
#include "monitor/pages/data_page.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/ravel.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using steady = std::chrono::steady_clock;

constexpr uint32_t probe_ms = 5;
constexpr int32_t patience_ms = 30000;

struct rate_case {
    uint32_t frames_a_second;
    double lag_limit_ms; ///< 99 of 100 turns of the event loop are at most so late
    double cpu_limit;    ///< of one core, all threads of the program; 0: not judged
};
constexpr rate_case rates[] = {{0, 10, 0}, {8000, 10, 0.08}, {40000, 16, 0}};

/// What a silent line costs: that is the probe's, and the waiting loop's around it.
double idle_cpu = 0;

double cpu_seconds() {
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const auto seconds = [](const timeval& t) {
        return static_cast<double>(t.tv_sec) + 1e-6 * static_cast<double>(t.tv_usec);
    };
    return seconds(used.ru_utime) + seconds(used.ru_stime);
}

double resident_mb() {
    std::FILE* file = std::fopen("/proc/self/statm", "r");
    long all = 0;
    long resident = 0;
    if (file == nullptr || std::fscanf(file, "%ld %ld", &all, &resident) != 2) resident = 0;
    if (file != nullptr) std::fclose(file);
    return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1048576;
}

/// The simulated module as a program of its own: what it costs is not the program's.
std::FILE* start_module(const std::string& folder) {
    const std::string ports = folder + "/ports.txt";
    const std::string command = "./vkt_sim COM9=VKT610B > " + ports + " 2>/dev/null";
    std::FILE* sim = popen(command.c_str(), "w");
    for (int i = 0; sim != nullptr && i < 200; ++i) {
        usleep(20000);
        char line[256] = "";
        std::FILE* file = std::fopen(ports.c_str(), "r");
        const bool there = file != nullptr && std::fgets(line, sizeof line, file) != nullptr;
        if (file != nullptr) std::fclose(file);
        const std::string text = line;
        if (!there || !text.starts_with("VKT_COM_PORTS=") || !text.ends_with("\n")) continue;
        setenv("VKT_COM_PORTS", text.substr(14, text.size() - 15).c_str(), 1);
        return sim;
    }
    return nullptr;
}

bool play(const std::string& script) {
    bool ended = false;
    bool good = false;
    drive_play(script, {.echo =
                            [](const std::string& line) {
                                if (line.starts_with("FAIL")) std::fputs(line.c_str(), stdout);
                            },
                        .ended =
                            [&](bool well) {
                                ended = true;
                                good = well;
                            }});
    return drive_wait([&] { return ended; }, patience_ms) && good;
}

bool verdict(double ratio, bool held, const std::string& what) {
    std::printf("%8.3fx %s %s\n", ratio, held ? "ok  " : "MISS", what.c_str());
    return held;
}

bool measure(std::FILE* sim, const rate_case& row, uint32_t seconds) {
    std::fprintf(sim, "traffic COM9 rate=%u:burst=8:types=0:lengths=8-8:check=on\n", row.frames_a_second);
    std::fflush(sim);
    drive_wait([] { return false; }, 1000); // up to speed
    std::vector<double> late_ms;
    late_ms.reserve(seconds * 1000 / probe_ms + 1);
    auto due = steady::now() + std::chrono::milliseconds(probe_ms);
    const uint32_t probe = timer_add(
        [&] {
            const auto now = steady::now();
            late_ms.push_back(std::max(0.0, std::chrono::duration<double, std::milli>(now - due).count()));
            due = now + std::chrono::milliseconds(probe_ms);
            return RET_REPEAT;
        },
        probe_ms);
    const traffic_counters before = data_page_traffic().counters();
    const double memory_before = resident_mb();
    const double cpu_before = cpu_seconds();
    const auto begin = steady::now();
    drive_wait([] { return false; }, static_cast<int32_t>(seconds * 1000));
    const double passed = std::chrono::duration<double>(steady::now() - begin).count();
    const double cpu = (cpu_seconds() - cpu_before) / passed - idle_cpu;
    if (row.frames_a_second == 0) idle_cpu = cpu;
    const double memory = resident_mb();
    const traffic_counters after = data_page_traffic().counters();
    timer_remove(probe);
    std::fprintf(sim, "traffic COM9 rate=0\n");
    std::fflush(sim);

    std::ranges::sort(late_ms);
    const double p99 = late_ms.empty() ? 1e9 : late_ms[late_ms.size() * 99 / 100];
    const uint64_t shown = after.frames_received - before.frames_received;
    const uint64_t lost = after.lost.all() - before.lost.all();
    bool held =
        verdict(p99 / row.lag_limit_ms, p99 <= row.lag_limit_ms,
                tk_format("%u frames/s: event loop p99 %.2f ms late (of at most %.0f), worst %.2f",
                          row.frames_a_second, p99, row.lag_limit_ms, late_ms.empty() ? 0 : late_ms.back()));
    if (row.cpu_limit > 0)
        held = verdict(cpu / row.cpu_limit, cpu <= row.cpu_limit,
                       tk_format("%u frames/s: %.1f %% of a core (of at most %.0f %%)", row.frames_a_second,
                                 cpu * 100, row.cpu_limit * 100)) &&
               held;
    else
        std::printf("          %u frames/s: %.1f %% of a core\n", row.frames_a_second, cpu * 100);
    std::printf("          %.0f frames/s shown, %llu bytes counted as lost, memory %.1f -> %.1f MB\n",
                static_cast<double>(shown) / passed, static_cast<unsigned long long>(lost), memory_before, memory);
    return held;
}

} // namespace

int main(int argc, char** argv) {
    const uint32_t seconds = argc > 1 ? static_cast<uint32_t>(std::max(1, std::atoi(argv[1]))) : 15;
    char folder[] = "/tmp/vkt_bench_XXXXXX";
    if (mkdtemp(folder) == nullptr) return 1;
    std::FILE* sim = start_module(folder);
    if (sim == nullptr) {
        std::fputs("bench_traffic_window: run it in stage/bin, with vkt_sim beside it\n", stderr);
        return 1;
    }
    tk_pre_init();
    if (tk_init(1280, 750, app_type::desktop, "bench", "../res") != RET_OK) return 1;
    system_info_set_default_font("default");
    assets_manager_set_theme("default");
    assets_manager_preload_style();
    tk_init_assets();
    tk_ext_widgets_init();
    application_init();
    bool held = play("pick home_page/combo_box_ex_dev VKT610B\nwait home_page/combo_box_ex_serial option COM9\n"
                     "type home_page/combo_box_ex_serial COM9\nkey Tab\nclick home_page/button\nwait progress/ok "
                     "visible 1 20000\n"
                     "click progress/ok\nclick home_page/button_data\nwait progress/ok visible 1 20000\n"
                     "click progress/ok\nwait data_page/state_word text 传输模式 5000\n");
    if (held)
        for (const rate_case& row : rates) held = measure(sim, row, seconds) && held;
    application_exit();
    tk_exit();
    std::fputs("quit\n", sim);
    pclose(sim);
    std::remove((std::string(folder) + "/ports.txt").c_str());
    rmdir(folder);
    return held ? 0 : 1;
}
