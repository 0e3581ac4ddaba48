// What the last session did, step by step, with its bytes: the progress window shows it between two sessions.
// GUI thread.
#pragma once

#include "app/progress_report.h"
#include "session/session_reports.h"

#include <cstdint>
#include <string>

/// A session is about to start: nothing is kept of the one before.
void last_session_begin();
/// Keeps a report that was shown; a text that only the percentage changed of is kept once.
void last_session_step(const progress_report& report);
/// Keeps a line that belongs to the step before: a cause of a failure. Line feeds around it are dropped.
void last_session_line(int64_t at_ms, const std::string& text);
/// Keeps bytes that were moved. `at_ms` as time_now_ms().
void last_session_bytes(int64_t at_ms, const session_traffic& traffic);

/// The report shown last; null before the first one.
const progress_report* last_session_report();
/// A line for each of what was kept: seconds since the first one with three decimals, then the step's text, or 发送
/// or 接收 and the bytes. Empty when there is nothing.
std::string last_session_text();
