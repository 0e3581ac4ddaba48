// The program without windows, as a function: one command from its arguments to its exit status.
#pragma once

#include "cli/context.h"
#include "cli/interrupt.h"

/// Runs a command to its end, on the calling thread, which is its GUI thread meanwhile. `arguments` without the
/// program's name. One at a time.
int cli_run(const std::vector<std::string>& arguments, const cli_streams& streams);
