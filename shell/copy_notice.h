// What a copy button does: to the clipboard, and a word that it is there.
#pragma once

#include "toolkit/ravel/widget.h"

inline constexpr const char* text_copied = "已复制";
/// How long the button says so, in milliseconds.
inline constexpr uint32_t copy_notice_ms = 2000;

/// Puts `text` on the system's clipboard and shows text_copied on `button` for copy_notice_ms, then its own label
/// again; pressed once more meanwhile, the time begins anew. The button keeps its size where the layout leaves room
/// for both. RET_BAD_PARAMS without a button or a text. GUI thread.
ret_t copy_with_notice(widget* button, const char* text);
