// The B family on the home page.

#include "config/defaults.h"
#include "config/pages/family_pages.h"
#include "dev_b/pages/vkt610b_code_view.h"
#include "dev_b/pages/vkt610b_pages.h"
#include "dev_b/vkt610b_session_ops.h"

namespace {

ret_t show_code(widget* /*home_page*/) {
    return vkt610b_change_store([](tk_object*) { return RET_OK; });
}

/// The version is the module's own and stays.
ret_t restore_defaults(widget* /*home_page*/) {
    return vkt610b_change_store([](tk_object* props) {
        defaults_write(family::b, props, "version");
        dev_get(family::b)->flags[1] = 1;
        return RET_OK;
    });
}

constexpr page_tab tabs[] = {
    {"vkt610b_tab_button_change", "page_vkt610b_change", page_vkt610b_change_init},
    {"vkt610b_tab_button_spi", "page_vkt610b_spi", page_vkt610b_spi_init},
    {"vkt610b_tab_button_uart", "page_vkt610b_uart", page_vkt610b_uart_init},
    {"vkt610b_tab_button_canfd", "page_vkt610b_canfd", page_vkt610b_canfd_init},
};

constexpr family_pages pages = {
    .of = family::b,
    .device = "VKT610B",
    .log_name = "dev_vkt610b",
    .container = "vkt610b_view_1",
    .code_mode = "code_mode_vkt610b",
    .page_set = "vkt610b_pages",
    .tabs = tabs,
    .data_monitor = true,
    .show_code = show_code,
    .restore_defaults = restore_defaults,
};

} // namespace

void vkt610b_family_register() {
    vkt610b_session_ops_register();
    family_ops ops = family_ops_of(family::b);
    ops.encode = vkt610b_encode;
    ops.decode = vkt610b_decode;
    ops.show_code = vkt610b_code_mode;
    family_ops_register(family::b, ops);
    family_pages_register(&pages);
}
