#include "app/start_choice.h"

#include "app/devices.h"
#include "app/model_switch.h"
#include "app/settings.h"
#include "shell/navigator.h"
#include "toolkit/ravel/window_manager.h"

window_size start_window_size(const command_line_options& options) {
    const settings& kept = settings_get();
    const bool use_kept = !options.sized && kept.window_w > 0 && kept.window_h > 0;
    return use_kept ? window_size{kept.window_w, kept.window_h} : window_size{options.width, options.height};
}

void start_choice_restore(widget* home) {
    const settings& kept = settings_get();
    if (!kept.restore_last) return;
    if (pages_of_model(kept.last_model) != nullptr && kept.last_model != current_model())
        model_choose(home, kept.last_model);
    if (!kept.last_port.empty())
        widget_set_text_utf8(widget_lookup(home, "combo_box_ex_serial"), kept.last_port.c_str());
}

void start_choice_keep() {
    widget* home = navigator_find("home_page");
    if (home == nullptr) return;
    static_cast<void>(settings_change([home](settings& s) {
        s.window_w = widget_get_prop_int(window_manager(), "w", s.window_w);
        s.window_h = widget_get_prop_int(window_manager(), "h", s.window_h);
        if (!s.restore_last) return;
        s.last_model = current_model();
        s.last_port = widget_get_text_utf8(widget_lookup(home, "combo_box_ex_serial"));
    }));
}
