// Commands that talk to a module.
#include "cli/commands.h"
#include "cli/link.h"
#include "cli/port_device.h"
#include "cli/profiles.h"
#include "profile/compare.h"
#include "serial/port_cause.h"
#include "serial/port_lease.h"
#include "serial/port_list.h"
#include "serial/port_names.h"

#include <filesystem>

namespace {

/// The status of an error after its line was printed; an interruption has its own line.
int failed(const cli_context& with, const cli_error& error) {
    return error.status == exit_interrupted ? exit_interrupted : with.fail(error);
}

/// Runs sessions one after the other and leaves the module; the first failure ends that. The module is left after
/// a failure too, where it is connected: it may be tried again.
std::optional<cli_error> run_all(module_link& link, std::initializer_list<session_kind> kinds, bool alternative) {
    std::optional<cli_error> error;
    for (const session_kind kind : kinds) {
        error = link.run(kind, alternative);
        if (error) break;
    }
    if (error && (error->status == exit_interrupted || !link.dev().session.connected())) return error;
    const std::optional<cli_error> left = link.run_leave();
    return error ? error : left;
}

/// A module's values that cannot be written as they are.
void note_odd_values(const cli_context& with, const std::string& port, const profile& from) {
    for (const profile_value& one : from.values)
        if (const std::string why = value_refusal(*one.what, one.value); !why.empty())
            with.note("vkt: " + port + ": " + one.what->key + ": " + value_shown(*one.what, one.value) + " " + why);
}

/// Empty when the port can be opened.
std::string why_closed(const std::string& name) {
    const std::string path = "\\\\.\\" + name;
    com_port port;
    DWORD error = 0;
    if (port.open(path, &error) == RET_OK) return "";
    const std::string line = port_cause_line(name, port_open_cause(path, error));
    return line.substr(name.size() + 2, line.size() - name.size() - 3);
}

/// A name of a port, or a device: the other side is no file then.
bool names_port(const std::string& text) {
    std::error_code ignored;
    const std::filesystem::path path = std::u8string(text.begin(), text.end());
    if (std::filesystem::is_regular_file(path, ignored)) return false;
    const auto device = port_path(text, false);
    return (device && !device->empty()) || std::filesystem::is_character_file(path, ignored);
}

} // namespace

int run_ports(const cli_context& with) {
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> members;
    for (const std::string& name : port_device_names().value_or(std::vector<std::string>())) {
        if (!name.starts_with("COM")) continue;
        const std::string device = device_behind(name);
        const std::string description = com::describe_port(name);
        const std::string why = why_closed(name);
        rows.push_back({name, device, description, why.empty() ? "可用" : why});
        json_object member;
        member.add("name", name).add("device", device).add("description", description);
        member.add_json("can_be_opened", why.empty() ? "true" : "false");
        if (!why.empty()) member.add("cause", why);
        members.push_back(member.text());
    }
    with.print(with.options.json ? json_object().add_json("ports", json_list(members)).text() + "\n"
                                 : table_text(rows));
    return exit_good;
}

int run_read(const cli_context& with) {
    int status = exit_good;
    if (model_asked(with, with.options.model, &status) == nullptr) return status;
    module_link link(with, with.options.model, with.options.port);
    if (const auto error = run_all(link, {session_kind::connect, session_kind::read}, with.options.alternative))
        return failed(with, *error);
    const profile read = profile_of(link.dev(), with.options.model);
    note_odd_values(with, link.port(), read);
    return with.deliver(profile_text(read));
}

int run_write(const cli_context& with) {
    int status = exit_good;
    const std::optional<profile> from = profile_asked(with, with.options.profile, &status);
    if (!from) return status;
    module_link link(with, from->model, with.options.port);
    if (profile_apply(*from, link.dev()) != RET_OK) return exit_usage;
    if (with.options.dry_run) {
        with.print(export_text(link.dev(), from->model, with.options.alternative, export_form::frames));
        return exit_good;
    }
    const std::vector<uint8_t> written = link.dev().image;
    std::optional<cli_error> error;
    if (with.options.check)
        error = run_all(link, {session_kind::connect, session_kind::write, session_kind::read},
                        with.options.alternative);
    else
        error = run_all(link, {session_kind::connect, session_kind::write}, with.options.alternative);
    if (error) return failed(with, *error);
    if (with.options.check) return print_differences(with, link.dev().of, written, link.in_module());
    const std::size_t frames =
        link.dev().of.requests(link.dev(), session_kind::write, with.options.alternative).size();
    if (with.options.json) {
        json_object result;
        result.add("port", link.port()).add("model", from->model).add("frames", static_cast<int64_t>(frames));
        with.print(result.text() + "\n");
    } else {
        with.print(link.port() + ": " + from->model + " " + text_write_done + "\n");
    }
    return exit_good;
}

int run_diff(const cli_context& with) {
    int status = exit_good;
    const std::optional<profile> left = profile_asked(with, with.options.profile, &status);
    if (!left) return status;
    const auto dev = device_of(*left);
    if (!names_port(with.options.other)) {
        const std::optional<profile> right = profile_asked(with, with.options.other, &status);
        if (!right) return status;
        if (right->of != left->of)
            return with.fail({.where = with.options.other,
                              .step = "model",
                              .text = right->model + " 与 " + left->model + " 不是同一系列"});
        return print_differences(with, *left->of, dev->image, device_of(*right)->image);
    }
    module_link link(with, left->model, with.options.other);
    if (const auto error = run_all(link, {session_kind::connect, session_kind::read}, false))
        return failed(with, *error);
    return print_differences(with, *left->of, dev->image, link.in_module());
}
