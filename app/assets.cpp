#include "app/assets.h"

#include "toolkit/ravel/ravel.h"

ret_t assets_init(const char* theme) {
    if (theme == nullptr) {
        log_condition_failed("theme != NULL && am != NULL", "assets_init_internal", __LINE__);
        return RET_FAIL;
    }
    if (!assets_has_theme(theme)) {
        log_write(LOG_LEVEL_ERROR, tk_format("%s not support.\n", theme));
        return RET_NOT_IMPL;
    }
    assets_manager_set_theme(theme);
    const ret_t ret = assets_manager_preload_style();
    return ret == RET_OK ? tk_init_assets() : ret;
}
