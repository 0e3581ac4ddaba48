// Light or dark: as the system has it, until the user chooses; the choice is kept for the next start.
#pragma once

#include "toolkit/ravel/widget.h"

/// Where the choice is kept, relative to the working directory.
inline constexpr const char* look_file = "ui.json";

/// Takes the look that was chosen last, or else the system's. After the theme is loaded. GUI thread.
void look_start();
/// Shows on the home page's switch what it would change to. GUI thread.
void look_show(widget* home);
/// The switch: takes the other look and keeps it; one that cannot be kept holds until the end, with a line in the
/// log.
ret_t look_switch(widget* home);
