// The port list's file and its names. Input: a list of names, or a file's text.
#include "serial/port_list.h"

#include "fuzz/fuzz.h"
#include "serial/port_names.h"
#include "toolkit/core/text.h"

#include <algorithm>

namespace {

constexpr const char* file = "com_list.txt";
constexpr std::size_t longest = 100;
const std::string device = "\\\\.\\";

bool holds(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

std::vector<std::string> lines_read(const std::string& text) {
    fuzz_write_file(file, text);
    const auto lines = port_list_lines();
    must(lines.has_value(), "a file that is there is read");
    return *lines;
}

/// "COM0" to "COM499" are known, and nothing else that begins with C.
bool known(const std::string& name) {
    const int number = name.rfind("COM", 0) == 0 ? tk_atoi(name.c_str() + 3) : -1;
    return number >= 0 && number < 500 && name == "COM" + std::to_string(number);
}

/// Without blanks around it; "com" before digits alone in capitals.
std::string port_text(std::string text) {
    while (!text.empty() && std::string(" \t\r\n").find(text.back()) != std::string::npos) text.pop_back();
    while (!text.empty() && std::string(" \t\r\n").find(text.front()) != std::string::npos) text.erase(0, 1);
    if (text.size() < 4 || text.find_first_not_of("0123456789", 3) != std::string::npos) return text;
    for (std::size_t i = 0; i < 3; i++)
        if (text[i] != "COM"[i] && text[i] != "com"[i]) return text;
    return "COM" + text.substr(3);
}

void check_path(const std::string& text) {
    const std::string name = port_text(tk_utf8_cut(text, longest));
    for (const bool typed_paths : {true, false}) {
        const auto path = port_path(text, typed_paths);
        if (name.empty()) {
            must(!path, "no text is no port");
        } else if (name[0] == 'C') {
            const std::string c_name = name.c_str();
            must(path.has_value() == known(c_name) && (!path || *path == device + c_name), "a name is a known one");
        } else {
            must(path && *path == (typed_paths ? name : ""), "anything else is a path itself");
        }
    }
}

void check_file(const std::string& text) {
    const std::vector<std::string> lines = lines_read(text);
    std::vector<std::string> wanted = fuzz_split(text, '\n');
    if (wanted.back().empty()) wanted.pop_back();
    must(lines.size() == wanted.size(), "every line is there");
    for (std::size_t i = 0; i < lines.size(); i++) {
        must(lines[i].size() <= longest, "a line is at most 100 bytes");
        must(wanted[i].compare(0, lines[i].size(), lines[i]) == 0, "a line is what the file holds");
        must(lines[i].size() + 4 > std::min(wanted[i].size(), longest),
             "no more than a character or a line end is cut");
        const std::string shown = port_shown_name(lines[i]);
        must(shown == lines[i] || device + shown == lines[i], "a name loses its device prefix only");
        check_path(shown);
    }
}

/// From number 10 on a port opens by its device path only. The number is a name's digits, in order.
std::string line_of(const std::string& name) {
    std::string digits;
    for (const char c : name)
        if (c >= '0' && c <= '9' && (c != '0' || !digits.empty())) digits += c;
    return digits.size() > 1 ? device + name : name;
}

/// A name of the system has no line end in it.
void check_names(const std::string& text) {
    std::vector<std::string> names, ports;
    for (const std::string& name : fuzz_split(text, '\0')) {
        if (name.find_first_of("\r\n") != std::string::npos) continue;
        names.push_back(name);
        if (holds(name, "COM") || holds(name, "LPT")) ports.push_back(name);
    }
    const std::vector<std::string> lines = lines_read(port_list_text(names));
    must(lines.size() == ports.size(), "every port has a line");
    for (std::size_t i = 0; i < lines.size(); i++) {
        const std::string whole = line_of(ports[i]);
        must(whole.size() > longest ? whole.rfind(lines[i], 0) == 0 : whole == lines[i], "in order, with its name");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    fuzz_input in(data, size);
    const bool names = in.below(2) == 1;
    const std::string text = in.text();
    if (names)
        check_names(text);
    else
        check_file(text);
    return 0;
}
