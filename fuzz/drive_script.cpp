// Scripts of user actions. Input: the script. An action that was read is written out anew and must read as itself.
#include "toolkit/ravel/drive_script.h"

#include "fuzz/fuzz.h"
#include "toolkit/core/text.h"

#include <algorithm>
#include <array>

namespace {

struct verb_form {
    const char* name;
    bool widget, number;
    std::size_t args;
};
constexpr std::array<verb_form, 20> forms = {{
    {"pick", true, false, 1},         {"click", true, false, 0},      {"press", true, true, 0},
    {"type", true, false, 1},         {"append", true, false, 1},     {"key", false, false, 1},
    {"wheel", true, true, 0},         {"hover", true, false, 0},      {"hover-at", true, true, 0},
    {"click-at", true, true, 0},      {"wait", true, true, 2},        {"expect", true, false, 2},
    {"expect-file", false, false, 2}, {"wait-file", false, true, 2},  {"shot", false, false, 1},
    {"dump", false, false, 1},        {"clipboard", false, false, 1}, {"drop", false, false, 1},
    {"sleep", false, true, 0},        {"close", false, false, 0},
}};

bool same(const drive_path& a, const drive_path& b) {
    return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](const drive_segment& x, const drive_segment& y) {
        return x.name == y.name && x.index == y.index;
    });
}

std::string quoted(const std::string& text) { return " " + drive_quote(text, text.size()); }

std::string written(const drive_action& action) {
    const verb_form& form = forms.at(static_cast<std::size_t>(action.verb));
    std::string line = form.name;
    if (form.widget) line += quoted(drive_path_text(action.widget));
    for (const std::string& arg : action.args) line += quoted(arg);
    if (form.number) line += " " + std::to_string(action.number);
    return line;
}

void check_action(const drive_action& action, std::size_t lines) {
    const verb_form& form = forms.at(static_cast<std::size_t>(action.verb));
    must(action.line >= 1 && action.line <= lines, "an action has its line");
    must(action.text.find('\n') == std::string::npos, "an action is one line");
    must(action.widget.empty() != form.widget && action.args.size() == form.args,
         "an action has what its verb takes");
    for (const drive_segment& segment : action.widget)
        must(segment.name.find_first_of("[]/") == std::string::npos &&
                 (segment.index >= 0 || !segment.name.empty()),
             "a part of a path has a name or a number");
    must(std::abs(action.number) <= 3600 * 1000, "numbers are limited");
    must(action.number >= 0 || action.verb == drive_verb::wheel, "only wheels turn backwards");

    std::vector<drive_action> again;
    std::string error;
    must(drive_parse(written(action), &again, &error) && again.size() == 1, "an action's own line can be read");
    const drive_action& other = again[0];
    must(other.verb == action.verb && same(other.widget, action.widget) && other.args == action.args &&
             other.number == action.number,
         "and reads as the action");
}

void check_parts(const std::string& text) {
    drive_path path, path_again;
    if (drive_parse_path(text, &path)) {
        must(!path.empty(), "a path names something");
        must(drive_parse_path(drive_path_text(path), &path_again) && same(path, path_again),
             "a path's text is the path");
    }
    drive_key key, key_again;
    if (drive_parse_key(text, &key)) {
        const auto& names = drive_key_names();
        must(key.name.size() == 1 || std::find(names.begin(), names.end(), key.name) != names.end(),
             "a key is known");
        const std::string whole = std::string(key.control ? "Ctrl+" : "") + (key.shift ? "Shift+" : "") +
                                  (key.alt ? "Alt+" : "") + key.name;
        must(drive_parse_key(whole, &key_again) && key_again.name == key.name && key_again.shift == key.shift &&
                 key_again.control == key.control && key_again.alt == key.alt,
             "a key's text is the key");
    }
    must(drive_quote(text, 40).size() <= 2 * 40 + 5, "a quoted text is limited");
}

} // namespace

int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
    const std::string script = fuzz_input(data, size).text();
    std::vector<drive_action> actions(3);
    std::string error;
    const std::vector<std::string> lines = fuzz_split(script, '\n');
    if (drive_parse(script, &actions, &error)) {
        must(script.find('\0') == std::string::npos, "no script has a zero byte");
        must(error.empty(), "a script that can be read gives no reason");
        must(actions.size() <= lines.size(), "an action is one line");
        for (const drive_action& action : actions) check_action(action, lines.size());
    } else {
        must(actions.size() == 3, "a script that cannot be read leaves what was there");
        must(error.rfind("line ", 0) == 0, "a reason names the line");
        must(error.size() <= 1000, "a reason is limited");
    }
    check_parts(lines[0]);
    return 0;
}
