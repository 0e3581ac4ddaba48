#include "bench/page_times.h"

#include "monitor/pages/data_page.h"
#include "shell/navigator.h"
#include "toolkit/ravel/drive.h"
#include "toolkit/table_view/table_view.h"

#include <chrono>
#include <cstdio>
#include <functional>

namespace {

constexpr std::size_t records = 1000000;
constexpr uint32_t patience_ms = 180000;

widget* page() { return navigator_find("data_page"); }
widget* on_page(const char* name) { return widget_lookup(page(), name); }
void click(widget* button) { widget_dispatch_simple_event(button, event_type::click); }

void timed(const char* name, const std::function<void()>& what) {
    using clock = std::chrono::steady_clock;
    const auto from = clock::now();
    what();
    std::printf("%s %.3f\n", name, std::chrono::duration<double, std::milli>(clock::now() - from).count());
    std::fflush(stdout);
}

void show_table() {
    table_client_fill(on_page("table_client"));
    drive_paint(on_page("table_client"));
}

bool leave() {
    click(on_page("button_back"));
    const auto left = [] { return page() == nullptr && data_page_traffic().link() == traffic_link::none; };
    return drive_wait(left, patience_ms);
}

} // namespace

bool page_times() {
    timed("open", [] {
        click(widget_lookup(navigator_find("progress"), "ok"));
        if (drive_wait([] { return page() != nullptr; }, patience_ms)) drive_paint(page());
    });
    if (!drive_wait([] { return data_page_traffic().size() == records; }, patience_ms)) return false;
    timed("pause", [] {
        widget_set_value_int(on_page("check_button_read_puase"), 1);
        widget_dispatch_simple_event(on_page("check_button_read_puase"), event_type::value_changed);
        drive_paint(page());
    });
    drive_wait([] { return false; }, 500);
    timed("scroll", [] {
        table_client_show_row(on_page("table_client"), records - 1);
        show_table();
    });
    if (!leave()) return false;
    timed("open_again", [] {
        navigator_to("data_page");
        drive_paint(page());
    });
    timed("first_paint", show_table);
    if (table_client_get_rows(on_page("table_client")) != records) return false;
    timed("clear", [] {
        click(on_page("button_clear"));
        show_table();
    });
    return table_client_get_rows(on_page("table_client")) == 0;
}
