// What is edited of the devices, as the home page shows it: every edit becomes a step that can be taken back, and
// is followed by the line of truth, the list of changes and the counts. GUI thread only.
#pragma once

#include "app/families.h"
#include "edits/edit_log.h"
#include "toolkit/ravel/widget.h"

/// Keeps account of a family's device from now on. A second call for the same device does nothing.
void edits_follow(const family_pages& pages, dev_obj& dev);
/// The account of a family's device; null when none is kept.
edit_log* edits_of(const family_pages& pages);

/// The code view of a family shows restored defaults, or does not.
void edits_code_shown(const family_pages& pages, bool restored);

/// Shows where the current model's device stands, all over the home page.
void edits_show(widget* home);

/// Takes a step of the current device back, or does it again; it is shown with the next turn of the event loop.
/// RET_FAIL when there is none.
ret_t edits_undo(widget* home);
ret_t edits_redo(widget* home);
/// After a change that no page made: the page on show is filled again, the code shown, and the step noted.
ret_t edits_applied(widget* home, const char* name);
