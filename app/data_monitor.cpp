#include "app/data_monitor.h"

#include "app/devices.h"
#include "app/edits.h"
#include "app/families.h"
#include "app/model_switch.h"
#include "app/progress.h"
#include "app/session_buttons.h"
#include "app/ui_state.h"
#include "shell/err_display.h"
#include "shell/navigator.h"

ret_t data_monitor_pressed(widget* home) {
    const family_pages* pages = model_selected(home);
    if (pages == nullptr) return RET_FAIL;
    const dev_obj* dev = device_of(*pages);
    if (dev == nullptr || !dev->session.connected()) return err_display_show(text_connect_first);
    if (dev->of.monitor_refusal == nullptr) return RET_OK;
    const ret_t ret = session_read_for_monitor(home);
    if (ret == RET_OK)
        progress_then({.refusal = [dev] { return dev->of.monitor_refusal(*dev); },
                       .then = [] { return navigator_to("data_page"); }});
    return ret;
}

monitored_device data_monitor_device() {
    dev_obj* dev = current_device();
    if (dev == nullptr || !dev->session.connected()) return {};
    widget* port = widget_lookup(navigator_find("home_page"), "combo_box_ex_serial");
    return {&dev->session, current_model() + " · " + widget_get_text_utf8(port)};
}

void data_monitor_left(bool lost) {
    if (!lost) return;
    widget* home = navigator_find("home_page");
    ui_state_apply(home, ui_state::lost);
    if (dev_obj* dev = current_device()) dev_module_unknown(*dev);
    edits_show(home);
}

monitored_device data_monitor_any() {
    for (const family_pages* pages : families()) {
        dev_obj* dev = device_of(*pages);
        if (dev == nullptr || dev->of.monitor_refusal == nullptr) continue;
        const monitored_device shown = data_monitor_device();
        return {&dev->session, shown.session == &dev->session ? shown.name : ""};
    }
    return {};
}
