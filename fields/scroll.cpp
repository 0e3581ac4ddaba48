#include "fields/scroll.h"

#include <algorithm>
#include <memory>

namespace {

constexpr int16_t notch = 100;
constexpr int16_t last_position = 500;
constexpr double pixels_per_step = 0.366; // 183 pixels at the end

ret_t show_position(widget* view, int32_t position) {
    return scroll_view_set_offset(view, 0, static_cast<int32_t>(position * pixels_per_step));
}

} // namespace

ret_t scroll_attach(widget* page, const char* view_name, const char* bar_name) {
    widget* view = widget_lookup(page, view_name);
    widget* bar = widget_lookup(page, bar_name);
    if (view == nullptr || bar == nullptr) return RET_FAIL;
    widget_on(bar, event_type::value_changed,
              [view, bar](const event&) { return show_position(view, widget_get_value_int(bar)); });
    const auto position = std::make_shared<int16_t>();
    widget_on(view, event_type::wheel, [view, bar, position](const event& what) {
        const int step = what.delta > 0 ? -notch : notch;
        *position = static_cast<int16_t>(std::clamp<int>(*position + step, 0, last_position));
        widget_set_value_int(bar, *position);
        show_position(view, *position);
        return RET_REMOVE; // anything but RET_OK: the view must not scroll by itself as well
    });
    return RET_OK;
}
