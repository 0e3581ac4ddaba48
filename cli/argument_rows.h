// Every argument and option of the program, once: its spelling, its help, where its value goes, what completes it.
#pragma once

#include "cli/commands.h"

enum class completes : uint8_t { nothing, model, file, port, key };

struct argument_row {
    const char* name;    ///< as command_row::arguments names it
    const char* spelled; ///< "-m,--model", or a word for one without dashes
    const char* shown;   ///< what stands for the value in usage lines; null: it has none
    const char* help;
    // One of these, or `form`.
    std::string cli_options::*text = nullptr;
    std::vector<std::string> cli_options::*texts = nullptr;
    int64_t cli_options::*number = nullptr;
    bool cli_options::*flag = nullptr;
    export_form form = export_form::frames;
    completes by = completes::nothing;
    int64_t lowest = 0, highest = 0; ///< of a number
};

struct named_argument {
    const argument_row* row;
    bool required; ///< a "!" stands behind its name
};
/// The rows of names with blanks between them.
std::vector<named_argument> arguments_named(const std::string& names);

/// "write FILE PORT [--check] [--dry-run]"
std::string usage_of(const command_row& command);
