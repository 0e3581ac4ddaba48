#include "app/session_results.h"

#include "app/devices.h"
#include "app/edits.h"
#include "app/last_session.h"
#include "app/module_contents.h"
#include "app/paths.h"
#include "app/progress.h"
#include "app/ui_state.h"
#include "shell/navigator.h"
#include "toolkit/core/date_time.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"

namespace {

constexpr const char* home_name = "home_page";

void post(std::function<void()> job) {
    idle_queue([job = std::move(job)] {
        job();
        return RET_OK;
    });
}

void clean_up(const family_pages& pages, uint32_t run) {
    if (dev_obj* dev = device_of(pages)) dev->session.join(run);
    progress_settle();
}

void take_image(const family_pages& pages, uint32_t run, const session_bytes& image) {
    dev_obj* dev = device_of(pages);
    if (dev == nullptr) return;
    if (module_reply(*dev, run, image)) return;
    dev_accept(*dev, image);
    dev_show(*dev);
    dev_edited(*dev, {.name = "读取配置"});
}

/// The last report of a session that went well.
void take_end(const family_pages& pages, uint32_t run) {
    clean_up(pages, run);
    dev_obj* dev = device_of(pages);
    if (dev == nullptr) return;
    const auto failure = module_session_ended(navigator_find(home_name), *dev, run);
    if (!failure) return;
    log_console(failure->log_line);
    session_fail_display(pages, *failure);
}

bool log_append(const std::string& path, const std::string& text) {
    const fs_file_ptr file(fs_open_file(os_fs(), path.c_str(), "a+"));
    if (file == nullptr) return false;
    fs_file_write(file.get(), text.data(), text.size());
    return true;
}

/// The console has the lines at once, whatever becomes of the logs.
void post_display(const family_pages& pages, const session_failure& failure) {
    log_console(failure.log_line + failure.cause);
    idle_queue([of = &pages, failure] { return session_fail_display(*of, failure); });
}

} // namespace

session_reports session_results(const family_pages& pages) {
    const family_pages* of = &pages;
    return {
        .progress = [](const session_progress& p) { progress_post(p.percent, p.text, p.operation); },
        .moved = [](const session_traffic& t) { post([at = time_now_ms(), t] { last_session_bytes(at, t); }); },
        .failed = [of](const session_failure& failure) { session_fail_post(*of, failure); },
        .image = [of](uint32_t run,
                      const session_bytes& image) { post([of, run, image] { take_image(*of, run, image); }); },
        .connected = [] { post([] { ui_state_apply(navigator_find(home_name), ui_state::connected); }); },
        .finished = [of](uint32_t run) { post([of, run] { take_end(*of, run); }); },
    };
}

ret_t session_fail_post(const family_pages& pages, const session_failure& failure) {
    post_display(pages, failure);
    post([of = &pages, run = failure.run] { clean_up(*of, run); });
    return RET_INIT_FAILED;
}

void session_not_started(const family_pages& pages, session_kind kind, const std::string& log_line,
                         const std::string& text) {
    post_display(pages, {0, kind, log_line, text});
    post(progress_settle);
}

ret_t session_fail_display(const family_pages& pages, const session_failure& failure) {
    widget* home = navigator_find(home_name);
    if (dev_obj* dev = device_of(pages)) module_session_failed(*dev, failure);
    edits_show(home); // whatever becomes of the logs
    if (home == nullptr) return RET_INIT_FAILED;
    log_folder_ensure();
    const std::string lines = failure.log_line + failure.cause;
    if (!log_append(error_log_path(), lines)) return RET_INIT_FAILED;
    log_append(session_log_path(), lines);
    if (failure.kind == session_kind::connect) {
        if (dev_obj* dev = device_of(pages)) dev->session.give_up();
        ui_state_apply(home, ui_state::idle);
    } else {
        ui_state_apply(home, failure.port_lost ? ui_state::lost : ui_state::connected);
    }
    // Shown from here rather than posted: a report that the same thread sent since would come first.
    progress_update(
        {.window_open = true, .percent = 100, .text = failure.text, .operation = operation::connect_failed});
    last_session_line(time_now_ms(), failure.cause);
    edits_show(home);
    return RET_OK;
}
