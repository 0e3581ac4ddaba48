// Finding widgets, attaching handlers.
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QPointer>

#include <cstdlib>

namespace {

constexpr uint32_t long_press_max_ms = 60000;

/// Children as they are built so far; of the window manager its windows, topmost first.
std::vector<widget_state*> children_of(const widget_state* state) {
    return state->kind == widget_kind::window_manager ? stacked_windows_topmost_first() : state->children;
}

widget_state* breadth_first(const widget_state* top, const char* name) {
    std::vector<widget_state*> level = children_of(top);
    while (!level.empty()) {
        std::vector<widget_state*> below;
        for (widget_state* state : level) {
            if (state->name == name) return state;
            const std::vector<widget_state*> more = children_of(state);
            below.insert(below.end(), more.begin(), more.end());
        }
        level = std::move(below);
    }
    return nullptr;
}

std::function<void(const std::string& text)> on_missing;

/// Window and widget as the log names them.
std::string place_name(const widget_state* root) {
    if (root == nullptr) return "no widget";
    const widget_state* win = root;
    while (win->parent != nullptr && win->kind != widget_kind::window && win->kind != widget_kind::dialog)
        win = win->parent;
    return win == root ? "\"" + root->name + "\"" : "\"" + root->name + "\" of \"" + win->name + "\"";
}

ret_t visit_below(widget_state* state, const std::function<ret_t(widget*)>& visit) {
    std::vector<QPointer<widget_state>> children;
    for (widget_state* child : children_of(state)) children.emplace_back(child);
    for (const QPointer<widget_state>& child : children) {
        const widget_state* before = child.data();
        if (before == nullptr) continue; // destroyed by an earlier visit
        if (!before->name.empty()) {
            const ret_t result = visit(handle_of(before));
            if (result != RET_OK) return result;
        }
        widget_state* after = child.data();
        if (after == nullptr) continue;
        const ret_t result = visit_below(after, visit);
        if (result != RET_OK) return result;
    }
    return RET_OK;
}

void collect_named(widget_state* state, std::vector<widget*>& found) {
    for (widget_state* child : children_of(state)) {
        if (child->name.empty()) {
            collect_named(child, found);
        } else {
            found.push_back(handle_of(child));
        }
    }
}

} // namespace

std::vector<widget*> named_children(const widget* parent) {
    std::vector<widget*> found;
    if (widget_state* state = live(parent)) collect_named(state, found);
    return found;
}

widget* widget_lookup(widget* root, const char* name) {
    const widget_state* top = live(root);
    if (top == nullptr || name == nullptr || *name == '\0') return nullptr;
    return handle_of(breadth_first(top, name));
}

widget* widget_need(widget* root, const char* name) {
    const widget_state* top = live(root);
    const char* wanted = name == nullptr ? "" : name;
    const widget_state* found = top == nullptr || *wanted == '\0' ? nullptr : breadth_first(top, wanted);
    if (found != nullptr) return handle_of(found);
    const std::string text = tk_format("widget_need: no widget \"%s\" in %s\n", wanted, place_name(top).c_str());
    log_write(LOG_LEVEL_ERROR, text);
    if (on_missing) {
        on_missing(text);
        return nullptr;
    }
#ifndef NDEBUG
    std::abort();
#else
    return nullptr;
#endif
}

void widget_need_set_hook(std::function<void(const std::string& text)> hook) { on_missing = std::move(hook); }

ret_t widget_build(widget* w) {
    widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    state->complete_shown();
    return RET_OK;
}

widget* widget_child(widget* parent, const char* name) {
    if (name == nullptr || *name == '\0') return nullptr;
    for (widget* child : named_children(parent)) {
        if (widget_name(child) == name) return child;
    }
    return nullptr;
}

ret_t widget_foreach(widget* root, const std::function<ret_t(widget*)>& visit) {
    widget_state* state = live(root);
    if (state == nullptr || !visit) return RET_BAD_PARAMS;
    return visit_below(state, visit);
}

std::string widget_name(const widget* w) {
    const widget_state* state = live(w);
    return state == nullptr ? std::string() : state->name;
}

std::string widget_type(const widget* w) {
    const widget_state* state = live(w);
    return state == nullptr ? std::string() : state->type;
}

widget* widget_get_window(widget* w) {
    for (widget_state* state = live(w); state != nullptr; state = state->parent) {
        if (state->kind == widget_kind::window || state->kind == widget_kind::dialog) return handle_of(state);
    }
    return nullptr;
}

uint32_t widget_on(widget* w, event_type type, event_handler handler) {
    widget_state* state = live(w);
    if (state == nullptr || !handler) return 0;
    const uint32_t id = state->attach(type, std::move(handler));
    // Who asks for places after they were found the first time is told of them once, as if they came now.
    if (type == event_type::move || type == event_type::resize) state->tell_place_later(id);
    return id;
}

ret_t widget_off(widget* w, uint32_t id) {
    widget_state* state = live(w);
    if (state == nullptr || id == 0) return RET_BAD_PARAMS;
    return state->detach(id) ? RET_OK : RET_FAIL;
}

ret_t widget_set_long_press_ms(widget* w, uint32_t ms) {
    widget_state* state = live(w);
    if (state == nullptr || ms == 0 || ms > long_press_max_ms) return RET_BAD_PARAMS;
    state->long_press_ms = ms;
    return RET_OK;
}

ret_t widget_dispatch_simple_event(widget* w, event_type type) {
    widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    if (type == event_type::request_close) return request_close_window(state);
    return state->fire(type);
}
