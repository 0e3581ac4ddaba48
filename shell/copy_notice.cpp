#include "shell/copy_notice.h"

#include "shell/navigator.h"
#include "toolkit/core/idle.h"

#include <string>
#include <utility>

namespace {

struct notice {
    std::string window, button, label;
    uint32_t timer = 0; ///< 0: none is shown
};
notice shown;

/// By name: the window may have gone meanwhile.
void end_notice() {
    if (shown.timer == 0) return;
    timer_remove(std::exchange(shown.timer, 0));
    widget* button = widget_lookup(navigator_find(shown.window.c_str()), shown.button.c_str());
    if (button != nullptr) widget_set_text_utf8(button, shown.label.c_str());
}

} // namespace

ret_t copy_with_notice(widget* button, const char* text) {
    if (button == nullptr || text == nullptr) return RET_BAD_PARAMS;
    const ret_t ret = clip_board_set_text(text);
    if (ret != RET_OK) return ret;
    end_notice();
    shown = {widget_name(widget_get_window(button)), widget_name(button), widget_get_text_utf8(button), 0};
    widget_set_text_utf8(button, text_copied);
    shown.timer = timer_add(
        [] {
            end_notice();
            return RET_REMOVE;
        },
        copy_notice_ms);
    return RET_OK;
}
