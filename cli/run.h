// The program without windows, as a function: one command from its arguments to its exit status.
#pragma once

#include "cli/context.h"

/// Runs a command to its end, on the calling thread, which is its GUI thread meanwhile. `arguments` without the
/// program's name. One at a time.
int cli_run(const std::vector<std::string>& arguments, const cli_streams& streams);

/// A result could not be written: asks the command that runs to end, which is an error then. Its thread.
void cli_output_lost();
/// Asks the command that runs to end soon. Any thread.
void cli_interrupt();
/// Whether it was asked to. Any thread.
bool cli_interrupted();
