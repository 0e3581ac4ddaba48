// What the next start begins with: the window's size, and, where the user wants that, the model and the port. GUI
// thread.
#pragma once

#include "app/command_line.h"
#include "toolkit/ravel/widget.h"

struct window_size {
    int32_t w, h; ///< pixels
};

/// The command line's, else that of the last closing, else the usual one.
window_size start_window_size(const command_line_options& options);
/// Where the settings want it: chooses the model and fills in the port of the last closing. Nothing is connected; a
/// model that is none is passed over.
void start_choice_restore(widget* home);
/// At closing: keeps size, model and port. Without a home page nothing.
void start_choice_keep();
