// Handles: a number that stands for one widget and for no other one after it. For toolkit/ only. GUI thread only.
#pragma once

struct widget;
class widget_state;

/// A handle for a state, never given out before: a place in the table and how often that place was taken.
widget* handle_take(widget_state* state);
/// From now on the handle is stale.
void handle_drop(const widget* handle);
/// The state behind a handle; null when it is stale, or null itself.
widget_state* handle_find(const widget* handle);
