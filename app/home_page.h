// The main window.
#pragma once

#include "toolkit/ravel/widget.h"

/// Init routine of "home_page": the one-time work at the first opening, then bindings, device object and pages.
/// RET_BAD_PARAMS for a missing window, RET_INIT_FAILED when the generic device could not be set up. GUI thread.
ret_t home_page_init(widget* win, const void* context);
