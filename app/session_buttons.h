// The session buttons of the home page. GUI thread only.
#pragma once

#include "toolkit/ravel/widget.h"

ret_t session_connect_pressed(widget* home);
ret_t session_disconnect_pressed(widget* home);
ret_t session_read_pressed(widget* home);
ret_t session_write_pressed(widget* home);
/// The read that comes before the data page; the caller has checked that the module is connected.
ret_t session_read_for_monitor(widget* home);
/// Reads the module and compares, without touching what is edited.
ret_t session_check_pressed(widget* home);
/// The same right after a good write, in the progress window that is open; a difference is a failure.
ret_t session_check_after_write(widget* home);
