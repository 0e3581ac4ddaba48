// Scrolling of the home page: two bars move the view that holds page sets and code view.
#pragma once

#include "toolkit/ravel/widget.h"

/// Scales to 0.1 and offsets to 0. GUI thread.
void home_scroll_reset();
/// Binds the bars, the wheel and the containers whose size decides the range. GUI thread.
void home_scroll_bind(widget* home);
/// Back to the top: the vertical bar to 0, and the view with it. GUI thread.
ret_t home_scroll_to_top(widget* home);
/// Virtual width, bar and offsets anew after "view1" or "view" was moved or resized. GUI thread.
ret_t home_scroll_resized(widget* home);
