// Commands that need no port.
#include "cli/commands.h"
#include "cli/families.h"
#include "cli/profiles.h"
#include "profile/json_text.h"
#include "toolkit/core/hex_text.h"
#include "toolkit/core/text.h"

namespace {

std::string choices_json(const field& row) {
    std::vector<std::string> values;
    for (const choice_option& choice : row.choices)
        values.push_back(json_object().add("value", choice.value).add("text", choice.text).text());
    return json_list(values);
}

/// What can be set, with the codes of the choices.
std::string range_with_codes(const field& row) {
    if (row.choices.empty() || value_is_text(row))
        return value_range(row) + (row.unit[0] == '\0' ? "" : " ") + row.unit;
    std::string text;
    for (const choice_option& choice : row.choices)
        text += tk_format("%s%d=%s", text.empty() ? "" : " | ", choice.value, choice.text);
    return row.highest == 0 ? text : text + tk_format(" (%u–%u)", row.lowest, row.highest);
}

std::string field_json(const family_descriptor& of, const field& row) {
    json_object member;
    member.add("key", row.key).add("page", of.pages[row.shown.page]).add("label", row.label).add("unit", row.unit);
    if (!value_is_text(row)) member.add("lowest", row.lowest).add("highest", field_highest(row));
    member.add_json("choices", choices_json(row)).add("range", value_range(row));
    return member.add("default", value_shown(row, value_default(row))).add("place", value_place(of, row)).text();
}

/// "KEY=VALUE" into a profile; false, after its error was printed.
bool apply_setting(const cli_context& with, const std::string& setting, profile* into, std::string* changes) {
    const std::size_t at = setting.find('=');
    const auto refuse = [&](const std::string& why) {
        static_cast<void>(with.fail({.where = setting, .text = why}));
        return false;
    };
    if (at == std::string::npos) return refuse("not of the form KEY=VALUE");
    const std::string key = setting.substr(0, at);
    std::vector<std::string> keys;
    for (profile_value& one : into->values) {
        keys.emplace_back(one.what->key);
        if (key != one.what->key) continue;
        std::string why;
        const std::optional<field_value> value = value_typed(*one.what, setting.substr(at + 1), &why);
        if (!value) return refuse(why);
        if (*value != one.value)
            *changes += key + ": " + value_with_unit(*one.what, one.value) + " → " +
                        value_with_unit(*one.what, *value) + "\n";
        one.value = *value;
        return true;
    }
    return refuse(into->model + " has no such key" + did_you_mean(key, keys));
}

} // namespace

int run_models(const cli_context& with) {
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> members;
    for (const family_descriptor* of : cli_families())
        for (const family_model& model : of->models) {
            const std::string frames = of->of_registers ? "32-bit registers" : "bytes";
            const std::size_t unit = of->of_registers ? 4 : 1;
            rows.push_back({model.name, tk_format("%zu values", fields_by_page(*of).size()),
                            tk_format("image of %zu %s", of->image_size / unit, frames.c_str())});
            members.push_back(json_quoted(model.name));
        }
    with.print(with.options.json ? json_object().add_json("models", json_list(members)).text() + "\n"
                                 : table_text(rows));
    return exit_good;
}

int run_fields(const cli_context& with) {
    int status = exit_good;
    const family_descriptor* of = model_asked(with, with.options.model, &status);
    if (of == nullptr) return status;
    std::vector<std::vector<std::string>> rows = {{"KEY", "PAGE", "LABEL", "DEFAULT", "PLACE", "RANGE"}};
    std::vector<std::string> members;
    for (const field* row : fields_by_page(*of)) {
        members.push_back(field_json(*of, *row));
        rows.push_back({row->key, of->pages[row->shown.page], row->label,
                        value_with_unit(*row, value_default(*row)), value_place(*of, *row),
                        range_with_codes(*row)});
    }
    json_object result;
    result.add("model", with.options.model).add_json("fields", json_list(members));
    with.print(with.options.json ? result.text() + "\n" : table_text(rows));
    return exit_good;
}

int run_default(const cli_context& with) {
    int status = exit_good;
    if (model_asked(with, with.options.model, &status) == nullptr) return status;
    return with.deliver(profile_text(*profile_default(cli_families(), with.options.model)));
}

int run_show(const cli_context& with) {
    int status = exit_good;
    const std::optional<profile> from = profile_asked(with, with.options.profile, &status);
    if (!from) return status;
    const auto dev = device_of(*from);
    if (!with.options.json)
        return with.deliver(export_text(*dev, from->model, with.options.alternative, with.options.form));
    std::vector<std::string> frames;
    for (const session_bytes& frame : export_frames(*dev, with.options.alternative))
        frames.push_back(json_quoted(hex_digits_from_bytes(frame)));
    return with.deliver(json_object().add("model", from->model).add_json("frames", json_list(frames)).text() +
                        "\n");
}

int run_set(const cli_context& with) {
    int status = exit_good;
    std::optional<profile> from = profile_asked(with, with.options.profile, &status);
    if (!from) return status;
    std::string changes;
    bool good = true;
    for (const std::string& setting : with.options.settings)
        good = apply_setting(with, setting, &*from, &changes) && good;
    if (!good) return exit_usage;
    if (!with.options.note.empty()) from->note = with.options.note;
    if (from->note.size() > profile_note_max)
        return with.fail({.where = "--note", .text = tk_format("longer than %zu bytes", profile_note_max)});
    from->program = program_version();
    if (!with.options.out.empty()) return with.deliver(profile_text(*from));
    if (profile_save(*from, with.options.profile) != RET_OK)
        return with.fail({.where = with.options.profile, .text = "cannot be written"});
    if (!with.options.json) with.print(changes);
    return exit_good;
}
