// The way from the home page to the data page: read the module's configuration first, then look whether it can be
// monitored.
#pragma once

#include "monitor/pages/data_page.h"
#include "toolkit/ravel/widget.h"

/// The press of "button_data": a message when the chosen family is not connected; for a family with a data page the
/// read whose finish opens it; nothing more for the others. GUI thread.
ret_t data_monitor_pressed(widget* home);

/// The connected module that the data page is about; without a session when there is none. GUI thread.
monitored_device data_monitor_device();
/// The data page has been left; the home page says when its module is gone, and what that holds is not known any
/// more. GUI thread.
void data_monitor_left(bool lost);

/// The module of the family whose modules carry traffic, whichever is shown; without a session before its device is
/// made, without a name while it is not connected or another one is shown. GUI thread.
monitored_device data_monitor_any();
