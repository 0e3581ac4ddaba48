// Theme and assets at start-up.
#pragma once

#include "toolkit/core/result.h"

/// Sets the theme, loads its style and initialises the assets. RET_NOT_IMPL for a theme other than "default",
/// RET_FAIL for a missing theme name or style. GUI thread, after tk_init.
ret_t assets_init(const char* theme);
