#include "app/settings_window.h"

#include "app/settings.h"
#include "toolkit/core/log.h"
#include "toolkit/ravel/window_manager.h"

ret_t settings_window_init(widget* win, const void* /*context*/) {
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_BAD_PARAMS);
    for (const settings_flag& row : settings_flags) {
        widget* w = widget_need(win, row.key);
        widget_set_value_int(w, settings_get().*row.value ? 1 : 0);
        widget_on(w, event_type::value_changed, [w, win, value = row.value](const event&) {
            const bool on = widget_get_value_int(w) != 0;
            const ret_t kept = settings_change([on, value](settings& s) { s.*value = on; });
            return widget_set_visible(widget_lookup(win, "settings_lost"), kept != RET_OK);
        });
    }
    widget_set_visible(widget_need(win, "settings_lost"), false);
    widget_on(widget_need(win, "ok"), event_type::click, [win](const event&) { return dialog_quit(win, 0); });
    return RET_OK;
}
