#include "app/write_confirm.h"

#include "app/change_list.h"
#include "app/settings.h"
#include "toolkit/ravel/window_manager.h"

bool write_confirmed(const dev_obj& dev) {
    constexpr uint32_t agreed = 1;
    if (!settings_get().confirm_write) return true;
    widget* win = window_open("confirm_write");
    if (win == nullptr) return false; // what cannot be asked is not agreed to; the log says why
    const std::vector<image_difference> unwritten = dev_unwritten(dev);
    widget_set_text_utf8(widget_need(win, "confirm_write_note"), change_note_text(dev, unwritten.size()).c_str());
    widget_set_text_utf8(widget_need(win, "confirm_write_list"), change_lines_text(dev, unwritten).c_str());
    widget_on(widget_need(win, "ok"), event_type::click, [win](const event&) { return dialog_quit(win, agreed); });
    widget_on(widget_need(win, "cancel"), event_type::click, [win](const event&) { return dialog_quit(win, 0); });
    return dialog_modal(win) == agreed;
}
