// The command line, joined from arguments and taken apart again. Input: arguments, with a zero byte behind each.
#include "app/command_line.h"

#include "fuzz/fuzz.h"
#include "platform/posix/command_line.h"
#include "toolkit/core/text.h"

#include <algorithm>

namespace {

void check_split(const std::string& line) {
    const std::vector<std::string> split = command_line_split(line);
    must(!split.empty() && split.size() <= 7 && split[0] == "ravel.exe",
         "the program's name, and six tokens at most");
    std::size_t bytes = 0;
    for (std::size_t i = 1; i < split.size(); i++) bytes += split[i].size();
    must(bytes <= line.size(), "tokens are parts of the line");
    command_line_options_of(split);
}

/// Whether an argument comes through joining and splitting as it is.
bool plain(const std::string& argument) {
    return argument.find('"') == std::string::npos && str_from_wstr(wstr_from_str(argument)) == argument;
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string text = fuzz_input(data, size).text();
    check_split(text);
    const std::vector<std::string> arguments = fuzz_split(text, '\0');
    std::vector<const char*> pointers;
    for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
    const std::wstring wide = command_line_join(static_cast<int>(pointers.size()), pointers.data());
    must(wide.size() <= text.size() + 3 * arguments.size(), "a joined line is limited");
    const std::string line = str_from_wstr(wide);
    check_split(line);
    if (!std::all_of(arguments.begin(), arguments.end(), plain)) return 0;
    const std::vector<std::string> split = command_line_split(line);
    const std::size_t most = std::min<std::size_t>(arguments.size(), 6);
    must(split.size() == most + 1 && std::equal(split.begin() + 1, split.end(), arguments.begin()),
         "arguments come through as they are");
    return 0;
}
