#include "app/application.h"

#include "app/data_monitor.h"
#include "app/home_page.h"
#include "app/profile_window.h"
#include "app/progress.h"
#include "app/settings_window.h"
#include "assistant/pages/serial_send.h"
#include "monitor/pages/data_info.h"
#include "monitor/pages/data_page.h"
#include "platform/com_port.h"
#include "session/session_run.h"
#include "shell/err_display.h"
#include "shell/navigator.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"
#include "toolkit/core/worker.h"
#include "toolkit/table_view/table_view.h"

namespace {

constexpr uint32_t stop_patience_ms = 500;

void windows_register() {
    navigator_register_window("serial_send", serial_send_init);
    navigator_register_window("progress", progress_init);
    navigator_register_window("err_display", err_display_init);
    navigator_register_window("settings", settings_window_init);
    navigator_register_window("profile_errors", profile_errors_init);
    navigator_register_window("home_page", home_page_init);
    navigator_register_window("data_page", data_page_init);
    navigator_register_window("data_info", data_info_init);
    data_page_serve(data_monitor_device, data_monitor_left);
    serial_send_serve([] {
        const auto [session, name] = data_monitor_any();
        return assistant_device{session, name};
    });
}

} // namespace

ret_t application_init() {
    table_view_register();
    windows_register();
    return navigator_to("home_page");
}

ret_t application_exit() {
    workers_stop_all(0); // first: what is broken off below is no failure then
    com::abort_all();
    log_write(LOG_LEVEL_DEBUG, "application_exit\n");
    workers_stop_all(stop_patience_ms);
    session_log_empty();
    return RET_OK;
}

void session_log_empty() { fs_file_close(fs_open_file(os_fs(), session_log_path().c_str(), "w+")); }
