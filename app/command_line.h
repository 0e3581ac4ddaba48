// The command line: splitting it into an argument vector, and what the arguments mean.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

struct command_line_options {
    int32_t width = 1280; ///< of the window, pixels
    int32_t height = 750; ///< of the window, pixels
    bool sized = false;   ///< the size was given
    bool console = false; ///< open a console for standard output
};

/// Splits a UTF-8 command line. Element 0 is always "ravel.exe", at most six tokens follow. Tokens are separated by
/// one or more blanks; one that begins with a double quote runs to the next double quote and may hold blanks; one
/// whose closing quote is missing ends the scan and is left out. Any thread.
std::vector<std::string> command_line_split(const std::string& line);

/// Options from an argument vector: elements 1 to 3 are width, height (tk_atoi) and console flag (tk_atob); what is
/// absent keeps its default, what follows is ignored. Any thread.
command_line_options command_line_options_of(const std::vector<std::string>& arguments);
