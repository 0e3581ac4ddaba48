#include "app/home_scroll.h"

#include <algorithm>

namespace {

// The page is laid out for a window of 1000 by 750 pixels: "view", the strip at the foot, then stands at y 720.
// What a smaller window lacks is reached by the bars, whose own ranges are fixed.
constexpr int32_t design_width = 1000;
constexpr int32_t design_foot_y = 720;
constexpr double vertical_bar_range = 640;
constexpr int32_t wheel_step = 100;
constexpr int32_t default_width = 1280;

struct scroll_state {
    double scale_x = 0.1;
    double scale_y = 0.1;
    int32_t x = 0;
    int32_t y = 0;
};

scroll_state state;

int32_t width_of(widget* home) { return widget_get_prop_int(widget_lookup(home, "view1"), "w", default_width); }

int32_t foot_y_of(widget* home) { return widget_get_prop_int(widget_lookup(home, "view"), "y", design_foot_y); }

// The title and the bar with the buttons go along from side to side.
ret_t apply(widget* home) {
    for (const char* name : {"scroll_view_title", "scroll_view_top"})
        scroll_view_set_offset(widget_lookup(home, name), state.x, 0);
    return scroll_view_set_offset(widget_lookup(home, "scroll_view_home"), state.x, state.y);
}

ret_t scroll_vertical(widget* home) {
    const int32_t value = widget_get_value_int(widget_lookup(home, "scroll_bar_d_home"));
    const int32_t missing = design_foot_y - foot_y_of(home);
    if (missing >= 0) {
        state.scale_y = missing / vertical_bar_range;
        state.y = static_cast<int32_t>(value * state.scale_y);
    }
    return apply(home);
}

ret_t scroll_horizontal(widget* home) {
    const int32_t value = widget_get_value_int(widget_lookup(home, "scroll_bar_d_home_c"));
    const int32_t missing = design_width - width_of(home);
    if (missing >= 0) {
        state.scale_x = missing * 0.001;
        state.x = static_cast<int32_t>(value * state.scale_x);
    }
    return apply(home);
}

ret_t wheel(widget* home, int32_t delta) {
    widget* bar = widget_lookup(home, "scroll_bar_d_home");
    const int32_t step = delta > 0 ? -wheel_step : wheel_step;
    widget_set_value_int(bar,
                         std::clamp(widget_get_value_int(bar) + step, 0, static_cast<int32_t>(vertical_bar_range)));
    return scroll_vertical(home);
}

} // namespace

void home_scroll_reset() { state = scroll_state{}; }

ret_t home_scroll_to_top(widget* home) {
    widget_set_value_int(widget_lookup(home, "scroll_bar_d_home"), 0);
    return scroll_vertical(home);
}

ret_t home_scroll_resized(widget* home) {
    const int32_t width = width_of(home);
    for (const char* name : {"scroll_view_title", "scroll_view_top", "scroll_view_home"})
        scroll_view_set_virtual_w(widget_lookup(home, name), std::max(width, design_width));
    widget_set_visible(widget_lookup(home, "scroll_bar_d_home"), foot_y_of(home) < design_foot_y);
    widget_set_visible(widget_lookup(home, "scroll_bar_d_home_c"), width < design_width);
    widget_set_value_int(widget_lookup(home, "scroll_bar_d_home"), 0);
    state.x = 0;
    state.y = 0;
    scroll_horizontal(home);
    return scroll_vertical(home);
}

void home_scroll_bind(widget* home) {
    widget_set_value_int(widget_need(home, "scroll_bar_d_home"), 0);
    widget_on(widget_need(home, "scroll_bar_d_home"), event_type::value_changed,
              [home](const event&) { return scroll_vertical(home); });
    widget_on(widget_need(home, "scroll_bar_d_home_c"), event_type::value_changed,
              [home](const event&) { return scroll_horizontal(home); });
    widget_on(widget_need(home, "scroll_view_home"), event_type::wheel,
              [home](const event& e) { return wheel(home, e.delta); });
    for (const char* name : {"view1", "view"})
        for (const event_type type : {event_type::move, event_type::resize})
            widget_on(widget_need(home, name), type, [home](const event&) { return home_scroll_resized(home); });
}
