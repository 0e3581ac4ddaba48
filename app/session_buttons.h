// The session buttons of the home page. GUI thread only.
#pragma once

#include "toolkit/ravel/widget.h"

ret_t session_connect_pressed(widget* home);
ret_t session_disconnect_pressed(widget* home);
ret_t session_read_pressed(widget* home);
ret_t session_write_pressed(widget* home);
/// The read that comes before the data page; the caller has checked that the module is connected.
ret_t session_read_for_monitor(widget* home);
