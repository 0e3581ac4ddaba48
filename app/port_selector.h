// The port selector of the home page: its list comes from the port list's threads, and what is greyed beside the
// names from the worker that asks about ports. A chosen port without rights offers the command that grants them.
#pragma once

#include "toolkit/ravel/widget.h"

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

/// The options of a list, value and name, in the order in which the selector shows them: by number. Any thread.
std::vector<std::pair<int32_t, std::string>>
port_options_in_order(std::vector<std::pair<int32_t, std::string>> options);

/// Makes the port list's threads report to the selector of whichever home page is open. Once. GUI thread.
void port_selector_connect();
/// A press of the selector scans once more; a press of the button beside it copies the command. GUI thread.
void port_selector_bind(widget* home);
