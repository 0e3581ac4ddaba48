#include "app/command_line.h"

#include "toolkit/core/text.h"

namespace {

constexpr std::size_t max_tokens = 6;

} // namespace

std::vector<std::string> command_line_split(const std::string& line) {
    std::vector<std::string> arguments = {"ravel.exe"};
    std::size_t at = line.find_first_not_of(' ');
    while (at != std::string::npos && arguments.size() <= max_tokens) {
        const bool quoted = line[at] == '"';
        if (quoted) ++at;
        const std::size_t end = line.find(quoted ? '"' : ' ', at);
        if (quoted && end == std::string::npos) break;
        arguments.push_back(line.substr(at, end == std::string::npos ? end : end - at));
        at = end == std::string::npos ? end : line.find_first_not_of(' ', end + 1);
    }
    return arguments;
}

command_line_options command_line_options_of(const std::vector<std::string>& arguments) {
    command_line_options options;
    options.sized = arguments.size() > 1;
    if (options.sized) options.width = tk_atoi(arguments[1].c_str());
    if (arguments.size() > 2) options.height = tk_atoi(arguments[2].c_str());
    if (arguments.size() > 3) options.console = tk_atob(arguments[3].c_str());
    return options;
}
