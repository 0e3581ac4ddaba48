// Where a field stands on the home page. GUI thread only.
#pragma once

#include "app/families.h"
#include "toolkit/ravel/widget.h"

#include <string_view>

/// Shows the page of a family's field and gives its widget the focus, as far as it takes it; what was
/// refused on that page stands there still. RET_FAIL for a key that has no widget.
ret_t field_go_to(widget* home, const family_pages& pages, std::string_view key);
/// The tab that leads to a page's table; null when there is none.
const page_tab* field_tab_of(const family_pages& pages, const page_table& table);
