#include "serial/port_names.h"

#include "toolkit/core/text.h"

#include <algorithm>
#include <cctype>
#include <string_view>

namespace {

constexpr int port_names = 500;
constexpr std::size_t port_text_max = 100;

tk_object* map_create() {
    tk_object* names = object_default_create();
    for (int n = 0; n < port_names; n++)
        tk_object_set_prop_str(names, tk_format("COM%d", n).c_str(), tk_format("\\\\.\\COM%d", n).c_str());
    return names;
}

/// "COMn" to "\\.\COMn", and list positions to lines. Never destroyed: workers may look a name up while the process
/// ends.
tk_object* name_map() {
    static tk_object* const names = map_create();
    return names;
}

/// Without the blanks around it; "com7" in capitals.
std::string port_text(const std::string& typed) {
    constexpr const char* blanks = " \t\r\n";
    const std::size_t first = typed.find_first_not_of(blanks);
    if (first == std::string::npos) return {};
    const std::string text = typed.substr(first, typed.find_last_not_of(blanks) - first + 1);
    const std::string head = "COM";
    const auto upper = [](unsigned char c) { return std::toupper(c); };
    const auto digit = [](char c) { return c >= '0' && c <= '9'; };
    if (text.size() <= head.size() || !std::all_of(text.begin() + 3, text.end(), digit)) return text;
    const bool is_com = std::equal(head.begin(), head.end(), text.begin(), [&upper](char want, char c) {
        return want == upper(static_cast<unsigned char>(c));
    });
    return is_com ? head + text.substr(head.size()) : text;
}

std::string position(uint32_t index) { return tk_format("%u", index); }

/// The number that starts a text, without the zeros in front of it.
std::string_view leading_number(std::string_view text) {
    const std::size_t digits = std::min(text.find_first_not_of("0123456789"), text.size());
    const std::string_view number = text.substr(0, digits);
    return number.substr(std::min(number.find_first_not_of('0'), number.size()));
}

bool starts_with_digit(std::string_view text) { return !text.empty() && text[0] >= '0' && text[0] <= '9'; }

} // namespace

std::optional<std::string> port_path(const std::string& text, bool typed_paths) {
    const std::string name = port_text(tk_utf8_cut(text, port_text_max));
    if (name.empty()) return std::nullopt;
    if (name.front() != 'C') return typed_paths ? name : std::string();
    const std::string path = tk_object_get_prop_str(name_map(), name.c_str(), "");
    return path.empty() ? std::nullopt : std::optional(path);
}

bool port_name_before(const std::string& a, const std::string& b) {
    std::string_view left = a;
    std::string_view right = b;
    while (!left.empty() && !right.empty()) {
        if (starts_with_digit(left) && starts_with_digit(right)) {
            const std::string_view m = leading_number(left);
            const std::string_view n = leading_number(right);
            if (m != n) return m.size() != n.size() ? m.size() < n.size() : m < n;
            left.remove_prefix(std::min(left.find_first_not_of("0123456789"), left.size()));
            right.remove_prefix(std::min(right.find_first_not_of("0123456789"), right.size()));
            continue;
        }
        if (left[0] != right[0]) return left[0] < right[0];
        left.remove_prefix(1);
        right.remove_prefix(1);
    }
    return left.size() < right.size();
}

void port_list_line_set(uint32_t index, const std::string& line) {
    tk_object_set_prop_str(name_map(), position(index).c_str(), line.c_str());
}

std::string port_list_line(uint32_t index) {
    return tk_object_get_prop_str(name_map(), position(index).c_str(), "");
}
