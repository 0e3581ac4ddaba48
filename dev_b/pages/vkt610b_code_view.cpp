#include "dev_b/pages/vkt610b_code_view.h"

#include "dev_b/vkt610b_session_ops.h"
#include "toolkit/core/log.h"
#include "toolkit/ravel/window_manager.h"

tk_object* vkt610b_props() {
    const dev_obj* dev = dev_get(family::b);
    return dev == nullptr ? nullptr : dev->props;
}

tk_mutex* vkt610b_mutex() {
    const dev_obj* dev = dev_get(family::b);
    return dev == nullptr ? nullptr : dev->mutex;
}

ret_t vkt610b_code_mode(widget* /*window*/, void* /*event*/) {
    vkt610b_encode(nullptr);
    widget* home = widget_child(window_manager(), "home_page");
    const int32_t selector = widget_get_value_int(widget_lookup(home, "code_mode_vkt610b"));
    const auto form = static_cast<std::size_t>(vkt610b_form_of(selector));
    const std::string& listing = vkt610b_state_get().listing[form];
    if (widget_set_text_utf8(widget_lookup(home, "mledit"), listing.c_str()) != RET_OK)
        log_console("set mledit_text failed!\n");
    return RET_OK;
}

ret_t vkt610b_change_store(const std::function<ret_t(tk_object* props)>& work) {
    tk_mutex* mutex = vkt610b_mutex();
    if (mutex == nullptr) return RET_FAIL;
    const tk_lock hold(mutex);
    const ret_t result = work(vkt610b_props());
    vkt610b_code_mode(nullptr, nullptr);
    return result;
}
