// The progress window, and the reports that reach it from any thread.
#pragma once

#include "toolkit/core/object.h"
#include "toolkit/ravel/widget.h"

#include <cstdint>
#include <string>

/// Operation codes of a report. A report of 100 % with `connect_failed` is how every failure is shown.
namespace operation {
inline constexpr uint8_t connect = 0;
inline constexpr uint8_t connect_failed = 1;
inline constexpr uint8_t write = 2;
inline constexpr uint8_t read = 3;
inline constexpr uint8_t mode_change = 8;
} // namespace operation

/// Posts a report to the "progress" window: `percent` 0 to 100, the step text, an operation code. `window` is not
/// looked at. A report posted while no progress window is open is dropped when its turn comes, even if one has been
/// opened by then. Returns the result of idle_queue. Any thread.
ret_t progress_post(widget* window, uint32_t percent, const std::string& text, uint8_t operation);

/// A report as progress_post makes it, for progress_update. Any thread.
tk_object_ptr progress_report(uint32_t percent, const std::string& text, uint8_t operation);
/// Shows a report: "win" (name of the window, absent when none was open), "propgress_value", "text_name", "flage".
/// At 100 % the visible configuration page is filled again and "ok" is offered. RET_INIT_FAILED, and nothing shown,
/// when window, text or percentage is missing. GUI thread.
ret_t progress_update(const tk_object* report);

/// Init routine of "progress". RET_BAD_PARAMS for a missing window. GUI thread.
ret_t progress_init(widget* win, const void* context);

/// Opens the window for a run that is about to start: "ok" is hidden, Esc does not leave it. GUI thread.
ret_t progress_open_for_run();
/// Lets Esc leave the window when no session thread lives any more, and forbids it otherwise. GUI thread.
void progress_esc_refresh();
/// A run has come to its end, however it went: when no session thread lives any more the window offers "ok", so
/// that it can always be left. GUI thread.
void progress_settle();
