// The profile at hand: the file that the values shown were loaded from or saved to, one for each family. GUI
// thread.
#pragma once

#include "profile/profile.h"

#include <string>

/// What is known of the family's file; an empty path when there is none.
struct profile_at_hand {
    std::string path{};
    profile values{}; ///< as in the file
};

/// Of the family of the current model.
const profile_at_hand& profile_now();
/// From now on this is the family's file; its name stands beside the title.
void profile_now_is(const std::string& path, profile values);
/// Test aid: no family has one.
void profile_forget();

/// Whether what is edited differs from the file at hand. False without one.
bool profile_differs();
/// Shows the name, with a mark when what is edited differs, once the queue comes to it. For every edit: costs next
/// to nothing.
void profile_title_soon();

/// The last part of a path.
std::string path_name(const std::string& path);
/// What stands before it, without the slash; empty when there is nothing.
std::string path_folder(const std::string& path);
