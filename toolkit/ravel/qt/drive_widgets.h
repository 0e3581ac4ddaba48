// Widgets as scripts name them, and what scripts can ask of them. GUI thread only.
#pragma once

#include "toolkit/ravel/drive_script.h"
#include "toolkit/ravel/qt/detail.h"

struct drive_found {
    widget_state* state = nullptr;
    std::string error; ///< why there is none: not there, or more than one
};
/// The one widget of a path, in any open window.
drive_found drive_find(const drive_path& path);

/// The whole path of a widget: the names of its window, of what has a name around it, and its own. One without a
/// name is told as a script would name it, by its type and its place among those of that type; a hidden one has no
/// place.
std::string drive_full_path(const widget_state* state);

/// A property's value as text; flags are 0 or 1, options stand one behind the other with | between.
std::string drive_property(const widget_state* state, const std::string& property);
/// Whether the property is as a script wants it; `found` says what it is.
bool drive_matches(const drive_path& path, const std::string& property, const std::string& wanted,
                   std::string* found);

/// Every widget of every open window, topmost window first, one a line: path, type, text or value, flags.
std::string drive_dump();
