// The CAN pages' scroll view and its scroll bar.
#pragma once

#include "toolkit/ravel/widget.h"

/// Makes the bar (0 to 500) move the view by 0.366 pixels a step, and the wheel move bar and view by 100 steps a
/// notch. The wheel keeps a position of its own that starts at 0, and again when nothing overflowed for a while.
/// Once in the widgets' life. RET_FAIL when one is missing.
ret_t scroll_attach(widget* page, const char* view_name, const char* bar_name);
