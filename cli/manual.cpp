// The manual page and the completion, from the texts of the help.
#include "cli/argument_rows.h"
#include "cli/arguments.h"
#include "cli/profiles.h"

namespace {

constexpr const char* common = "json verbose quiet";

/// Text for the typesetter: dashes as they are typed, nothing that begins a request.
std::string typeset(const std::string& text) {
    std::string out;
    for (const char c : text) out += c == '-' ? "\\-" : c == '\\' ? "\\e" : std::string(1, c);
    return out.starts_with('.') || out.starts_with('\'') ? "\\&" + out : out;
}

std::string argument_entry(const argument_row& row) {
    const bool dashes = row.spelled[0] == '-';
    std::string head = dashes ? row.spelled : row.shown;
    if (dashes && row.shown != nullptr) head += std::string(" ") + row.shown;
    return ".TP\n.B " + typeset(head) + "\n" + typeset(row.help) + "\n";
}

constexpr const char* head = R"(.TH VKT 1 "" "VKTCfgTools" "User commands"
.SH NAME
vkt \- set up serial-to-CAN modules without a window
.SH SYNOPSIS
.B vkt
.I COMMAND
.RI [ ARGUMENTS ]
.SH DESCRIPTION
Reads and writes the configuration of converter modules over a COM port, with the sessions of the window program and
the same profiles, for scripts, production benches and remote shells.
Labels, choices and what a session says are in Chinese, as in the window.
)";

constexpr const char* tail = R"(.SH PORTS
A port is a name: COM1 to COM10 are /dev/ttyS0 to /dev/ttyS9, COM11 to COM50 /dev/ttyUSB0 to /dev/ttyUSB39, COM51 to
COM90 /dev/ttyACM0 to /dev/ttyACM39.
The generic and the A family also take the path of a device.
.SH EXIT STATUS
.TP
.B 0
good
.TP
.B 1
differences were found
.TP
.B 2
bad arguments, or a bad file
.TP
.B 3
the port could not be opened, or failed
.TP
.B 4
the module refused, answered wrongly, or not at all
.TP
.B 130
interrupted; the port is closed, and a module that was in configuration mode stays in it
.PP
Errors are one line on standard error each:
.RI "vkt: " "PORT or FILE" ": " STEP ": " TEXT ": " CAUSE ,
without what there is nothing to say of.
.SH ENVIRONMENT
.TP
.B VKT_COM_PORTS
COM7=/dev/pts/3;COM12=/dev/ttyUSB0 adds or overrides names of ports (elsewhere than on Windows)
.SH FILES
A profile is a JSON file (UTF\-8): a format number, the program's version, a model, a note, and the values by key in
the order of the pages. A key that it lacks stands for its default. It is checked whole before any of it counts, and
replaced whole when it is saved.
)";

/// What follows an option or a word, for the shell's "case".
const char* completion_of(completes by) {
    switch (by) {
    case completes::model:
        return "$models";
    case completes::port:
        return "$(vkt ports 2>/dev/null | cut -d' ' -f1)";
    case completes::nothing:
    case completes::file:
    case completes::key:
        break;
    }
    return "";
}

std::string command_case(const command_row& command) {
    std::string options;
    std::string words;
    bool files = false;
    for (const auto& [row, required] : arguments_named(command.arguments)) {
        const std::string spelled = row->spelled;
        if (const std::size_t at = spelled.find("--"); at != std::string::npos)
            options += " " + spelled.substr(at);
        else if (completion_of(row->by)[0] != '\0')
            words += std::string(words.empty() ? "" : " ") + completion_of(row->by);
        files = files || row->by == completes::file;
    }
    return std::string("    ") + command.name + ") options=\"" + (options.empty() ? "" : options.substr(1)) +
           "\" words=\"" + words + "\" files=" + (files ? "1" : "") + " ;;\n";
}

} // namespace

std::string manual_page() {
    std::string text = head;
    text += ".SH COMMANDS\n";
    for (const command_row& command : cli_commands()) {
        text += ".SS " + typeset(usage_of(command)) + "\n" + typeset(command.summary) + ".\n";
        if (command.detail[0] != '\0') text += typeset(command.detail) + "\n";
        for (const auto& [row, required] : arguments_named(command.arguments)) text += argument_entry(*row);
    }
    text += ".SH OPTIONS\nWith every command:\n";
    for (const auto& [row, required] : arguments_named(common)) text += argument_entry(*row);
    return text + tail;
}

std::string bash_completion() {
    std::string commands;
    std::string models;
    std::string cases;
    for (const command_row& command : cli_commands()) {
        commands += std::string(commands.empty() ? "" : " ") + command.name;
        cases += command_case(command);
    }
    for (const std::string& model : model_names()) models += (models.empty() ? "" : " ") + model;
    std::string options;
    for (const auto& [row, required] : arguments_named(common))
        options += std::string(" ") + std::string(row->spelled).substr(std::string(row->spelled).find("--"));
    return "# Completion of vkt for bash: made by \"vkt --make=completion\".\n"
           "_vkt() {\n"
           "    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} command= options= words= "
           "files= one\n"
           "    local models=\"" +
           models +
           "\"\n"
           "    for one in \"${COMP_WORDS[@]:1:COMP_CWORD-1}\"; do\n"
           "        case $one in -*) ;; *) command=$one && break ;; esac\n"
           "    done\n"
           "    case $command in\n" +
           cases + "    '') words=\"" + commands +
           "\" ;;\n"
           "    esac\n"
           "    case $before in -m | --model) words=$models files= ;; -o | --out) words= files=1 ;; esac\n"
           "    case $word in -*) words=\"$options" +
           options +
           " --help\" files= ;; esac\n"
           "    mapfile -t COMPREPLY < <(compgen -W \"$words\" ${files:+-f} -- \"$word\")\n"
           "}\n"
           "complete -F _vkt vkt\n";
}
