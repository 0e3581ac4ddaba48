// The port selector of the home page: its list comes from the port list's threads.
#pragma once

#include "toolkit/ravel/widget.h"

/// Makes the port list's threads report to the selector of whichever home page is open. Once. GUI thread.
void port_selector_connect();
/// A press of the selector scans once more. GUI thread.
void port_selector_bind(widget* home);
