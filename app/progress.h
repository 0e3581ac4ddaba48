// The progress window, and the reports that reach it from any thread.
#pragma once

#include "app/progress_report.h"
#include "toolkit/ravel/widget.h"

#include <cstdint>
#include <functional>
#include <string>

/// Posts a report to the "progress" window. A report posted while no progress window is open is dropped when its
/// turn comes, even if one has been opened by then. Returns the result of idle_queue. Any thread.
ret_t progress_post(uint32_t percent, const std::string& text, uint8_t operation);
/// Shows a report. At 100 % the visible configuration page is filled again and "ok" is offered. RET_INIT_FAILED,
/// and nothing shown, when no window is or was open. GUI thread.
ret_t progress_update(const progress_report& report);

/// Init routine of "progress". Between two sessions it shows what the last one did. RET_BAD_PARAMS for a missing
/// window. GUI thread.
ret_t progress_init(widget* win, const void* context);

/// What "ok" of a finished run leads to. It is forgotten when another run begins or the window is left otherwise.
struct progress_finish {
    std::function<const char*()> refusal; ///< a message: the window stays; null: nothing stands against it
    std::function<ret_t()> then;          ///< after the home page is back
};

/// Opens the window for a run that is about to start: "ok" is hidden, Esc does not leave it. GUI thread.
ret_t progress_open_for_run();
/// What "ok" of the run under way leads to, beside going back to the home page. GUI thread.
void progress_then(progress_finish finish);
/// Lets Esc leave the window when no session thread lives any more, and forbids it otherwise. GUI thread.
void progress_esc_refresh();
/// A run has come to its end, however it went: when no session thread lives any more the window offers "ok", so
/// that it can always be left. GUI thread.
void progress_settle();
