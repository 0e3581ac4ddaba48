#include "fields/scroll.h"

#include <algorithm>
#include <memory>

namespace {

constexpr int16_t notch = 100;
constexpr int16_t last_position = 500;
constexpr double pixels_per_step = 0.366; // 183 pixels at the end

struct scroll_pair {
    widget* view;
    widget* bar;
    int16_t position = 0; ///< the wheel's own
    int32_t turned = 0;   ///< where the bar was left by the wheel or by the user
};

ret_t show_position(scroll_pair& of, int32_t position) {
    of.turned = position;
    return scroll_view_set_offset(of.view, 0, static_cast<int32_t>(position * pixels_per_step));
}

ret_t wheel(scroll_pair& of, int32_t delta) {
    // A bar that nobody turned back stands at its start because nothing overflowed meanwhile.
    if (of.turned != 0 && widget_get_value_int(of.bar) == 0) of.position = 0;
    const int step = delta > 0 ? -notch : notch;
    of.position = static_cast<int16_t>(std::clamp<int>(of.position + step, 0, last_position));
    widget_set_value_int(of.bar, of.position);
    show_position(of, of.position);
    return RET_REMOVE; // anything but RET_OK: the view must not scroll by itself as well
}

} // namespace

ret_t scroll_attach(widget* page, const char* view_name, const char* bar_name) {
    widget* view = widget_lookup(page, view_name);
    widget* bar = widget_lookup(page, bar_name);
    if (view == nullptr || bar == nullptr) return RET_FAIL;
    const auto both = std::make_shared<scroll_pair>(scroll_pair{.view = view, .bar = bar});
    widget_on(bar, event_type::value_changed,
              [both](const event&) { return show_position(*both, widget_get_value_int(both->bar)); });
    widget_on(view, event_type::wheel, [both](const event& what) { return wheel(*both, what.delta); });
    return RET_OK;
}
