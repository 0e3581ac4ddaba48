#include "shell/err_display.h"

#include "shell/navigator.h"
#include "toolkit/core/idle.h"
#include "toolkit/core/log.h"

ret_t err_display_init(widget* win, const void* context) {
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_BAD_PARAMS);
    widget_on(widget_need(win, "ok"), event_type::click, [](const event&) { return navigator_back(); });
    widget_set_text_utf8(widget_need(win, "err_str"), context == nullptr ? "" : static_cast<const char*>(context));
    return RET_OK;
}

ret_t err_display_show(const char* message) { return navigator_to_with_context("err_display", message); }

ret_t err_display_post(const std::string& message) {
    return idle_queue([message] { return err_display_show(message.c_str()); });
}
