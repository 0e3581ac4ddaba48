#include "app/application.h"
#include "app/assets.h"
#include "app/command_line.h"
#include "app/kept_edits.h"
#include "app/look.h"
#include "app/paths.h"
#include "app/start_choice.h"
#include "platform/com_port.h"
#include "platform/system.h"
#include "shell/navigator.h"
#include "toolkit/core/worker.h"
#include "toolkit/ravel/ravel.h"

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <string>
#include <thread>

namespace {

constexpr const char* program_name = "VKTCfgTools";
constexpr const char* theme_name = "default";
constexpr int status_no_window = 1;
constexpr int status_script_failed = 3;
constexpr std::chrono::milliseconds exit_patience{700};

// Said on both streams: a program started from a window has only the one, a redirected one only the other.
void complain(const std::string& text) {
    log_console(text + "\n");
    std::fputs((text + "\n").c_str(), stderr);
}

bool toolkit_up(const command_line_options& options) {
    if (options.console) platform_open_console();
    const window_size size = start_window_size(options);
    if (tk_init(size.w, size.h, app_type::desktop, program_name, resource_root().c_str()) != RET_OK) {
        complain(std::string(program_name) + ": no resources in " + resource_root());
        return false;
    }
    for (const char* name : {"home_page", "page_change"}) window_read_ahead(name); // while the fonts are looked up
    if (system_info_get_app_type() != app_type::simulator) tk_set_lcd_orientation(0);
    system_info_set_default_font("default");
    assets_init(theme_name);
    look_start();
    tk_ext_widgets_init();
    log_set_log_level(LOG_LEVEL_DEBUG);
    log_write(LOG_LEVEL_DEBUG, tk_format("Build at: %s %s\n", __DATE__, __TIME__));
    window_manager_set_cursor(window_manager(), "cursor");
    locale_info_change("zh", "CN");
    return true;
}

// Faults of the port, for tests.
void faults_apply() {
    const char* faults = std::getenv("VKT_COM_FAULT");
    if (faults != nullptr && !com::fault_parse(faults))
        complain(std::string("VKT_COM_FAULT not understood: ") + faults);
}

// A script of user actions, for tests and demonstrations.
bool script_apply() {
    const char* script = std::getenv("VKT_DRIVE");
    if (script == nullptr || *script == '\0' || tk_drive(script) == RET_OK) return true;
    complain(std::string("VKT_DRIVE cannot be read: ") + script);
    return false;
}

int run(const command_line_options& options) {
    if (!toolkit_up(options)) return status_no_window;
    faults_apply();
    application_init();
    if (navigator_find("home_page") == nullptr) {
        complain(std::string(program_name) + ": " + window_open_error());
        return status_no_window;
    }
    if (!script_apply()) return status_script_failed;
    tk_run();
    return tk_exit_status();
}

// A driver that hangs in a call of its own (closing a stuck adapter, say) must not keep the process: whatever is
// left of an orderly end after a moment is given up, but for the session log, which is left empty. Not a toolkit
// thread: those are counted as workers that still live.
class exit_guard {
  public:
    explicit exit_guard(int status)
        : thread_([this, status] {
              std::unique_lock hold(mutex_);
              if (ended_now_.wait_for(hold, exit_patience, [this] { return ended_; })) return;
              session_log_empty();
              platform_exit_now(status);
          }) {}
    ~exit_guard() {
        {
            const std::lock_guard hold(mutex_);
            ended_ = true;
        }
        ended_now_.notify_one();
        thread_.join();
    }
    exit_guard(const exit_guard&) = delete;
    exit_guard& operator=(const exit_guard&) = delete;

  private:
    std::mutex mutex_;
    std::condition_variable ended_now_;
    bool ended_ = false;
    std::thread thread_; // last: it uses the others
};

} // namespace

int vkt_main(const std::wstring& command_line) {
    const auto arguments = command_line_split(str_from_wstr(command_line));
    platform_com_init();
    tk_pre_init();
    const int status = run(command_line_options_of(arguments));
    {
        const exit_guard guard(status);
        kept_edits_at_closing();
        start_choice_keep();
        application_exit();
        tk_exit();
        std::fflush(stdout);
    }
    // A worker that has not ended by now must not see the process being taken down around it.
    if (workers_running() != 0) platform_exit_now(status);
    return status;
}
