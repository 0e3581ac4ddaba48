// Log with levels, to standard output (flushed) and to the debugger at once.
#pragma once

#include <string>

enum log_level_t : int { LOG_LEVEL_DEBUG = 0, LOG_LEVEL_INFO = 1, LOG_LEVEL_WARN = 2, LOG_LEVEL_ERROR = 3 };

/// Messages below this level are dropped. Any thread. Starts at LOG_LEVEL_ERROR.
void log_set_log_level(log_level_t level);
log_level_t log_get_log_level();

/// Hands `text` to the debugger sink of the platform, whatever the level. Any thread.
void log_notify_debugger(log_level_t level, const std::string& text);

/// Writes `text` as it stands (the caller brings the line end) to the debugger and to standard output, which is
/// then flushed, when `level` is at or above the current level. Any thread; one message is never torn by another.
void log_write(log_level_t level, const std::string& text);

/// Writes `text` to standard output and flushes it, whatever the level: what the program says on its console.
void log_console(const std::string& text);

/// Writes "FUNCTION:LINE condition(CONDITION) failed!\n" at warning level.
void log_condition_failed(const char* condition, const char* function, int line);

/// For tests, and programs whose standard output is for results: receives everything that log_write (past the
/// level) and log_console write, instead of standard output; an empty function restores standard output.
void log_set_capture(void (*sink)(const std::string& text, void* context), void* context);

#define RETURN_IF_NOT(condition, text, function, result)                                                           \
    do {                                                                                                           \
        if (!(condition)) {                                                                                        \
            log_condition_failed(text, function, __LINE__);                                                        \
            return result;                                                                                         \
        }                                                                                                          \
    } while (0)
