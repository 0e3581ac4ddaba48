// What the home page allows in each state of a session, and how it says so.
#pragma once

#include "toolkit/ravel/widget.h"

#include <cstdint>

enum class ui_state : uint8_t {
    idle,       ///< not connected
    connecting, ///< a connect session runs
    connected,
    busy, ///< a read, a write or a mode switch runs
    lost, ///< connected, but a session found the device gone
};

/// Enables and disables the session buttons and the selectors and shows the state's word, all from one row.
/// RET_FAIL for a missing page. GUI thread.
ret_t ui_state_apply(widget* home, ui_state state);
/// The state applied last; idle at start. GUI thread.
ui_state ui_state_get();
