// The wish that the command under way ends soon.
#pragma once

/// A command is about to run: nobody has asked it to end.
void cli_interrupt_clear();
/// A result could not be written: asks the command that runs to end, which is an error then. Its thread.
void cli_output_lost();
/// Whether that has happened. Its thread.
bool cli_output_is_lost();
/// Asks the command that runs to end soon. Any thread.
void cli_interrupt();
/// Whether it was asked to. Any thread.
bool cli_interrupted();
