// What sessions report, brought to the GUI thread: progress, failures, images, the buttons of a connected module,
// and the final cleanup.
#pragma once

#include "app/families.h"

/// What the sessions of a family's device report to. Any thread; the functions only post.
session_reports session_results(const family_pages& pages);

/// A session gave up (its port has been given back already): posts the failure display, then the final cleanup. The
/// log line and the cause go to the console, to the error log and to the session log as they stand, the text is
/// shown. Returns RET_INIT_FAILED.
/// Any thread.
ret_t session_fail_post(const family_pages& pages, const session_failure& failure);
/// The session could not be started at all: shows the failure, and cleans up after no session. GUI thread.
void session_not_started(const family_pages& pages, session_kind kind, const std::string& log_line,
                         const std::string& text);

/// The failure display: restores the buttons, appends to the logs, shows the failure in the progress window.
/// RET_INIT_FAILED, and nothing done, when the home page or the error log is missing. GUI thread.
ret_t session_fail_display(const family_pages& pages, const session_failure& failure);
