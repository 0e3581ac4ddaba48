// The window "settings": a switch for each of the program's settings. GUI thread.
#pragma once

#include "toolkit/ravel/widget.h"

/// Init routine of "settings". RET_BAD_PARAMS for a missing window.
ret_t settings_window_init(widget* win, const void* context);
