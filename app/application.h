// What brackets the main loop.
#pragma once

#include "toolkit/core/result.h"

/// Registers widgets and windows and opens the home page. Returns the navigator's result; whether the
/// page opened at all says navigator_find("home_page"). GUI thread.
ret_t application_init();

/// Cancels what waits for a port, stops every worker and waits for them (half a second at most), and empties the
/// session log. Always RET_OK. What workers may touch is never destroyed. GUI thread.
ret_t application_exit();

/// Empties the session log (and makes it when missing). Any thread.
void session_log_empty();
