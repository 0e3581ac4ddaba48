// Acts as the user does: plays lines of a script (docs/driving.md) through real pointer and key events.
#pragma once

#include <string>

/// Starts the toolkit once for the whole test program, with the repository's resources, and clears its window.
void user_stage();

/// Plays `script` and waits for its end. Empty when every line went well, else the line that failed and why.
std::string user_does(const std::string& script);

/// The native window's size in pixels.
void user_window_size(int w, int h);
