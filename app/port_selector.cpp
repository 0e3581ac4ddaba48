#include "app/port_selector.h"

#include "serial/port_about.h"
#include "serial/port_list.h"
#include "serial/port_names.h"
#include "shell/copy_notice.h"
#include "shell/err_display.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/ravel/combo_hints.h"

#include <algorithm>

namespace {

// A list arrives entry by entry. It is put into the selector as a whole when no entry has come for this long, so
// that an open popup never runs empty.
constexpr uint32_t settle_ms = 50;

// A place in a group counts from the next login on.
constexpr const char* text_grant_now = " 无权限，可在终端执行：";
constexpr const char* text_grant_at_login = " 无权限，可在终端执行后重新登录：";

using options = std::vector<std::pair<int32_t, std::string>>;

options arriving;
options shown; // what the selector was given last
port_abouts known;
uint32_t settle_timer = 0;

widget* on_home(const char* name) { return widget_lookup(navigator_find("home_page"), name); }
widget* selector() { return on_home("combo_box_ex_serial"); }

const port_about* chosen_port() {
    const auto found = known.find(widget_get_text_utf8(selector()));
    return found == known.end() ? nullptr : &found->second;
}

/// A line under the bar is there for a chosen port that the user may not open.
void grant_show() {
    const port_about* port = chosen_port();
    const bool offered = port != nullptr && !port->grant.empty();
    if (offered) {
        const bool at_login = port->grant.starts_with("sudo usermod");
        const std::string text =
            widget_get_text_utf8(selector()) + (at_login ? text_grant_at_login : text_grant_now);
        widget_set_text_utf8(on_home("serial_grant_text"), text.c_str());
        widget_set_text_utf8(on_home("serial_grant_command"), port->grant.c_str());
    }
    widget_set_visible(on_home("serial_grant"), offered);
}

ret_t grant_copy() {
    const std::string command = widget_get_text_utf8(on_home("serial_grant_command"));
    return copy_with_notice(on_home("button_serial_grant"), command.c_str());
}

void hints_show() {
    std::vector<std::string> hints;
    for (const auto& [value, name] : shown)
        hints.push_back(known.contains(name) ? port_about_text(known[name]) : "");
    combo_box_set_hints(selector(), hints);
}

/// What was chosen or typed need not be in the list.
void ask_about_ports() {
    std::vector<std::string> names;
    for (const auto& [value, name] : shown) names.push_back(name);
    if (const std::string text = widget_get_text_utf8(selector()); !text.empty()) names.push_back(text);
    port_abouts_of(names);
}

// A list that is on screen already is left alone: somebody may be typing or choosing.
ret_t show() {
    timer_remove(std::exchange(settle_timer, 0));
    options sorted = port_options_in_order(arriving);
    if (sorted != shown || combo_box_count_options(selector()) != static_cast<int32_t>(shown.size())) {
        shown = std::move(sorted);
        combo_box_set_options(selector(), shown);
        hints_show();
    }
    ask_about_ports();
    return RET_OK;
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

std::vector<std::pair<int32_t, std::string>> port_options_in_order(options list) {
    std::ranges::stable_sort(list, port_name_before, &options::value_type::second);
    return list;
}

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
    port_abouts_set_view([](const port_abouts& answers) {
        known = answers;
        hints_show();
        grant_show();
    });
}

void port_selector_bind(widget* home) {
    widget_on(widget_need(home, "combo_box_ex_serial"), event_type::pointer_down, [](const event&) {
        port_list_load_start();
        return RET_OK;
    });
    widget_on(widget_need(home, "combo_box_ex_serial"), event_type::value_changed, [](const event&) {
        ask_about_ports();
        grant_show();
        return RET_OK;
    });
    widget_on(widget_need(home, "button_serial_grant"), event_type::click,
              [](const event&) { return grant_copy(); });
    widget_set_visible(widget_need(home, "serial_grant"), false);
}
