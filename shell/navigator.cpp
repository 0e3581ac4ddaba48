#include "shell/navigator.h"

#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/window_manager.h"

#include <map>
#include <string>
#include <utility>

namespace {

std::map<std::string, window_init, std::less<>>& windows() {
    static auto& known = *new std::map<std::string, window_init, std::less<>>;
    return known;
}

ret_t window_run_init(const char* target, widget* win, const void* context) {
    const auto known = windows().find(target);
    return known == windows().end() ? RET_OK : known->second(win, context);
}

bool is_empty(const char* target) { return target == nullptr || *target == '\0'; }

constexpr const char* target_condition = "target != NULL &&* target != '\\0'";

} // namespace

ret_t navigator_register_window(const char* name, window_init init) {
    if (name == nullptr || init == nullptr) return RET_BAD_PARAMS;
    windows().insert_or_assign(name, init);
    return RET_OK;
}

widget* navigator_find(const char* target) { return widget_child(window_manager(), target); }

ret_t navigator_window_open_and_close(const char* target, widget* to_close, const void* context) {
    widget* shown = navigator_find(target);
    if (shown != nullptr && widget_get_prop_bool(shown, "single_instance", false)) {
        // Closed together with the old one, the window to close must not be closed a second time.
        if (shown == to_close) to_close = nullptr;
        window_manager_close_window_force(window_manager(), shown);
    }
    widget* win = window_open_and_close(target, to_close);
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_FAIL);
    const ret_t ret = window_run_init(target, win, context);
    if (ret != RET_OK) {
        log_condition_failed("ret == RET_OK", __func__, __LINE__);
        return ret;
    }
    if (widget_is_dialog(win) && widget_get_prop_bool(win, "to_modal", true))
        return static_cast<ret_t>(dialog_modal(win));
    return ret;
}

ret_t navigator_to(const char* target) { return navigator_to_with_context(target, nullptr); }

ret_t navigator_to_with_context(const char* target, const void* context) {
    RETURN_IF_NOT(!is_empty(target), target_condition, __func__, RET_BAD_PARAMS);
    return navigator_window_open_and_close(target, nullptr, context);
}

ret_t navigator_replace(const char* target) {
    RETURN_IF_NOT(!is_empty(target), target_condition, __func__, RET_BAD_PARAMS);
    widget* current = window_manager_get_top_main_window(window_manager());
    log_write(LOG_LEVEL_DEBUG, tk_format("close current window: %s\n", widget_name(current).c_str()));
    return navigator_window_open_and_close(target, current, nullptr);
}

ret_t navigator_switch_to(const char* target, bool close_current) {
    RETURN_IF_NOT(!is_empty(target), target_condition, __func__, RET_BAD_PARAMS);
    widget* win = navigator_find(target);
    if (win == nullptr) return navigator_to(target);
    widget* current = window_manager_get_top_window(window_manager());
    return window_manager_switch_to(window_manager(), current, win, close_current);
}

ret_t navigator_back() { return window_manager_back(window_manager()); }

ret_t navigator_back_to_home() { return window_manager_back_to_home(window_manager()); }

ret_t navigator_close(const char* target) {
    RETURN_IF_NOT(!is_empty(target), target_condition, __func__, RET_BAD_PARAMS);
    widget* win = navigator_find(target);
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_FAIL);
    return window_manager_close_window_force(window_manager(), win);
}

ret_t navigator_request_close(const char* target) {
    RETURN_IF_NOT(!is_empty(target), target_condition, __func__, RET_BAD_PARAMS);
    widget* win = navigator_find(target);
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_FAIL);
    return widget_dispatch_simple_event(win, event_type::request_close);
}

ret_t navigator_on(event_type type, event_handler handler) {
    widget_on(window_manager(), type, std::move(handler));
    return RET_OK;
}
