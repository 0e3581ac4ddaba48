#include "toolkit/ravel/drive_script.h"

#include "toolkit/core/text.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <iterator>

namespace {

/// What a verb takes. In `shape`: w widget, p property, k key, t text or path, n number, N number that may be left
/// out.
struct verb_row {
    const char* name;
    drive_verb verb;
    const char* shape;
    const char* usage;
    int32_t fallback; ///< of N
};
constexpr int32_t wait_default_ms = 5000;
constexpr verb_row verb_rows[] = {
    {"pick", drive_verb::pick, "wt", "pick WIDGET TEXT", 0},
    {"click", drive_verb::click, "w", "click WIDGET", 0},
    {"press", drive_verb::press, "wn", "press WIDGET MS", 0},
    {"type", drive_verb::type, "wt", "type WIDGET TEXT", 0},
    {"append", drive_verb::append, "wt", "append WIDGET TEXT", 0},
    {"key", drive_verb::key, "k", "key NAME", 0},
    {"wheel", drive_verb::wheel, "wn", "wheel WIDGET DELTA", 0},
    {"hover", drive_verb::hover, "w", "hover WIDGET", 0},
    {"hover-at", drive_verb::hover_at, "wn", "hover-at WIDGET OFFSET", 0},
    {"click-at", drive_verb::click_at, "wn", "click-at WIDGET OFFSET", 0},
    {"wait", drive_verb::wait, "wptN", "wait WIDGET PROPERTY VALUE [MS]", wait_default_ms},
    {"expect", drive_verb::expect, "wpt", "expect WIDGET PROPERTY VALUE", 0},
    {"expect-file", drive_verb::expect_file, "tt", "expect-file PATH TEXT", 0},
    {"wait-file", drive_verb::wait_file, "ttN", "wait-file PATH TEXT [MS]", wait_default_ms},
    {"shot", drive_verb::shot, "t", "shot FILE", 0},
    {"dump", drive_verb::dump, "t", "dump FILE", 0},
    {"clipboard", drive_verb::clipboard, "t", "clipboard FILE", 0},
    {"drop", drive_verb::drop, "t", "drop FILE", 0},
    {"sleep", drive_verb::sleep, "n", "sleep MS", 0},
    {"close", drive_verb::close, "", "close", 0},
};

constexpr int32_t number_limit = 3600 * 1000; ///< an hour in milliseconds; far beyond any wheel's turn too
constexpr int32_t index_limit = 1000000;

bool is_blank(char c) { return c == ' ' || c == '\t'; }

/// A quoted word from behind its opening quote; moves `at` behind the closing one.
bool read_quoted(const std::string& line, std::size_t* at, std::string* word, std::string* why) {
    for (; *at < line.size(); (*at)++) {
        const char c = line[*at];
        if (c == '"') {
            (*at)++;
            if (*at == line.size() || is_blank(line[*at])) return true;
            *why = "a blank must follow the closing quote";
            return false;
        }
        if (c != '\\') {
            *word += c;
            continue;
        }
        const char escaped = *at + 1 < line.size() ? line[++*at] : '\0';
        switch (escaped) {
        case 'n':
            *word += '\n';
            break;
        case 't':
            *word += '\t';
            break;
        case 'r':
            *word += '\r';
            break;
        case '"':
        case '\\':
            *word += escaped;
            break;
        default:
            *why = "unknown escape; there are \\n \\r \\t \\\" and \\\\";
            return false;
        }
    }
    *why = "the closing quote is missing";
    return false;
}

/// Words of a line; a word that starts with # ends it.
bool read_words(const std::string& line, std::vector<std::string>* words, std::string* why) {
    std::size_t at = 0;
    for (;;) {
        while (at < line.size() && is_blank(line[at])) at++;
        if (at == line.size() || line[at] == '#') return true;
        std::string word;
        if (line[at] == '"') {
            at++;
            if (!read_quoted(line, &at, &word, why)) return false;
        } else {
            for (; at < line.size() && !is_blank(line[at]); at++) {
                if (line[at] == '"') {
                    *why = "a quote inside a word; quote the whole of it";
                    return false;
                }
                word += line[at];
            }
        }
        words->push_back(std::move(word));
    }
}

bool read_number(const std::string& text, int32_t limit, int32_t* out) {
    char* end = nullptr;
    const long long value = std::strtoll(text.c_str(), &end, 10);
    const bool starts = !text.empty() && (std::isdigit(static_cast<unsigned char>(text[0])) != 0 || text[0] == '-');
    if (!starts || end != text.c_str() + text.size() || value > limit || value < -limit) return false;
    *out = static_cast<int32_t>(value);
    return true;
}

bool known(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool fill_argument(char shape, const std::string& word, drive_action* action, std::string* why) {
    drive_key key;
    switch (shape) {
    case 'w':
        *why = "cannot read the widget " + drive_quote(word);
        return drive_parse_path(word, &action->widget);
    case 'p':
        *why = "no property is called " + drive_quote(word);
        action->args.push_back(word);
        return known(drive_properties(), word);
    case 'k':
        *why = "no key is called " + drive_quote(word);
        action->args.push_back(word);
        return drive_parse_key(word, &key);
    case 'n':
    case 'N':
        *why = "cannot read the number " + drive_quote(word);
        return read_number(word, number_limit, &action->number) &&
               (action->number >= 0 || action->verb == drive_verb::wheel);
    default:
        action->args.push_back(word);
        return true;
    }
}

bool fill_action(const std::vector<std::string>& words, drive_action* action, std::string* why) {
    const auto row = std::find_if(std::begin(verb_rows), std::end(verb_rows),
                                  [&](const verb_row& r) { return words[0] == r.name; });
    if (row == std::end(verb_rows)) {
        *why = "unknown action " + drive_quote(words[0]);
        return false;
    }
    action->verb = row->verb;
    action->number = row->fallback;
    std::size_t used = 1;
    for (const char* shape = row->shape; *shape != '\0'; shape++) {
        if (used == words.size()) {
            if (*shape == 'N') break;
            *why = std::string("expected: ") + row->usage;
            return false;
        }
        if (!fill_argument(*shape, words[used++], action, why)) return false;
    }
    *why = std::string("too much in the line; expected: ") + row->usage;
    return used == words.size();
}

std::string trimmed(const std::string& line) {
    std::size_t from = 0, to = line.size();
    while (from < to && is_blank(line[from])) from++;
    while (to > from && is_blank(line[to - 1])) to--;
    return line.substr(from, to - from);
}

} // namespace

bool drive_parse(const std::string& script, std::vector<drive_action>* out, std::string* error) {
    std::vector<drive_action> actions;
    uint32_t number = 0;
    std::size_t from = script.rfind("\xEF\xBB\xBF", 0) == 0 ? 3 : 0; // a byte order mark some editors write
    while (from < script.size()) {
        std::size_t end = script.find('\n', from);
        if (end == std::string::npos) end = script.size();
        std::string line = script.substr(from, end - from);
        from = end + 1;
        number++;
        if (!line.empty() && line.back() == '\r') line.pop_back();
        std::vector<std::string> words;
        std::string why;
        drive_action action;
        action.line = number;
        action.text = trimmed(line);
        const bool good = line.find('\0') == std::string::npos && read_words(line, &words, &why) &&
                          (words.empty() || fill_action(words, &action, &why));
        if (!good) {
            *error = tk_format("line %u: ", number) + (why.empty() ? "a zero byte" : why);
            return false;
        }
        if (!words.empty()) actions.push_back(std::move(action));
    }
    *out = std::move(actions);
    return true;
}

bool drive_parse_path(const std::string& text, drive_path* out) {
    drive_path path;
    std::size_t from = 0;
    while (from <= text.size()) {
        const std::size_t end = std::min(text.find('/', from), text.size());
        drive_segment segment;
        segment.name = text.substr(from, end - from);
        from = end + 1;
        if (!segment.name.empty() && segment.name.back() == ']') {
            const std::size_t open = segment.name.find('[');
            if (open == std::string::npos) return false;
            const std::string index = segment.name.substr(open + 1, segment.name.size() - open - 2);
            if (!read_number(index, index_limit, &segment.index) || segment.index < 0) return false;
            segment.name.resize(open);
        }
        if ((segment.name.empty() && segment.index < 0) || segment.name.find_first_of("[]") != std::string::npos)
            return false;
        path.push_back(std::move(segment));
    }
    *out = std::move(path);
    return true;
}

std::string drive_path_text(const drive_path& path) {
    std::string text;
    for (const drive_segment& segment : path) {
        text += (text.empty() ? "" : "/") + segment.name;
        if (segment.index >= 0) text += tk_format("[%d]", segment.index);
    }
    return text;
}

bool drive_parse_key(const std::string& text, drive_key* out) {
    drive_key key;
    std::string rest = text;
    for (;;) {
        const std::size_t plus = rest.find('+');
        if (plus == std::string::npos || plus == 0 || plus + 1 == rest.size()) break;
        const std::string modifier = rest.substr(0, plus);
        if (modifier == "Ctrl")
            key.control = true;
        else if (modifier == "Shift")
            key.shift = true;
        else if (modifier == "Alt")
            key.alt = true;
        else
            return false;
        rest.erase(0, plus + 1);
    }
    const bool character = rest.size() == 1 && rest[0] > ' ' && rest[0] < 0x7F;
    if (!character && !known(drive_key_names(), rest)) return false;
    key.name = rest;
    *out = std::move(key);
    return true;
}

const std::vector<std::string>& drive_key_names() {
    static const std::vector<std::string> names = {
        "Tab",  "Enter", "Esc",  "Space", "Backspace", "Delete",   "Insert", "Up",  "Down",
        "Left", "Right", "Home", "End",   "PageUp",    "PageDown", "F1",     "F2",  "F3",
        "F4",   "F5",    "F6",   "F7",    "F8",        "F9",       "F10",    "F11", "F12",
    };
    return names;
}

const std::vector<std::string>& drive_properties() {
    static const std::vector<std::string> names = {
        "text",         "contains", "value",    "enabled", "visible", "exists",
        "painted",      "options",  "option",   "count",   "focused", "refused",
        "tooltip",      "type",     "x",        "y",       "w",       "h",
        "state",        "window_x", "window_y", "marked",  "marks",   "hovered",
        "refused_line", "hints",    "hint",     "open",
    };
    return names;
}

std::string drive_quote(const std::string& text, std::size_t max) {
    const std::string cut = tk_utf8_cut(text, max);
    std::string quoted = "\"";
    for (const char c : cut) {
        switch (c) {
        case '\n':
            quoted += "\\n";
            break;
        case '\r':
            quoted += "\\r";
            break;
        case '\t':
            quoted += "\\t";
            break;
        case '"':
        case '\\':
            quoted += '\\';
            [[fallthrough]];
        default:
            quoted += c;
        }
    }
    return quoted + (cut.size() < text.size() ? "\"..." : "\"");
}
