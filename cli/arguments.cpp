#include "cli/arguments.h"

#include "cli/argument_rows.h"
#include "profile/profile.h"

#include <CLI/CLI.hpp>
#include <sstream>

namespace {

/// The options that every command has.
constexpr const char* common = "json verbose quiet";

void add_argument(CLI::App& app, const argument_row& row, bool required, cli_options* into) {
    CLI::Option* option = nullptr;
    if (row.text != nullptr) {
        option = app.add_option(row.spelled, into->*row.text, row.help);
    } else if (row.texts != nullptr) {
        option = app.add_option(row.spelled, into->*row.texts, row.help);
    } else if (row.number != nullptr) {
        option =
            app.add_option(row.spelled, into->*row.number, row.help)->check(CLI::Range(row.lowest, row.highest));
    } else if (row.flag != nullptr) {
        option = app.add_flag(row.spelled, into->*row.flag, row.help);
    } else {
        option = app.add_flag_callback(
            row.spelled, [into, form = row.form] { into->form = form; }, row.help);
    }
    if (row.shown != nullptr) option->type_name(row.shown);
    option->required(required);
}

void add_arguments(CLI::App& app, const char* names, cli_options* into) {
    for (const named_argument& one : arguments_named(names)) add_argument(app, *one.row, one.required, into);
}

std::vector<std::string> command_names() {
    std::vector<std::string> names;
    for (const command_row& row : cli_commands()) names.emplace_back(row.name);
    return names;
}

const command_row* command_named(const std::string& name) {
    for (const command_row& row : cli_commands())
        if (name == row.name) return &row;
    return nullptr;
}

/// The first word that is no option.
std::string first_word(const std::vector<std::string>& arguments) {
    for (const std::string& word : arguments)
        if (!word.starts_with('-')) return word;
    return "";
}

/// Long options that a command knows; all of them without one.
std::vector<std::string> long_options(const command_row* command) {
    std::vector<std::string> known = {"--help", "--version", "--make"};
    const auto add = [&known](const char* names) {
        for (const named_argument& one : arguments_named(names))
            if (const std::string spelled = one.row->spelled; spelled.find("--") != std::string::npos)
                known.push_back(spelled.substr(spelled.find("--")));
    };
    add(common);
    for (const command_row& row : cli_commands())
        if (command == nullptr || command == &row) add(row.arguments);
    return known;
}

/// Why a word is none; empty when all are known. What the library finds wrong comes after that: a slip of the hand
/// is often why something is missing.
std::string unknown_word(const std::vector<std::string>& arguments, const std::string& word,
                         const command_row* command) {
    if (command == nullptr && !word.empty())
        return "there is no command \"" + word + "\"" + did_you_mean(word, command_names());
    const std::vector<std::string> known = long_options(command);
    for (const std::string& argument : arguments) {
        const std::string typed = argument.substr(0, argument.find('='));
        if (typed == "--") break;
        if (!typed.starts_with("--") || std::find(known.begin(), known.end(), typed) != known.end()) continue;
        return "there is no option \"" + typed + "\"" + did_you_mean(typed, known);
    }
    return "";
}

std::string one_line(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return text;
}

} // namespace

cli_parsed arguments_parse(const std::vector<std::string>& arguments) {
    cli_parsed parsed;
    CLI::App app("", "vkt");
    app.set_help_flag("-h,--help", "this help");
    app.fallthrough();
    app.allow_windows_style_options(false); // "/x" is a path on every system
    app.require_subcommand(0, 1);
    add_arguments(app, common, &parsed.options);
    std::string made;
    app.add_option("--make", made)->group("");
    bool version = false;
    app.add_flag("--version", version);
    for (const command_row& row : cli_commands()) {
        CLI::App* sub = app.add_subcommand(row.name, row.summary);
        add_arguments(*sub, row.arguments, &parsed.options);
        sub->callback([&parsed, command = &row] { parsed.options.command = command; });
    }
    const std::string word = first_word(arguments);
    const command_row* command = command_named(word);
    parsed.error = unknown_word(arguments, word, command);
    if (!parsed.error.empty()) return parsed;
    try {
        std::vector<std::string> reversed(arguments.rbegin(), arguments.rend());
        app.parse(reversed);
        if (made == "man")
            parsed.text = manual_page();
        else if (made == "completion")
            parsed.text = bash_completion();
        else if (version)
            parsed.text = std::string(program_version()) + "\n";
        else if (parsed.options.command == nullptr)
            parsed.text = help_text();
    } catch (const CLI::CallForHelp&) {
        parsed.text = command == nullptr ? help_text() : command_help(*command);
    } catch (const CLI::ParseError& wrong) {
        parsed.error = one_line(wrong.what());
    }
    return parsed;
}

namespace {

std::vector<std::string> help_row(const argument_row& row) {
    const bool dashes = row.spelled[0] == '-';
    std::string head = dashes ? row.spelled : row.shown;
    if (dashes && row.shown != nullptr) head += std::string(" ") + row.shown;
    return {"  " + head, row.help};
}

/// A command with what it cannot do without.
std::string words_of(const command_row& command) {
    std::string text = command.name;
    for (const auto& [row, required] : arguments_named(command.arguments))
        if (required && row->spelled[0] != '-') text += std::string(" ") + row->shown;
    return text;
}

} // namespace

std::string command_help(const command_row& command) {
    std::vector<std::vector<std::string>> rows;
    for (const named_argument& one : arguments_named(command.arguments)) rows.push_back(help_row(*one.row));
    for (const named_argument& one : arguments_named(common)) rows.push_back(help_row(*one.row));
    const std::string detail = command.detail[0] == '\0' ? "" : std::string(command.detail) + "\n";
    return "usage: vkt " + usage_of(command) + "\n\n" + command.summary + "\n" + detail + "\n" + table_text(rows);
}

std::string help_text() {
    std::vector<std::vector<std::string>> rows;
    for (const command_row& row : cli_commands()) rows.push_back({"  " + words_of(row), row.summary});
    std::string text = "usage: vkt COMMAND [ARGUMENTS]\n\n" + table_text(rows) + "\nwith every command:\n";
    rows.clear();
    for (const named_argument& one : arguments_named(common)) rows.push_back(help_row(*one.row));
    rows.push_back({"  -h,--help", "what a command takes: vkt COMMAND --help"});
    text += table_text(rows);
    text += "\nA port is a name (COM7) or, but for the B family, the path of a device. Exit status: 0 good, 1 "
            "differences,\n"
            "2 bad arguments or file, 3 the port, 4 the module, 130 interrupted.\n";
    return text;
}
