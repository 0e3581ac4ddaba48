#include "app/port_selector.h"

#include "serial/port_list.h"
#include "shell/err_display.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"

#include <string>
#include <utility>
#include <vector>

namespace {

// A list arrives entry by entry. It is put into the selector as a whole when no entry has come for this long, so
// that an open popup never runs empty.
constexpr uint32_t settle_ms = 50;

using options = std::vector<std::pair<int32_t, std::string>>;

options arriving;
options shown; // what the selector was given last
uint32_t settle_timer = 0;

// A list that is on screen already is left alone: somebody may be typing or choosing.
ret_t show() {
    timer_remove(std::exchange(settle_timer, 0));
    widget* selector = widget_lookup(navigator_find("home_page"), "combo_box_ex_serial");
    if (arriving == shown && combo_box_count_options(selector) == static_cast<int32_t>(shown.size())) return RET_OK;
    shown = arriving;
    return combo_box_set_options(selector, shown);
}

void show_soon() {
    timer_remove(std::exchange(settle_timer, 0));
    settle_timer = timer_add(
        [] {
            show();
            return RET_REMOVE;
        },
        settle_ms);
}

} // namespace

void port_selector_connect() {
    port_list_view view;
    view.reset = [] {
        arriving.clear();
        show_soon();
    };
    view.append = [](uint32_t index, const std::string& name) {
        arriving.emplace_back(static_cast<int32_t>(index), name);
        show_soon();
    };
    view.finished = [] { show(); };
    view.no_permission = [] { err_display_show(text_no_permission); };
    port_list_set_view(std::move(view));
}

void port_selector_bind(widget* home) {
    widget_on(widget_need(home, "combo_box_ex_serial"), event_type::pointer_down, [](const event&) {
        port_list_load_start();
        return RET_OK;
    });
}
