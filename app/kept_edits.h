// Edits that were not written when the window was closed: kept aside as a profile beside the settings, and offered
// at the next start. GUI thread.
#pragma once

#include "toolkit/ravel/widget.h"

#include <optional>
#include <string>

/// The model of the edits that the last closing has left; nothing when there are none, once they were taken or
/// dismissed, and for a file that cannot be read (one line in the log).
std::optional<std::string> kept_edits_offer();
/// Chooses their model and puts them into its values, as one step; they are not offered any more. RET_FAIL, and the
/// offer stays, when that cannot be done now: a session runs, the data page is open, or a module of another model
/// is connected. A message says so.
ret_t kept_edits_restore(widget* home);
/// They are not wanted.
void kept_edits_dismiss();

/// At closing: keeps the current model's edits, else those of another family; removes what an earlier closing has
/// left when there are none, unless that is still on offer.
void kept_edits_at_closing();
/// Test aid: the next offer looks at the file again.
void kept_edits_forget();
