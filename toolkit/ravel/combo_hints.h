// What is greyed beside a combo box's options. GUI thread only, as all of widget.h.
#pragma once

#include "toolkit/ravel/widget.h"

/// Greyed texts that the open list shows right of the options, in the options' order ("": none; those that are
/// missing are none). They are no part of an option's text, and one goes when its row gets another text. The list
/// is as wide then as it needs to be, and never wider than the window.
ret_t combo_box_set_hints(widget* combo, const std::vector<std::string>& hints);
/// The greyed text of the option of that text; empty when there is none.
std::string combo_box_get_hint(const widget* combo, const char* text);
