// Acts as the user does: plays lines of a script (docs/driving.md) through real pointer and key events.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

/// Runs the event loop until `done` or until `timeout_ms` have passed; answers what `done` said last.
bool user_wait(const std::function<bool()>& done, uint32_t timeout_ms);

/// Plays `script` and waits for its end. Empty when every line went well, else the line that failed and why; every
/// dialog above the first window is closed then, so that no loop of one stays.
std::string user_does(const std::string& script);

/// The same for lines that are expected to fail: no dialog is closed then. Not for lines that open a modal dialog.
std::string user_tries(const std::string& script);

/// Plays `script` from whatever event loop runs next, a dialog's too. `failed` receives the line that failed and
/// why; it must live until the script has ended.
void user_will_do(const std::string& script, std::string* failed);

/// A word of a script, quoted.
std::string user_word(const std::string& text);

/// The native window's size in pixels. False when the system refuses it.
bool user_window_size(int w, int h);
