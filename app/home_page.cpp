#include "app/home_page.h"

#include "app/change_list.h"
#include "app/code_view.h"
#include "app/data_monitor.h"
#include "app/edits.h"
#include "app/export_file.h"
#include "app/families.h"
#include "app/field_place.h"
#include "app/home_scroll.h"
#include "app/kept_edits.h"
#include "app/look.h"
#include "app/model_switch.h"
#include "app/port_selector.h"
#include "app/profile_files.h"
#include "app/session_buttons.h"
#include "app/start_choice.h"
#include "app/start_objects.h"
#include "app/truth_line.h"
#include "app/ui_state.h"
#include "serial/port_list.h"
#include "shell/copy_notice.h"
#include "shell/err_display.h"
#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"

namespace {

constexpr const char* version_text = "版本号：V" VKT_VERSION;

ret_t progress_forward(widget* /*home*/) { return navigator_switch_to("progress", false); }

ret_t code_copy(widget* home) {
    const std::string code = widget_get_text_utf8(widget_lookup(home, "mledit"));
    return copy_with_notice(widget_lookup(home, "button_copy"), code.c_str());
}

/// The offer of what the last closing has left.
ret_t kept_show(widget* home) {
    const bool offered = kept_edits_offer().has_value();
    for (const char* name : {"button_kept", "button_kept_dismiss"})
        widget_set_visible(widget_need(home, name), offered);
    return RET_OK;
}

ret_t kept_restore(widget* home) {
    const ret_t ret = kept_edits_restore(home);
    kept_show(home);
    return ret;
}

ret_t kept_dismiss(widget* home) {
    kept_edits_dismiss();
    return kept_show(home);
}

struct binding {
    const char* name;
    event_type type;
    ret_t (*handler)(widget* home);
};

constexpr binding bindings[] = {
    {"combo_box_ex_dev", event_type::value_changed, model_switch},
    {"button", event_type::click, session_connect_pressed},
    {"button2", event_type::click, session_disconnect_pressed},
    {"button_read", event_type::click, session_read_pressed},
    {"button_write", event_type::click, session_write_pressed},
    {"button_default", event_type::click, model_restore_defaults},
    {"button_check", event_type::click, session_check_pressed},
    {"button_undo", event_type::click, edits_undo},
    {"button_redo", event_type::click, edits_redo},
    {"button_list_undo", event_type::click, edits_undo},
    {"button_list_redo", event_type::click, edits_redo},
    {"truth_line", event_type::click, truth_line_pressed},
    {"button_kept", event_type::click, kept_restore},
    {"button_kept_dismiss", event_type::click, kept_dismiss},
    {"button_data", event_type::click, data_monitor_pressed},
    {"button_serial_assistant", event_type::click, [](widget*) { return navigator_to("serial_send"); }},
    {"progress_button", event_type::click, progress_forward},
    {"button_copy", event_type::click, code_copy},
    {"button_look", event_type::click, look_switch},
    {"button_open", event_type::click, profile_open},
    {"combo_recent", event_type::value_changed, profile_recent_picked},
    {"button_save", event_type::click, profile_save_here},
    {"button_save_as", event_type::click, profile_save_as},
    {"button_export", event_type::click, export_frames_to_file},
    {"button_settings", event_type::click, [](widget*) { return navigator_to("settings"); }},
};

constexpr const char* hidden_at_start[] = {"progress_bar", "label2", "label3", "label4", "hscroll_label"};

void bind(widget* home) {
    for (const auto& row : bindings)
        widget_on(widget_need(home, row.name), row.type, [home, handler = row.handler](const event& what) {
            // A shortcut leaves the focus where one types: what is typed there is taken first.
            if (what.type == event_type::click) widget_set_focused(what.target);
            return handler(home);
        });
    for (const char* name : hidden_at_start) widget_set_visible(widget_lookup(home, name), false);
    code_view_bind(home, field_go_to);
    model_bind(home);
    change_list_bind(home, edits_applied);
    widget_set_text_utf8(widget_need(home, "version_name"), version_text);
    look_show(home);
    port_selector_bind(home);
    profile_bind(home);
    home_scroll_bind(home);
}

} // namespace

ret_t home_page_init(widget* win, const void* /*context*/) {
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_BAD_PARAMS);
    start_objects_create();
    model_window_changed();
    bind(win);
    model_selector_fill(win);
    ui_state_apply(win, ui_state::idle);
    // The page shown first is filled once more when the window is up.
    idle_add([] { return model_page_refresh(navigator_find("home_page")); });
    const ret_t ret = model_start(win);
    if (ret != RET_OK) return ret;
    start_choice_restore(win);
    kept_show(win);
    if (authority_check() != 0) err_display_post(text_no_permission);
    return RET_OK;
}
