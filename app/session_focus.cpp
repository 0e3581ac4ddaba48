#include "app/session_focus.h"

#include "shell/navigator.h"
#include "toolkit/ravel/window_manager.h"

namespace {

constexpr const char* session_buttons[] = {"button", "button2", "button_read", "button_write", "button_default"};

const char* started_by = nullptr;

bool focus_taken(widget* home, const char* name) {
    widget* button = widget_lookup(home, name);
    if (!widget_get_enable(button) || !widget_get_visible(button)) return false;
    widget_set_focused(button);
    started_by = nullptr;
    return true;
}

} // namespace

void session_focus_keep(const char* button) { started_by = button; }

void session_focus_back() {
    widget* home = navigator_find("home_page");
    if (started_by == nullptr || home == nullptr || home != window_manager_get_top_window(window_manager())) return;
    if (focus_taken(home, started_by)) return;
    for (const char* name : session_buttons)
        if (focus_taken(home, name)) return;
}
