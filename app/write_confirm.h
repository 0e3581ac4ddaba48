// Shows the changes once more before they are written, where the user wants that. GUI thread; runs the event loop
// until the window is closed.
#pragma once

#include "session/dev_obj.h"

/// Whether the device's changes are to be written: the user said so, or does not want to be asked.
bool write_confirmed(const dev_obj& dev);
