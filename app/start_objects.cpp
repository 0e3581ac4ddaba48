#include "app/start_objects.h"

#include "app/devices.h"
#include "app/home_scroll.h"
#include "app/paths.h"
#include "app/port_selector.h"
#include "app/session_results.h"
#include "serial/port_about.h"
#include "serial/port_list.h"

namespace {

unsigned opened = 0;

} // namespace

void start_objects_create() {
    if (opened++ != 0) return;
    devices_report_to(session_results);
    port_selector_connect();
    error_log_name_from_now();
    log_folder_ensure();
    // The first worker: everything that it may touch exists by now.
    port_watcher_start();
    port_abouts_start(port_watcher_scan_now);
    home_scroll_reset();
}

unsigned start_objects_opened() { return opened; }
