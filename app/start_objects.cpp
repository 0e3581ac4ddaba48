#include "app/start_objects.h"

#include "app/devices.h"
#include "app/edits.h"
#include "app/home_scroll.h"
#include "app/model_switch.h"
#include "app/module_contents.h"
#include "app/paths.h"
#include "app/port_selector.h"
#include "app/session_buttons.h"
#include "app/session_results.h"
#include "app/settings.h"
#include "serial/port_about.h"
#include "serial/port_list.h"

namespace {

unsigned opened = 0;

} // namespace

void start_objects_create() {
    if (opened++ != 0) return;
    devices_report_to(session_results);
    model_followed_by({edits_follow, edits_code_shown, edits_show});
    module_check_after_write({[] { return settings_get().check_after_write; }, session_check_after_write});
    port_selector_connect();
    error_log_name_from_now();
    log_folder_ensure();
    // The first worker: everything that it may touch exists by now.
    port_watcher_start();
    port_abouts_start(port_watcher_scan_now);
    home_scroll_reset();
}

unsigned start_objects_opened() { return opened; }
