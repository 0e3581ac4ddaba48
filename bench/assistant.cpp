// The assistant's dialog with a full store of 1 MiB: opening it, scrolling it, and how long its thread is away
// while it is saved.
#include "app/application.h"
#include "assistant/pages/serial_send.h"
#include "bench/program_up.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/ravel/drive.h"
#include "toolkit/ravel/ravel.h"
#include "toolkit/ravel/window_manager.h"
#include "toolkit/table_view/table_view.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>

namespace {

constexpr double limit_ms = 16; ///< one picture of the screen
constexpr int openings = 10, scrolls = 200, settling_turns = 50;
constexpr uint32_t patience_ms = 60000;
using clock_type = std::chrono::steady_clock;

double ms_since(clock_type::time_point begin) {
    return std::chrono::duration<double, std::milli>(clock_type::now() - begin).count();
}

widget* dialog() { return navigator_find("serial_send"); }
transcript& transcript_shown() { return serial_send_assistant().log(); }

double open_once() {
    const auto begin = clock_type::now();
    navigator_to("serial_send");
    for (const char* table : {"table_bytes", "table_frames"}) table_client_fill(widget_lookup(dialog(), table));
    return ms_since(begin);
}

/// The best of some.
double opening() {
    double least = open_once();
    for (int i = 1; i < openings; ++i) {
        window_manager_close_window_force(window_manager(), dialog());
        least = std::min(least, open_once());
    }
    return least;
}

/// Every fourth row is a frame: channel 3, extended CAN FD, identifier 0x12345678, data DE AD 01.
void fill_store(std::size_t size) {
    constexpr uint8_t frame[] = {0xAB, 0x0A, 0x03, 0x03, 0x88, 0x78, 0x56,
                                 0x34, 0x12, 0xDE, 0xAD, 0x01, 0x23, 0x3E};
    std::vector<uint8_t> all(size, 0x41);
    for (std::size_t at = 0; at + 64 <= size; at += 64)
        std::ranges::copy(frame, all.begin() + static_cast<long>(at));
    transcript_shown().clear();
    transcript_shown().received(all, time_stamp_now());
    drive_wait([size] { return transcript_shown().counts().frames == size / 64 - 1; }, patience_ms);
}

double slowest_scroll() {
    double slowest = 0;
    widget* table = widget_lookup(dialog(), "table_bytes");
    const uint32_t rows = table_client_get_rows(table);
    for (int i = 0; i < scrolls; ++i) {
        const auto begin = clock_type::now();
        table_client_show_row(table, static_cast<uint32_t>(rows * (i * 77ull % scrolls) / scrolls));
        table_client_fill(table);
        slowest = std::max(slowest, ms_since(begin));
    }
    return slowest;
}

double longest_stall_of_saving() {
    double longest = 0;
    int turns = 0;
    auto last = clock_type::now();
    const uint32_t timer = timer_add(
        [&] {
            if (turns++ > settling_turns) longest = std::max(longest, ms_since(last));
            last = clock_type::now();
            return RET_REPEAT;
        },
        1);
    drive_wait([&turns] { return turns > settling_turns; }, patience_ms); // what was opened is painted
    widget_dispatch_simple_event(widget_lookup(dialog(), "button_save"), event_type::click);
    const auto saved = [] {
        return widget_get_text_utf8(widget_lookup(dialog(), "label_result")).starts_with("已保存");
    };
    const bool done = drive_wait(saved, patience_ms);
    timer_remove(timer);
    return done ? longest : patience_ms;
}

bool verdict(const char* what, double ms) {
    const bool held = ms <= limit_ms;
    std::printf("%8.3fx (of at most %.1f ms) %s %s: %.2f ms\n", ms / limit_ms, limit_ms, held ? "ok  " : "MISS",
                what, ms);
    return held;
}

} // namespace

int main() {
    if (!bench_program_up("bench_assistant")) return 1;
    open_once(); // the threads run from now on
    fill_store(0x1000);
    const double small = opening();
    fill_store(transcript_store_size);
    bool held =
        verdict("a full store of the assistant opened, beyond a small one", std::max(opening() - small, 0.0));
    held = verdict("a full store scrolled, the slowest of 200", slowest_scroll()) && held;
    held = verdict("a full store saved, the window's thread away for", longest_stall_of_saving()) && held;
    for (const auto& file : std::filesystem::directory_iterator("."))
        if (file.path().filename().string().starts_with("serial_send_")) std::filesystem::remove(file.path());
    application_exit();
    tk_exit();
    return held ? 0 : 1;
}
