// One page edit: store, image, check byte, code view, marks, list, line of truth; and many steps taken back.
#include "app/application.h"
#include "app/edits.h"
#include "bench/program_up.h"
#include "platform/com_port.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/ravel/ravel.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdio>

namespace {

constexpr int undone_steps = 500;
constexpr double undone_limit_ms = 50;

constexpr double limit_ms = 0.3;
double measured_ms = 0;

// The combo box changes as by a pick, and its handlers run.
void page_edit(benchmark::State& state) {
    widget* page = widget_lookup(navigator_find("home_page"), "page_change");
    widget* mode = widget_lookup(page, "combo_box_ex");
    int32_t value = 1;
    for (auto _ : state) {
        value = 3 - value;
        widget_set_value_int(mode, value);
        widget_dispatch_simple_event(mode, event_type::value_changed);
    }
}

/// All that the log keeps, taken back one by one; the best of three times, in milliseconds.
double undo_all() {
    widget* home = navigator_find("home_page");
    widget* mode = widget_lookup(widget_lookup(home, "page_change"), "combo_box_ex");
    double best = 1e9;
    for (int turn = 0; turn < 3; ++turn) {
        for (int i = 0; i < undone_steps; ++i) {
            widget_set_value_int(mode, 1 + i % 2);
            widget_dispatch_simple_event(mode, event_type::value_changed);
        }
        const auto began = std::chrono::steady_clock::now();
        int undone = 0;
        while (undone < undone_steps && edits_undo(home) == RET_OK) ++undone;
        idle_dispatch();
        const std::chrono::duration<double, std::milli> took = std::chrono::steady_clock::now() - began;
        if (undone < undone_steps - 1) return 1e9; // the first pick may have changed nothing
        best = std::min(best, took.count());
    }
    return best;
}

/// Every page has been shown, so all of them carry marks.
void show_pages() {
    widget* home = navigator_find("home_page");
    for (const char* tab : {"table_button_spi", "table_button_uart", "table_button_can", "table_button_change"}) {
        widget_set_value_int(widget_lookup(home, tab), 1);
        widget_dispatch_simple_event(widget_lookup(home, tab), event_type::value_changed);
    }
}

/// Google Benchmark's own lines, and the time of the last run for the verdict.
class reporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs) measured_ms = run.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
};

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (!bench_program_up("bench_page_edit")) return 1;
    show_pages();
    benchmark::RegisterBenchmark("page_edit", page_edit)->Unit(benchmark::kMillisecond);
    reporter lines;
    benchmark::RunSpecifiedBenchmarks(&lines);
    const bool held = measured_ms > 0 && measured_ms <= limit_ms;
    std::printf("%8.3fx (of at most %.1f ms) %s one page edit: %.4f ms\n", measured_ms / limit_ms, limit_ms,
                held ? "ok  " : "MISS", measured_ms);
    const double undone_ms = undo_all();
    const bool undone = undone_ms <= undone_limit_ms;
    std::printf("%8.3fx (of at most %.0f ms) %s %d steps taken back: %.1f ms\n", undone_ms / undone_limit_ms,
                undone_limit_ms, undone ? "ok  " : "MISS", undone_steps, undone_ms);
    application_exit();
    tk_exit();
    return held && undone ? 0 : 1;
}
