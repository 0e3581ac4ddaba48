#include "cli/context.h"

#include "cli/interrupt.h"
#include "profile/json_text.h"
#include "toolkit/core/fs.h"

#include <algorithm>

namespace {

constexpr char escape = '\x1b';

/// Columns of the character that begins with this byte; 0 for a byte inside one. Texts here are ASCII, Chinese, or
/// a dash or arrow.
std::size_t columns_of(char c) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x80) return 1;
    if (byte < 0xC0) return 0;
    return byte >= 0xE3 ? 2 : 1; // from U+3000 on
}

/// How many letters must be changed, added, left out, or swapped with the next.
std::size_t distance(const std::string& a, const std::string& b) {
    std::vector<std::vector<std::size_t>> least(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i <= a.size(); ++i)
        for (std::size_t j = 0; j <= b.size(); ++j) {
            if (i == 0 || j == 0) {
                least[i][j] = i + j;
                continue;
            }
            const std::size_t changed = least[i - 1][j - 1] + (a[i - 1] == b[j - 1] ? 0 : 1);
            least[i][j] = std::min({changed, least[i - 1][j] + 1, least[i][j - 1] + 1});
            if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
                least[i][j] = std::min(least[i][j], least[i - 2][j - 2] + 1);
        }
    return least[a.size()][b.size()];
}

} // namespace

void cli_context::print(const std::string& text) const {
    if (!options.quiet && !streams.out(text)) cli_output_lost();
}

bool cli_context::shows_progress() const { return streams.terminal && !options.quiet && !options.json; }

void cli_context::note(const std::string& line) const {
    if (!options.quiet && !options.json) streams.err(line + "\n");
}

int cli_context::fail(const cli_error& error) const {
    streams.err(options.json ? error_json(error) : error_line(error));
    return error.status;
}

int cli_context::deliver(const std::string& text) const {
    if (options.out.empty() || options.out == "-") {
        print(text);
        return exit_good;
    }
    if (fs_write_whole(options.out.c_str(), text) == RET_OK) return exit_good;
    return fail({.where = options.out, .text = "cannot be written"});
}

std::string error_line(const cli_error& error) {
    std::string line = "vkt";
    for (const std::string* part : {&error.where, &error.step, &error.text, &error.cause})
        if (!part->empty()) line += ": " + *part;
    return line + "\n";
}

std::string error_json(const cli_error& error) {
    json_object members;
    const std::pair<const char*, const std::string*> texts[] = {
        {"where", &error.where}, {"step", &error.step}, {"text", &error.text}, {"cause", &error.cause}};
    for (const auto& [key, text] : texts)
        if (!text->empty()) members.add(key, *text);
    members.add("status", error.status);
    return json_object().add_json("error", members.text()).text() + "\n";
}

json_object& json_object::add_json(const char* key, const std::string& json) {
    members_ += (members_.empty() ? "" : ", ") + json_quoted(key) + ": " + json;
    return *this;
}
json_object& json_object::add(const char* key, const std::string& text) { return add_json(key, json_quoted(text)); }
json_object& json_object::add(const char* key, int64_t number) { return add_json(key, std::to_string(number)); }

std::string json_list(const std::vector<std::string>& values) {
    std::string text = "[";
    for (const std::string& value : values) text += (text.size() > 1 ? ", " : "") + value;
    return text + "]";
}

std::size_t shown_width(const std::string& text) {
    std::size_t columns = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == escape)
            i = text.find('m', i);
        else
            columns += columns_of(text[i]);
    }
    return columns;
}

std::string cut_to_width(const std::string& text, std::size_t columns) {
    std::size_t used = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        used += columns_of(text[i]);
        if (used > columns) return text.substr(0, i);
    }
    return text;
}

std::string result_word(bool good, bool colour) {
    const char* word = good ? "pass" : "fail";
    return colour ? std::string("\x1b[") + (good ? "32" : "31") + "m" + word + "\x1b[0m" : word;
}

std::string table_text(const std::vector<std::vector<std::string>>& rows) {
    std::vector<std::size_t> widths;
    for (const auto& row : rows) {
        widths.resize(std::max(widths.size(), row.size()));
        for (std::size_t i = 0; i < row.size(); ++i) widths[i] = std::max(widths[i], shown_width(row[i]));
    }
    std::string text;
    for (const auto& row : rows) {
        std::string line;
        std::size_t column = 0; // where the next cell begins
        std::size_t at = 0;
        for (std::size_t i = 0; i < row.size(); ++i) {
            line += std::string(row[i].empty() ? 0 : column - at, ' ') + row[i];
            if (!row[i].empty()) at = column + shown_width(row[i]);
            column += widths[i] == 0 ? 0 : widths[i] + 2;
        }
        text += line + "\n";
    }
    return text;
}

std::string did_you_mean(const std::string& typed, const std::vector<std::string>& words) {
    const std::string* nearest = nullptr;
    std::size_t least = std::max<std::size_t>(2, typed.size() / 3) + 1;
    for (const std::string& word : words) {
        const std::size_t away = distance(typed, word);
        if (away < least && away < word.size()) {
            least = away;
            nearest = &word;
        }
    }
    return nearest == nullptr ? "" : "; did you mean \"" + *nearest + "\"?";
}
