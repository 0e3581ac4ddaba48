// Acts as a user on the open windows, for scripts and tests: plays a script of user actions (docs/driving.md), runs
// the event loop meanwhile, sizes the native window. GUI thread only.
#pragma once

#include "toolkit/ravel/widget.h"

#include <cstdint>
#include <functional>
#include <string>

/// How a played script reports.
struct drive_reports {
    /// A line about each played line: "ok   12 click button\n", "FAIL 13 ...: why\n".
    std::function<void(const std::string& line)> echo;
    /// Once: true when every line went well; false after the first that failed, after a script that could not be
    /// read, or when the main loop ended before the last line was played.
    std::function<void(bool good)> ended;
};

/// Starts playing `script` once a window is there; returns at once. Lines are played one after the other from the
/// event loop that runs, a dialog's too. Scripts started while one plays run beside it. RET_BAD_PARAMS without the
/// two reports or before tk_init.
ret_t drive_play(const std::string& script, drive_reports reports);

/// Runs the event loop until `done` answers true, looking every few milliseconds, or until `timeout_ms` have passed
/// or the main loop is ended. Answers what `done` said last; false before tk_init. The program itself never waits
/// this way: it is for whoever plays the user outside tk_run.
bool drive_wait(const std::function<bool()>& done, uint32_t timeout_ms);

/// Gives the native window a size in pixels (held to its smallest one) and lets its content take it. RET_FAIL when
/// the system refuses that size, or before tk_init.
ret_t drive_window_size(int32_t w, int32_t h);

/// Lays out what waits for it and paints a widget now. RET_BAD_PARAMS without one.
ret_t drive_paint(widget* w);

/// A text as a word of a script: quoted, with escapes. Any thread.
std::string drive_word(const std::string& text);
