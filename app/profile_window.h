// The two windows about a profile: what is wrong with one, and whether another model's may be taken. GUI thread;
// each runs the event loop until it is closed.
#pragma once

#include "profile/profile.h"
#include "toolkit/ravel/widget.h"

/// Init routine of "profile_errors"; `context` is a profile_errors_text. RET_BAD_PARAMS for a missing window.
ret_t profile_errors_init(widget* win, const void* context);
struct profile_errors_text {
    std::string file;
    std::string lines; ///< a refusal a line
};

/// Shows why a file was not taken: a line for each refusal.
ret_t profile_errors_show(const std::string& path, const std::vector<profile_refusal>& refusals);
/// Asks whether to switch to the file's model and go on.
bool profile_other_agreed(const std::string& path, const std::string& its_model, const std::string& model);
