#include "app/application.h"

#include "app/err_display.h"
#include "app/families.h"
#include "app/home_page.h"
#include "app/navigator.h"
#include "app/progress.h"
#include "config/dev_obj.h"
#include "platform/com_port.h"
#include "serial/port_list.h"
#include "serial/session.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"
#include "toolkit/table_view/table_view.h"

#include <utility>

namespace {

// Windows above and below the others; this program has neither.
constexpr const char* system_bars[] = {"", ""};

ret_t custom_widgets_register() { return RET_OK; }
ret_t custom_exit() { return RET_OK; }

void windows_register() {
    navigator_register_window("progress", progress_init);
    navigator_register_window("err_display", err_display_init);
    navigator_register_window("home_page", home_page_init);
}

void threads_destroy() {
    session_context& generic = session_of(family::generic);
    for (tk_thread** slot : {&generic.connect_thread, &generic.read_thread, &generic.write_thread})
        tk_thread_destroy(std::exchange(*slot, nullptr));
    port_list_threads_destroy();
    session_disconnect_abandon();
}

// Unlike the others, the B family's threads are joined; they wait for nothing by now. The A family's are left
// alone.
void b_threads_join() {
    if (dev_get(family::b) == nullptr) return;
    session_context& b = session_of(family::b);
    for (tk_thread** slot : {&b.connect_thread, &b.read_thread, &b.write_thread}) {
        tk_thread* thread = std::exchange(*slot, nullptr);
        if (thread == nullptr) continue;
        tk_thread_request_stop(thread);
        tk_thread_join(thread);
        tk_thread_destroy(thread);
    }
}

} // namespace

ret_t application_init() {
    table_view_register();
    custom_widgets_register();
    families_register();
    windows_register();
    for (const char* bar : system_bars)
        if (*bar != '\0') navigator_to(bar);
    return navigator_to("home_page");
}

ret_t application_exit() {
    com::abort_all();
    custom_exit();
    log_write(LOG_LEVEL_DEBUG, "application_exit\n");
    threads_destroy();
    config_objects_destroy();
    b_threads_join();
    session_log_empty();
    return RET_OK;
}

void session_log_empty() { fs_file_close(fs_open_file(os_fs(), session_log_path().c_str(), "w+")); }
