// The line above the tabs that says where the edited values stand: beside the module, beside the defaults, or not
// taken at all. GUI thread only.
#pragma once

#include "app/families.h"
#include "toolkit/ravel/widget.h"

/// The line's text: refused inputs come first, then what a write would change, then what is the same.
std::string truth_line_text(const dev_obj& dev, std::size_t unwritten, std::size_t refused);
void truth_line_show(widget* home, const family_pages& pages, dev_obj& dev, std::size_t unwritten);
/// Leads to the first refused field, else to the list of changes.
ret_t truth_line_pressed(widget* home);
