#include "dev_b/pages/bps_error.h"

#include "dev_b/pages/bps_form.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/window_manager.h"

namespace {

void store_forced(dev_obj& dev) {
    const char* name = bps_window_name(1);
    widget* calculator = widget_child(window_manager(), name);
    if (calculator == nullptr) {
        log_write(LOG_LEVEL_ERROR, tk_format("%s is not open, no bit timing stored\n", name));
        return;
    }
    const timing_form form = bps_form_read(calculator, 1);
    bps_change_store(dev, [&form](tk_object* props) { return timing_store_forced(props, form); });
}

} // namespace

uint32_t bps_error_ask(dev_obj& dev) {
    widget* dialog = window_open("bps_do_error");
    if (dialog == nullptr) return bps_error_back;
    widget_on(widget_need(dialog, "canfd1_no"), event_type::click,
              [dialog](const event&) { return dialog_quit(dialog, bps_error_back); });
    widget_on(widget_need(dialog, "canfd1_ok"), event_type::click, [dialog, &dev](const event&) {
        store_forced(dev);
        return dialog_quit(dialog, bps_error_stored);
    });
    return dialog_modal(dialog);
}
