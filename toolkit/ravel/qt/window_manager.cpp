// The functions of window_manager.h.
#include "toolkit/ravel/window_manager.h"

#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/qt/assets.h"
#include "toolkit/ravel/qt/layout_reader.h"
#include "toolkit/ravel/qt/ui_file.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QCursor>
#include <QPixmap>

namespace {

std::string open_error;

bool is_manager(const widget* wm) {
    const widget_state* state = live(wm);
    return state != nullptr && state->kind == widget_kind::window_manager;
}

/// The state of an open window or dialog; null for everything else.
widget_state* open_window(const widget* w, const char* function = __builtin_FUNCTION()) {
    widget_state* state = live(w, function);
    return state == nullptr || shell_of(state) == nullptr ? nullptr : state;
}

widget_state* dialog_state(const widget* w, const char* function = __builtin_FUNCTION()) {
    widget_state* state = live(w, function);
    return state != nullptr && state->kind == widget_kind::dialog ? state : nullptr;
}

bool is_last_main(const widget_state* state) {
    std::size_t mains = 0;
    for (const widget_state* other : stacked_windows_topmost_first()) {
        if (other->kind == widget_kind::window) mains++;
    }
    return state->kind == widget_kind::window && mains <= 1;
}

} // namespace

widget* window_manager() { return tk_check_gui_thread(__func__) ? handle_of(native_window()) : nullptr; }

std::string window_open_error() { return open_error; }

widget* window_open_and_close(const char* name, widget* to_close) {
    if (!tk_check_gui_thread(__func__)) return nullptr;
    open_error.clear();
    if (native_window() == nullptr || name == nullptr || *name == '\0') {
        open_error = "window_open: no name, or the toolkit is not up";
        return nullptr;
    }
    widget_state* state = load_layout(QString::fromUtf8(name), &open_error);
    if (state == nullptr) {
        log_write(LOG_LEVEL_ERROR, open_error + "\n");
        return nullptr;
    }
    push_window(state);
    if (widget_state* old = open_window(to_close)) close_window(old, 0);
    return handle_of(state);
}

widget* window_open(const char* name) { return window_open_and_close(name, nullptr); }

void window_read_ahead(const char* name) {
    if (!tk_check_gui_thread(__func__) || name == nullptr || native_window() == nullptr) return;
    read_ui_file_ahead(layout_path(QString::fromUtf8(name)));
}

ret_t window_manager_close_window_force(widget* wm, widget* win) {
    widget_state* state = open_window(win);
    if (!is_manager(wm) || state == nullptr) return RET_BAD_PARAMS;
    close_window(state, 0);
    return RET_OK;
}

ret_t window_manager_back(widget* wm) {
    if (!is_manager(wm)) return RET_BAD_PARAMS;
    widget_state* top = open_window(handle_of(top_input_window()));
    if (top == nullptr || is_last_main(top)) return RET_FAIL;
    return request_close_window(top);
}

ret_t window_manager_back_to_home(widget* wm) {
    if (!is_manager(wm)) return RET_BAD_PARAMS;
    const std::vector<widget_state*> all = stacked_windows_topmost_first();
    const widget_state* home = nullptr;
    for (const widget_state* state : all) {
        if (state->kind == widget_kind::window) home = state; // the last one seen is the lowest
    }
    for (widget_state* state : all) {
        if (state == home) break;
        close_window(state, 0);
    }
    return home == nullptr ? RET_FAIL : RET_OK;
}

ret_t window_manager_switch_to(widget* wm, widget* current, widget* target, bool close_current) {
    widget_state* to = open_window(target);
    if (!is_manager(wm) || to == nullptr) return RET_BAD_PARAMS;
    widget_state* from = open_window(current);
    raise_window(to);
    if (close_current && from != nullptr && from != to) close_window(from, 0);
    return RET_OK;
}

widget* window_manager_get_top_window(widget* wm) {
    return is_manager(wm) ? handle_of(top_input_window()) : nullptr;
}

widget* window_manager_get_top_main_window(widget* wm) {
    if (!is_manager(wm)) return nullptr;
    for (const widget_state* state : stacked_windows_topmost_first()) {
        if (state->kind == widget_kind::window) return handle_of(state);
    }
    return nullptr;
}

ret_t window_manager_set_cursor(widget* wm, const char* name) {
    if (!is_manager(wm) || name == nullptr) return RET_BAD_PARAMS;
    const QPixmap picture(image_path(QString::fromUtf8(name)));
    native_window()->setCursor(picture.isNull() ? QCursor(Qt::ArrowCursor) : QCursor(picture, 0, 0));
    return RET_OK;
}

ret_t window_manager_set_title(widget* wm, const char* title) {
    if (!is_manager(wm) || title == nullptr) return RET_BAD_PARAMS;
    native_window()->setWindowTitle(QString::fromUtf8(title));
    return RET_OK;
}

std::string window_manager_get_title(widget* wm) {
    return is_manager(wm) ? native_window()->windowTitle().toStdString() : std::string();
}

bool widget_is_dialog(const widget* w) { return dialog_state(w) != nullptr; }

uint32_t dialog_modal(widget* dialog) {
    widget_state* state = dialog_state(dialog);
    if (state == nullptr || state->modal != nullptr) return 0;
    if (state->closed) return state->quit_code; // quit before it ran
    if (!loops_ended()) return run_modal(state);
    close_window(state, 0);
    return 0;
}

ret_t dialog_quit(widget* dialog, uint32_t code) {
    widget_state* state = dialog_state(dialog);
    if (state == nullptr) return RET_BAD_PARAMS;
    if (state->closed) return RET_FAIL;
    close_window(state, code);
    return RET_OK;
}

ret_t dialog_set_esc_closes(widget* dialog, bool closes) {
    widget_state* state = dialog_state(dialog);
    if (state == nullptr) return RET_BAD_PARAMS;
    state->esc_closes = closes;
    return RET_OK;
}
