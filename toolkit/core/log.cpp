#include "toolkit/core/log.h"

#include "platform/system.h"
#include "toolkit/core/text.h"

#include <atomic>
#include <cstdio>
#include <mutex>

namespace {

std::atomic<log_level_t> current_level{LOG_LEVEL_ERROR};

struct output_t {
    std::mutex lock;
    void (*sink)(const std::string& text, void* context) = nullptr;
    void* context = nullptr;
};

/// Never destroyed: threads that outlive the main function may still log.
output_t& output() {
    static output_t* const the_output = new output_t;
    return *the_output;
}

void write_locked(output_t& out, const std::string& text) {
    if (out.sink != nullptr) {
        out.sink(text, out.context);
        return;
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    std::fflush(stdout);
}

} // namespace

void log_set_log_level(log_level_t level) { current_level = level; }

log_level_t log_get_log_level() { return current_level; }

void log_notify_debugger(log_level_t, const std::string& text) { platform_debugger_output(text.c_str()); }

void log_write(log_level_t level, const std::string& text) {
    if (level < current_level) return;
    output_t& out = output();
    const std::lock_guard<std::mutex> guard(out.lock);
    log_notify_debugger(level, text);
    write_locked(out, text);
}

void log_console(const std::string& text) {
    output_t& out = output();
    const std::lock_guard<std::mutex> guard(out.lock);
    write_locked(out, text);
}

void log_condition_failed(const char* condition, const char* function, int line) {
    const char* const where = function != nullptr ? function : "";
    const char* const what = condition != nullptr ? condition : "";
    log_write(LOG_LEVEL_WARN, tk_format("%s:%d condition(%s) failed!\n", where, line, what));
}

void log_set_capture(void (*sink)(const std::string& text, void* context), void* context) {
    output_t& out = output();
    const std::lock_guard<std::mutex> guard(out.lock);
    out.sink = sink;
    out.context = context;
}
