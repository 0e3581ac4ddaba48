#include "app/look.h"

#include "platform/system.h"
#include "toolkit/core/conf_json.h"
#include "toolkit/core/fs.h"
#include "toolkit/core/log.h"
#include "toolkit/core/text.h"
#include "toolkit/ravel/ravel.h"

namespace {

constexpr const char* dark_key = "dark";

/// What is kept; null when there is nothing.
conf_json_ptr kept() { return fs_file_exist(os_fs(), look_file) ? conf_json_load(look_file) : nullptr; }

void keep(bool dark) {
    conf_json_ptr conf = kept();
    if (conf == nullptr) conf = conf_json_create(look_file);
    conf_json_set_bool(conf.get(), dark_key, dark);
    if (conf_json_save_as(conf.get(), nullptr) != RET_OK)
        log_write(LOG_LEVEL_WARN, tk_format("%s cannot be written\n", look_file));
}

} // namespace

void look_start() {
    const bool of_system = platform_prefers_dark() || system_info_is_dark();
    theme_set_dark(conf_json_get_bool(kept().get(), dark_key, of_system));
}

void look_show(widget* home) {
    widget* button = widget_need(home, "button_look");
    widget_set_text_utf8(button, theme_is_dark() ? "浅色" : "深色");
    widget_set_tooltip(button, theme_is_dark() ? "改用浅色界面，下次启动时保留　Alt+T"
                                               : "改用深色界面，下次启动时保留　Alt+T");
}

ret_t look_switch(widget* home) {
    const ret_t ret = theme_set_dark(!theme_is_dark());
    if (ret != RET_OK) return ret;
    look_show(home);
    keep(theme_is_dark());
    return RET_OK;
}
