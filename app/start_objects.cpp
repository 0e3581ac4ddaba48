#include "app/start_objects.h"

#include "app/home_scroll.h"
#include "app/paths.h"
#include "app/port_selector.h"
#include "app/session_news.h"
#include "config/dev_obj.h"
#include "serial/port_list.h"
#include "serial/session.h"

namespace {

unsigned opened = 0;

} // namespace

void start_objects_create() {
    if (opened++ != 0) return;
    config_objects_create();
    session_context& generic = session_of(family::generic);
    generic.operation = 0;
    generic.port_open = false;
    session_news_connect();
    port_selector_connect();
    error_log_name_from_now();
    log_folder_ensure();
    // The first worker: everything that it may touch exists by now.
    port_watcher_start();
    home_scroll_reset();
}

unsigned start_objects_opened() { return opened; }
