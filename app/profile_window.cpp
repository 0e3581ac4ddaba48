#include "app/profile_window.h"

#include "app/profile_title.h"
#include "shell/copy_notice.h"
#include "shell/navigator.h"
#include "toolkit/core/log.h"
#include "toolkit/ravel/window_manager.h"

ret_t profile_errors_init(widget* win, const void* context) {
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_BAD_PARAMS);
    const auto* shown = static_cast<const profile_errors_text*>(context);
    if (shown != nullptr) {
        widget_set_text_utf8(widget_need(win, "profile_errors_file"), shown->file.c_str());
        widget_set_text_utf8(widget_need(win, "profile_errors_list"), shown->lines.c_str());
    }
    widget_on(widget_need(win, "button_copy_errors"), event_type::click, [win](const event& what) {
        const std::string lines = widget_get_text_utf8(widget_lookup(win, "profile_errors_list"));
        return copy_with_notice(what.target, lines.c_str());
    });
    widget_on(widget_need(win, "ok"), event_type::click, [win](const event&) { return dialog_quit(win, 0); });
    return RET_OK;
}

ret_t profile_errors_show(const std::string& path, const std::vector<profile_refusal>& refusals) {
    profile_errors_text shown{path + "　没有任何值被改动", {}};
    for (const profile_refusal& one : refusals)
        shown.lines += (shown.lines.empty() ? "" : "\n") + profile_refusal_line(one);
    return navigator_to_with_context("profile_errors", &shown);
}

bool profile_other_agreed(const std::string& path, const std::string& its_model, const std::string& model) {
    constexpr uint32_t agreed = 1;
    widget* win = window_open("profile_other");
    if (win == nullptr) return false;
    const std::string text = path_name(path) + " 是 " + its_model + " 的配置，当前型号是 " + model + "。切换到 " +
                             its_model + " 并载入吗？";
    widget_set_text_utf8(widget_need(win, "profile_other_text"), text.c_str());
    widget_on(widget_need(win, "ok"), event_type::click, [win](const event&) { return dialog_quit(win, agreed); });
    widget_on(widget_need(win, "cancel"), event_type::click, [win](const event&) { return dialog_quit(win, 0); });
    return dialog_modal(win) == agreed;
}
