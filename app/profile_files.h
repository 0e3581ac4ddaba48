// Profiles on the home page: opened, dropped, taken from the recent ones, saved. GUI thread; all of them may run
// the event loop.
#pragma once

#include "profile/profile.h"
#include "toolkit/ravel/widget.h"

#include <string>

/// Fills the list of recent files, and takes files that are dropped on the window.
void profile_bind(widget* home);

/// Asks for a file and loads it.
ret_t profile_open(widget* home);
/// Loads a file: all of it or nothing. RET_FAIL, and a message that says why, when it was not taken: while a
/// session runs or the data page is open, when it is missing (it is no recent one then), when something in it is
/// refused or it is of another family, and when another model's was declined or cannot be chosen now.
ret_t profile_take(widget* home, const std::string& path);
/// The pick of a recent file.
ret_t profile_recent_picked(widget* home);

/// Saves to the file at hand, or asks for one. RET_FAIL, and a message, when it cannot be written; a message too
/// when a value is among them, read from a module, with which the file cannot be loaded.
ret_t profile_save_here(widget* home);
ret_t profile_save_as(widget* home);

/// A file's profile of any family, or of the one given alone. A pipe or a device is refused unread.
profile_read_result profile_read(const std::string& path, const family_descriptor* for_family = nullptr);
/// Writes the values into the current model's device as one step and shows them. RET_FAIL when the store refused.
ret_t profile_put(widget* home, const profile& values);
/// Whether values may be taken over now: no session runs, and the data page is closed. Says so where not.
bool profile_may_load();
