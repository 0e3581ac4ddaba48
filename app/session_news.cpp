#include "app/session_news.h"

#include "app/model_switch.h"
#include "app/navigator.h"
#include "app/paths.h"
#include "app/progress.h"
#include "app/ui_state.h"
#include "serial/port_list.h"
#include "serial/session.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/idle.h"

#include <array>
#include <atomic>
#include <memory>

namespace {

constexpr const char* home_name = "home_page";
constexpr uint8_t no_state = 255;

// Sessions of a family are numbered. What a session leaves in the GUI thread's queue carries its number, so that a
// clean-up that runs late does not wait for the thread of a session started since.
struct run_number {
    std::atomic<uint32_t> started{0};
    std::atomic<uint32_t> ending{0}; // the last that enabled the buttons again
};

std::array<run_number, family_count> runs;

run_number& run_of(family of) { return runs[static_cast<std::size_t>(of)]; }

ret_t clean_up(family of, uint32_t number) {
    if (run_of(of).started == number) session_join_threads(of);
    port_watcher_release();
    progress_settle();
    return RET_OK;
}

void button_init_post(family of) {
    run_of(of).ending = run_of(of).started.load();
    idle_queue([] { return ui_state_apply(navigator_find(home_name), ui_state::connected); });
}

void finished_post(family of) {
    const uint32_t number = run_of(of).ending;
    idle_queue([of, number] { return clean_up(of, number); });
}

void image_post(family /*of*/) {
    idle_queue([] { return model_show_code(navigator_find(home_name)); });
}

bool log_append(const std::string& path, const std::string& text) {
    const fs_file_ptr file(fs_open_file(os_fs(), path.c_str(), "a+"));
    if (file == nullptr) return false;
    fs_file_write(file.get(), text.data(), text.size());
    return true;
}

std::shared_ptr<tk_object> fail_report(family of, const std::string& log_line, const std::string& progress_text,
                                       uint8_t state) {
    tk_object_ptr made(object_default_create());
    tk_object_set_prop_str(made.get(), "win", home_name);
    tk_object_set_prop_str(made.get(), "char_log", log_line.c_str());
    tk_object_set_prop_str(made.get(), "progress_text", progress_text.c_str());
    tk_object_set_prop_uint8(made.get(), "flage_state", state);
    tk_object_set_prop_uint8(made.get(), "family", static_cast<uint8_t>(of));
    return made;
}

} // namespace

void session_news_connect() {
    session_reports reports;
    reports.progress = [](uint32_t percent, const std::string& text, uint8_t operation) {
        progress_post(nullptr, percent, text, operation);
    };
    reports.fail = [](family of, const std::string& char_log, const std::string& progress_text, uint8_t state) {
        session_fail_post(of, char_log, progress_text, state);
    };
    reports.button_init = button_init_post;
    reports.finished = finished_post;
    reports.image_changed = image_post;
    session_set_reports(std::move(reports));
}

void session_news_started(family of) { ++run_of(of).started; }

void session_news_not_started(family of, const std::string& log_line, const std::string& progress_text,
                              uint8_t state) {
    --run_of(of).started;
    const std::shared_ptr<tk_object> report = fail_report(of, log_line, progress_text, state);
    idle_queue([report] { return session_fail_display(report.get()); });
    idle_queue([] {
        progress_settle();
        return RET_OK;
    });
}

ret_t session_fail_post(family of, const std::string& log_line, const std::string& progress_text, uint8_t state) {
    const uint32_t number = run_of(of).started;
    const std::shared_ptr<tk_object> report = fail_report(of, log_line, progress_text, state);
    idle_queue([report] { return session_fail_display(report.get()); });
    idle_queue([of, number] { return clean_up(of, number); });
    return RET_INIT_FAILED;
}

ret_t session_fail_display(const tk_object* report) {
    const std::string window = tk_object_get_prop_str(report, "win", "");
    widget* home = window.empty() ? nullptr : navigator_find(window.c_str());
    if (home == nullptr || !tk_object_has_prop(report, "char_log") || !tk_object_has_prop(report, "progress_text"))
        return RET_INIT_FAILED;
    const std::string char_log = tk_object_get_prop_str(report, "char_log", "");
    log_folder_ensure();
    if (!log_append(error_log_path(), char_log)) return RET_INIT_FAILED;
    log_append(session_log_path(), char_log);
    const uint8_t state = tk_object_get_prop_uint8(report, "flage_state", no_state);
    if (state == static_cast<uint8_t>(session_kind::connect)) {
        const auto of = static_cast<family>(tk_object_get_prop_uint8(report, "family", 0));
        session_close_port(of);
        session_of(of).connected = false;
        ui_state_apply(home, ui_state::idle);
    } else {
        ui_state_apply(home, ui_state::connected);
    }
    // Shown from here rather than posted: a report that the same thread sent since would come first.
    const std::string shown = tk_object_get_prop_str(report, "progress_text", "");
    progress_update(progress_report(100, shown, operation::connect_failed).get());
    return RET_OK;
}
