// The table: filling what is visible of it, 25 rows of 8 cells with other texts every time, alone and with
// painting.
#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/ravel.h"
#include "toolkit/table_view/table_view.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <iterator>

namespace {

constexpr double fill_limit_ms = 0.5;
constexpr double paint_limit_ms = 2.0;
constexpr const char* cells[] = {"seq", "time", "source", "id", "kind", "flags", "length", "data"};

widget* table = nullptr;
uint32_t generation = 0; ///< makes every filling another text
uint32_t filled_rows = 0;
double measured_ms[2];

ret_t fill_row(uint32_t index, widget* row) {
    char text[64];
    uint32_t column = 0;
    filled_rows++;
    for (const char* cell : cells) {
        const uint32_t value = (index + generation) * 2654435761u + column++;
        if (column == std::size(cells)) {
            std::snprintf(text, sizeof text, "%02X %02X %02X %02X %08X", value & 255, value >> 8 & 255,
                          value >> 16 & 255, value >> 24, value);
        } else {
            std::snprintf(text, sizeof text, "%u", value % 1000000);
        }
        widget_set_text_utf8(widget_child(row, cell), text);
    }
    return RET_OK;
}

void fill(benchmark::State& state) {
    for (auto _ : state) {
        generation++;
        table_client_fill(table);
    }
}

void fill_and_paint(benchmark::State& state) {
    for (auto _ : state) {
        generation++;
        table_client_fill(table);
        drive_paint(table);
    }
}

/// Google Benchmark's own lines, and the times for the verdicts.
class reporter : public benchmark::ConsoleReporter {
  public:
    void ReportRuns(const std::vector<Run>& runs) override {
        for (const Run& run : runs)
            measured_ms[run.benchmark_name() == "table_fill" ? 0 : 1] = run.GetAdjustedRealTime();
        ConsoleReporter::ReportRuns(runs);
    }
};

bool verdict(double ms, double limit, const char* what) {
    const bool held = ms > 0 && ms <= limit;
    std::printf("%8.3fx (of at most %.1f ms) %s table, %s: %.4f ms\n", ms / limit, limit, held ? "ok  " : "MISS",
                what, ms);
    return held;
}

} // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    tk_pre_init();
    if (tk_init(1000, 700, app_type::desktop, "bench", TABLE_TREE) != RET_OK) return 1;
    system_info_set_default_font("default");
    assets_manager_preload_style();
    table_view_register();
    table = widget_need(window_open("table"), "table_client");
    if (table == nullptr) return 1;
    table_client_set_on_load_data(table, fill_row);
    table_client_set_rows(table, 100000);
    drive_wait([] { return filled_rows > 0; }, 5000);
    filled_rows = 0;
    table_client_fill(table);
    std::printf("%u rows of %zu cells\n", filled_rows, std::size(cells));
    benchmark::RegisterBenchmark("table_fill", fill)->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark("table_fill_and_paint", fill_and_paint)->Unit(benchmark::kMillisecond);
    reporter lines;
    benchmark::RunSpecifiedBenchmarks(&lines);
    const bool good = verdict(measured_ms[0], fill_limit_ms, "25 rows filled");
    const bool painted = verdict(measured_ms[1], paint_limit_ms, "filled and painted");
    tk_exit();
    return good && painted ? 0 : 1;
}
