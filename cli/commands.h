// The program's commands: the table of them, and what each does.
#pragma once

#include "cli/context.h"

#include <span>

/// One of the program's words.
struct command_row {
    const char* name;
    const char* summary;
    const char* detail; ///< more for the manual page and its own help; may be empty
    const char*
        arguments; ///< names of rows of the argument table, blanks between them; "!" behind what must be there
    int (*run)(const cli_context& with);
};
/// All of them, in the order of the help.
std::span<const command_row> cli_commands();

// Without a port.
int run_models(const cli_context& with);
int run_fields(const cli_context& with);
int run_default(const cli_context& with);
int run_show(const cli_context& with);
int run_set(const cli_context& with);
int run_diff(const cli_context& with);
int run_timing(const cli_context& with);
// With one.
int run_ports(const cli_context& with);
int run_read(const cli_context& with);
int run_write(const cli_context& with);
int run_monitor(const cli_context& with);
int run_send(const cli_context& with);
int run_program(const cli_context& with);
