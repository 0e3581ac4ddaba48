// What sessions report, brought to the GUI thread: progress, failure, the buttons after success, the last words.
#pragma once

#include "config/models.h"
#include "toolkit/core/object.h"

#include <cstdint>
#include <string>

/// Fills the slots that the session engine reports to. GUI thread, before the first session.
void session_news_connect();
/// A session of this family is about to start: last words of an older one do not touch the new one's thread. GUI
/// thread.
void session_news_started(family of);
/// The session could not be started after all: shows the failure and joins nothing, as a thread that still lives is
/// another session's. GUI thread.
void session_news_not_started(family of, const std::string& log_line, const std::string& progress_text,
                              uint8_t state);

/// A session gave up (its lock has been released already): posts the failure display, then the clean-up. `log_line`
/// goes to the error log and to the session log as it stands, `progress_text` is shown, `state` is the
/// operation that failed (1 connect, 2 write, 3 read). Returns RET_INIT_FAILED. Any thread.
ret_t session_fail_post(family of, const std::string& log_line, const std::string& progress_text, uint8_t state);

/// The failure display: "win" (name of the home page), "char_log", "progress_text", "flage_state", "family".
/// Restores the buttons, appends to the error log, shows the failure in the progress window. RET_INIT_FAILED, and
/// nothing done, when the page, one of the texts or the error log is missing. GUI thread.
ret_t session_fail_display(const tk_object* report);
