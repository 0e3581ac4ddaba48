// The least that a program on this toolkit can be: one window with nothing in it. start.py measures the tool
// against it.
#include "platform/system.h"
#include "toolkit/ravel/ravel.h"

#include <cstdlib>

int vkt_main(const std::wstring&) {
    platform_com_init();
    tk_pre_init();
    if (tk_init(1280, 750, app_type::desktop, "empty", "../res") != RET_OK) return 1;
    system_info_set_default_font("default");
    assets_manager_set_theme("default");
    assets_manager_preload_style();
    tk_init_assets();
    tk_ext_widgets_init();
    locale_info_change("zh", "CN");
    if (window_open("empty") == nullptr) return 1;
    const char* script = std::getenv("VKT_DRIVE");
    if (script != nullptr && tk_drive(script) != RET_OK) return 1;
    tk_run();
    const int status = tk_exit_status();
    tk_exit();
    return status;
}
