// The generic family on the home page.

#include "config/cfg_image.h"
#include "config/defaults.h"
#include "config/dev_obj.h"
#include "config/pages/family_pages.h"
#include "config/pages/generic_pages.h"

namespace {

/// The switch is not read again here: the last form shown stays.
ret_t restore_defaults(widget* home_page) {
    defaults_write(family::generic, config_store());
    cfg_image_from_props();
    const std::string text =
        image_listing(cfg_image_get(family::generic), cfg_code_mode(), listing_blanks::restore);
    return widget_set_text_utf8(widget_lookup(home_page, "mledit"), text.c_str());
}

ret_t show_code(widget* home_page) { return cfg_image_show_code(home_page, nullptr); }

constexpr page_tab tabs[] = {
    {"table_button_change", "page_change", page_change_init},
    {"table_button_spi", "page_spi", page_spi_init},
    {"table_button_uart", "page_uart", page_uart_init},
    {"table_button_can", "page_can", page_can_init},
};

constexpr family_pages pages = {
    .of = family::generic,
    .device = "VKT531A",
    .log_name = "dev_vkt530a",
    .container = "view10",
    .code_mode = "code_mode",
    .page_set = "pages",
    .tabs = tabs,
    .show_code = show_code,
    .restore_defaults = restore_defaults,
};

} // namespace

void generic_family_register() {
    family_pages_register(&pages);
    family_ops ops = family_ops_of(family::generic);
    ops.encode = [](void*) {
        cfg_image_from_props();
        return RET_OK;
    };
    ops.decode = [](void*) {
        cfg_image_to_props();
        return RET_OK;
    };
    ops.show_code = cfg_image_show_code;
    family_ops_register(family::generic, ops);
}
