// A line of a script taken apart into strokes: single moves of the user's hand, each small enough that a dialog's
// loop, where one starts one, is the last thing it does. GUI thread only.
#pragma once

#include "toolkit/ravel/drive_script.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <string>

struct drive_outcome {
    enum kind : uint8_t { done, again, failed } what = done;
    int again_ms = 0; ///< again: try once more after so long
    std::string why;  ///< failed
};

struct drive_stroke_t {
    /// `waited_ms`: since it was tried first.
    std::function<drive_outcome(int64_t waited_ms)> run;
    int pause_ms = 0; ///< before the next stroke
};
using drive_strokes = std::deque<drive_stroke_t>;

/// What playing a line means.
drive_strokes drive_strokes_of(const drive_action& action);
/// What comes before the first line: waiting for a window that is on the screen.
drive_strokes drive_first_strokes();
