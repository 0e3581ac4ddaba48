// The list of what a write would change, beside the code view. GUI thread only.
#pragma once

#include "app/families.h"
#include "profile/compare.h"
#include "toolkit/ravel/widget.h"

/// One line each: "CAN · 波特率<tab>模块中: 125K<tab>当前: 500K<tab>默认: 125K"; without a known module that column
/// is left out.
std::string change_list_text(const dev_obj& dev, const std::vector<image_difference>& unwritten);
/// The same to be read in a window: the field, and on the line below it its values.
std::string change_lines_text(const dev_obj& dev, const std::vector<image_difference>& unwritten);
/// What they are compared with and how many there are, and below it what is always written the same way.
std::string change_note_text(const dev_obj& dev, std::size_t count);
/// Shows the changes of a device, and those that are none because the program always writes the same.
void change_list_show(widget* home, const dev_obj& dev, const std::vector<image_difference>& unwritten);
/// Brings the list to the front.
ret_t change_list_open(widget* home);
/// Attaches what the list's buttons and rows do; `applied` is called after values were put back, with the step's
/// name.
void change_list_bind(widget* home, ret_t (*applied)(widget* home, const char* name));
