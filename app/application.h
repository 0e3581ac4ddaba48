// What brackets the main loop.
#pragma once

#include "toolkit/core/result.h"

/// Registers widgets, families and windows and opens the home page. Returns the navigator's result; whether the
/// page opened at all is told by navigator_find("home_page"). GUI thread.
ret_t application_init();

/// Cancels what waits for a port, lets go of the worker threads in a fixed order, drops the shared objects (unless
/// a worker still lives) and empties the session log. Always RET_OK, within a second. GUI thread.
ret_t application_exit();

/// Empties the session log (and makes it when missing). Any thread.
void session_log_empty();
