// The program's window, up as at its start, for what measures it from inside.
#pragma once

#include "app/application.h"
#include "toolkit/ravel/ravel.h"

#include <cstdio>

/// Opens the home page in a window of 1280 x 750. False, with a line on standard error, where there are no
/// resources: the working directory must be stage/bin. GUI thread, once.
inline bool bench_program_up(const char* program) {
    tk_pre_init();
    if (tk_init(1280, 750, app_type::desktop, "bench", "../res") != RET_OK) {
        std::fprintf(stderr, "%s: run it in stage/bin\n", program);
        return false;
    }
    system_info_set_default_font("default");
    assets_manager_set_theme("default");
    assets_manager_preload_style();
    tk_init_assets();
    tk_ext_widgets_init();
    application_init();
    return true;
}
