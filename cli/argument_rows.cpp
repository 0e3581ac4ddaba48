#include "cli/argument_rows.h"

#include <sstream>

namespace {

using o = cli_options;

// clang-format off
constexpr argument_row rows[] = {
    {.name = "json",     .spelled = "--json",          .shown = nullptr, .help = "results and errors as one JSON object", .flag = &o::json},
    {.name = "verbose",  .spelled = "-v,--verbose",    .shown = nullptr, .help = "every frame both ways with its time, on standard error", .flag = &o::verbose},
    {.name = "quiet",    .spelled = "-q,--quiet",      .shown = nullptr, .help = "nothing but errors", .flag = &o::quiet},
    {.name = "model",    .spelled = "model",           .shown = "MODEL", .help = "one of the names that \"vkt models\" prints", .text = &o::model, .by = completes::model},
    {.name = "as",       .spelled = "-m,--model",      .shown = "MODEL", .help = "the module's model", .text = &o::model, .by = completes::model},
    {.name = "profile",  .spelled = "profile",         .shown = "FILE",  .help = "a profile", .text = &o::profile, .by = completes::file},
    {.name = "other",    .spelled = "other",           .shown = "FILE|PORT", .help = "another profile, or the port of a module", .text = &o::other, .by = completes::port},
    {.name = "port",     .spelled = "port",            .shown = "PORT",  .help = "the module's port", .text = &o::port, .by = completes::port},
    {.name = "settings", .spelled = "settings",        .shown = "KEY=VALUE...", .help = "a field's key and its value: as the window shows it (hex digits where the unit is Hex), or the number of a choice", .texts = &o::settings, .by = completes::key},
    {.name = "note",     .spelled = "--note",          .shown = "TEXT",  .help = "keep a note in the profile", .text = &o::note},
    {.name = "out",      .spelled = "-o,--out",        .shown = "FILE",  .help = "into a file, which is replaced whole, and not to standard output", .text = &o::out, .by = completes::file},
    {.name = "frames",   .spelled = "--frames",        .shown = nullptr, .help = "a frame a line, in pairs of hex digits (as without any)", .form = export_form::frames},
    {.name = "hex",      .spelled = "--hex",           .shown = nullptr, .help = "a frame a line, hex digits without blanks", .form = export_form::hex},
    {.name = "c",        .spelled = "--c",             .shown = nullptr, .help = "an array in C", .form = export_form::c_array},
    {.name = "binary",   .spelled = "--binary",        .shown = nullptr, .help = "the bytes themselves", .form = export_form::binary},
    {.name = "script",   .spelled = "--script",        .shown = nullptr, .help = "for a terminal program: a frame a line with the answer to expect", .form = export_form::script},
    {.name = "ac",       .spelled = "--ac",            .shown = nullptr, .help = "frames that start with AC (B family)", .flag = &o::alternative},
    {.name = "check",    .spelled = "--check",         .shown = nullptr, .help = "read the module afterwards and compare", .flag = &o::check},
    {.name = "dry_run",  .spelled = "--dry-run",       .shown = nullptr, .help = "print the frames, open no port", .flag = &o::dry_run},
    {.name = "clock",    .spelled = "--clock",         .shown = "HZ",    .help = "the module's clock, 200M without this", .text = &o::clock},
    {.name = "nominal",  .spelled = "--nominal",       .shown = "RATE",  .help = "of the arbitration phase: 500K, 1M", .text = &o::nominal},
    {.name = "data",     .spelled = "--data",          .shown = "RATE",  .help = "of the data phase: 2M, 5M", .text = &o::data},
    {.name = "sample",   .spelled = "--sample",        .shown = "PERCENT", .help = "sample point of both phases", .text = &o::sample},
    {.name = "all",      .spelled = "--all",           .shown = nullptr, .help = "all candidates, and not the best three of each divider", .flag = &o::all},
    {.name = "frame",    .spelled = "frame",           .shown = "FRAME", .help = "ID#DATA in hex digits", .text = &o::frame},
    {.name = "candump",  .spelled = "--candump",       .shown = nullptr, .help = "lines of the log format that CAN tools read", .flag = &o::candump},
    {.name = "seconds",  .spelled = "--seconds",       .shown = "N",     .help = "for so long (0: until it is interrupted)", .number = &o::seconds, .highest = 1000000},
    {.name = "with_check", .spelled = "--check",       .shown = nullptr, .help = "frames carry a check value, both ways", .flag = &o::check},
    {.name = "every",    .spelled = "--every",         .shown = "TIME",  .help = "pause from one frame to the next: 10ms, 1s", .text = &o::every},
    {.name = "count",    .spelled = "--count",         .shown = "N",     .help = "how many frames (1)", .number = &o::count, .lowest = 1, .highest = 1000000000},
    {.name = "channel",  .spelled = "--channel",       .shown = "N",     .help = "1 uart1-can1 (as without it), 2 uart1-can2, 3 uart2-can2, 4 spi1-can1, 5 spi1-can2", .number = &o::channel, .lowest = 1, .highest = 5},
    {.name = "ports",    .spelled = "ports",           .shown = "PORT...", .help = "ports with a module each", .texts = &o::ports, .by = completes::port},
    {.name = "wait",     .spelled = "--wait",          .shown = nullptr, .help = "go on with every module that is plugged in, until it is interrupted", .flag = &o::wait},
    {.name = "journal",  .spelled = "--journal",       .shown = "FILE",  .help = "append a line for each module to this file", .text = &o::journal, .by = completes::file},
};
// clang-format on

const argument_row* row_named(const std::string& name) {
    for (const argument_row& row : rows)
        if (name == row.name) return &row;
    return nullptr;
}

/// Without the short form.
std::string long_form(const argument_row& row) {
    const std::string spelled = row.spelled;
    const std::size_t at = spelled.find("--");
    return at == std::string::npos ? spelled : spelled.substr(at);
}

} // namespace

std::vector<named_argument> arguments_named(const std::string& names) {
    std::vector<named_argument> out;
    std::istringstream words(names);
    for (std::string name; words >> name;) {
        const bool required = name.back() == '!';
        if (required) name.pop_back();
        if (const argument_row* row = row_named(name)) out.push_back({row, required});
    }
    return out;
}

std::string usage_of(const command_row& command) {
    std::string text = command.name;
    for (const auto& [row, required] : arguments_named(command.arguments)) {
        const bool dashes = row->spelled[0] == '-';
        std::string word = dashes ? long_form(*row) : row->shown;
        if (dashes && row->shown != nullptr) word += std::string(" ") + row->shown;
        text += required ? " " + word : " [" + word + "]";
    }
    return text;
}
