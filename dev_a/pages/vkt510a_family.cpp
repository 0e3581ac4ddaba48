// The A family on the home page.

#include "config/defaults.h"
#include "config/dev_obj.h"
#include "config/pages/family_pages.h"
#include "dev_a/pages/vkt510a_pages.h"
#include "dev_a/vkt510a_codec.h"

namespace {

ret_t show_code(widget* home_page) {
    dev_obj* dev = dev_get(family::a);
    if (dev == nullptr) return RET_FAIL;
    const tk_lock hold(dev->mutex);
    return vkt510a_show_code(home_page, nullptr);
}

ret_t restore_defaults(widget* home_page) {
    dev_obj* dev = dev_get(family::a);
    if (dev == nullptr) return RET_FAIL;
    const tk_lock hold(dev->mutex);
    defaults_write(family::a, dev->props);
    dev->flags[1] = 1;
    return vkt510a_show_code(home_page, nullptr);
}

constexpr page_tab tabs[] = {
    {"vkt510a_tab_button_change", "page_vkt510a_change", page_vkt510a_change_init},
    {"vkt510a_tab_button_spi", "page_vkt510a_spi", page_vkt510a_spi_init},
    {"vkt510a_tab_button_uart", "page_vkt510a_uart", page_vkt510a_uart_init},
    {"vkt510a_tab_button_can", "page_vkt510a_can", page_vkt510a_can_init},
};

constexpr family_pages pages = {
    .of = family::a,
    .device = "VKT510A",
    .log_name = "dev_vkt510a",
    .container = "vkt510a_view_1",
    .code_mode = "code_mode_vkt510a",
    .page_set = "vkt510a_pages",
    .tabs = tabs,
    .show_code = show_code,
    .restore_defaults = restore_defaults,
};

} // namespace

void vkt510a_family_register() {
    vkt510a_codec_register();
    family_ops ops = family_ops_of(family::a);
    ops.show_code = vkt510a_show_code;
    family_ops_register(family::a, ops);
    family_pages_register(&pages);
}
