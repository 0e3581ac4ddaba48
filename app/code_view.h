// The code view lives both ways: what differs from the module is marked in it, resting on a field marks its bytes,
// resting on a byte says its field, and a click on it goes there. GUI thread only.
#pragma once

#include "fields/family_pages.h"

#include <string_view>

/// Shows the page of a field and gives its widget the focus.
using code_view_go_to = ret_t (*)(widget* home, const family_pages& pages, std::string_view key);
/// Attaches what the pointer does in the code view and on the pages' fields; `go_to` is where a click leads.
void code_view_bind(widget* home, code_view_go_to go_to);
/// Shows a device's configuration as text, with its marks. RET_FAIL when the window has no place for it.
ret_t code_view_show(widget* home, const family_pages& pages, const dev_obj& dev, bool restored);
/// Brings the marks up to date after what is known of the module has changed; not for a family that is not shown.
void code_view_refresh(widget* home, const family_pages& pages);
