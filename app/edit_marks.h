// Which widgets of the home page show which field, and what they are marked with. GUI thread only.
#pragma once

#include "app/families.h"
#include "profile/compare.h"
#include "toolkit/ravel/widget.h"

/// The fields whose widget is marked as refused, in the order of the pages. Pages that were never shown have none.
std::vector<const field*> marks_refused(widget* home, const family_pages& pages);
/// Marks the fields that a write would change, and the tabs they are on; each field's tooltip says what the module
/// holds and the default. Pages that were never shown are marked when they are.
void marks_show(widget* home, const family_pages& pages, const dev_obj& dev,
                const std::vector<image_difference>& unwritten);
