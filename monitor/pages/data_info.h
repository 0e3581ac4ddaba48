// The window that shows all data of one record.
#pragma once

#include "toolkit/ravel/widget.h"

/// Init routine of "data_info": shows `context`, the data as text (zero-ended), and binds "ok". RET_BAD_PARAMS for
/// a missing window. GUI thread.
ret_t data_info_init(widget* win, const void* context);
