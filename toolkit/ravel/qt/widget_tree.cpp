// Finding widgets, attaching handlers.
#include "toolkit/ravel/qt/detail.h"
#include "toolkit/ravel/qt/window_stack.h"

#include <QPointer>

#include <algorithm>

namespace {

/// Children as they are built so far; of the window manager its windows, topmost first.
std::vector<widget_state*> built_children(const widget_state* state) {
    return state->kind == widget_kind::window_manager ? stacked_windows_topmost_first() : state->children;
}

/// The same, all of them: a page that waited to be built is.
std::vector<widget_state*> children_of(widget_state* state) {
    state->complete();
    return built_children(state);
}

widget_state* breadth_first(widget_state* top, const char* name, bool complete) {
    const auto children = [complete](widget_state* state) {
        return complete ? children_of(state) : built_children(state);
    };
    std::vector<widget_state*> level = children(top);
    while (!level.empty()) {
        std::vector<widget_state*> below;
        for (widget_state* state : level) {
            if (state->name == name) return state;
            const std::vector<widget_state*> more = children(state);
            below.insert(below.end(), more.begin(), more.end());
        }
        level = std::move(below);
    }
    return nullptr;
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
    widget_state* top = live(root);
    if (top == nullptr || name == nullptr || *name == '\0') return nullptr;
    // Pages that nobody has looked into yet are built only for a name that is nowhere else.
    widget_state* found = breadth_first(top, name, false);
    return handle_of(found != nullptr ? found : breadth_first(top, name, true));
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

ret_t widget_dispatch_simple_event(widget* w, event_type type) {
    widget_state* state = live(w);
    if (state == nullptr) return RET_BAD_PARAMS;
    if (type == event_type::request_close) return request_close_window(state);
    return state->fire(type);
}
