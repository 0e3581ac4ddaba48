// The command line: what can be asked for, read by a library, and the help, manual page and completion made from
// the same texts.
#pragma once

#include "cli/commands.h"

/// What came of the command line: options to run with, or a text that was asked for, or an error.
struct cli_parsed {
    cli_options options{};
    std::string text{};  ///< to print instead of running anything
    std::string error{}; ///< what is wrong with it
};
/// `arguments` without the program's name. Any thread.
cli_parsed arguments_parse(const std::vector<std::string>& arguments);

/// The help without a command: one screen.
std::string help_text();
/// What one command takes.
std::string command_help(const command_row& command);
/// The manual page, for man.
std::string manual_page();
/// The completion, for bash.
std::string bash_completion();
