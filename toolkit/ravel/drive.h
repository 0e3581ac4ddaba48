// Plays a script of user actions on the open windows (docs/driving.md). GUI thread only.
#pragma once

#include "toolkit/core/result.h"

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
/// event loop that runs, a dialog's too. Scripts started while one plays run beside it.
ret_t drive_play(const std::string& script, drive_reports reports);
