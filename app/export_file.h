// 导出: the frames that a write would send, in a file for other programs. GUI thread.
#pragma once

#include "toolkit/ravel/widget.h"

/// Asks for file and form, and writes it. RET_FAIL, and a message, when it cannot be written.
ret_t export_frames_to_file(widget* home);
