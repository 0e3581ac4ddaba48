#include "monitor/pages/data_info.h"

#include "shell/navigator.h"
#include "toolkit/core/log.h"

ret_t data_info_init(widget* win, const void* context) {
    RETURN_IF_NOT(win != nullptr, "win != NULL", __func__, RET_BAD_PARAMS);
    widget_on(widget_need(win, "ok"), event_type::click, [](const event&) { return navigator_back(); });
    widget_set_text_utf8(widget_need(win, "edit_data"),
                         context == nullptr ? "" : static_cast<const char*>(context));
    return RET_OK;
}
