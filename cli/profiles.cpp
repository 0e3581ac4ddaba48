#include "cli/profiles.h"

#include "cli/families.h"
#include "profile/compare.h"

std::vector<std::string> model_names() {
    std::vector<std::string> names;
    for (const family_descriptor* of : cli_families())
        for (const family_model& model : of->models) names.emplace_back(model.name);
    return names;
}

const family_descriptor* model_asked(const cli_context& with, const std::string& model, int* status) {
    const family_descriptor* of = family_of_model(cli_families(), model);
    if (of == nullptr)
        *status = with.fail({.text = "there is no model \"" + model + "\"" + did_you_mean(model, model_names())});
    return of;
}

std::optional<profile> profile_asked(const cli_context& with, const std::string& path, int* status) {
    const family_descriptor* wanted = nullptr;
    if (!with.options.model.empty()) {
        wanted = model_asked(with, with.options.model, status);
        if (wanted == nullptr) return std::nullopt;
    }
    profile_read_result read = profile_load(path, cli_families(), wanted);
    for (const profile_refusal& refusal : read.refusals)
        *status = with.fail({.where = path, .step = refusal.key, .text = refusal.reason});
    if (read.loaded && wanted != nullptr && read.loaded->model != with.options.model) {
        with.note("vkt: " + path + ": " + read.loaded->model + " -> " + with.options.model);
        read.loaded->model = with.options.model;
    }
    return std::move(read.loaded);
}

std::unique_ptr<dev_obj> device_of(const profile& from) {
    auto dev = dev_open(cli_families(), from.model.c_str());
    if (dev != nullptr) static_cast<void>(profile_apply(from, *dev));
    return dev;
}

int print_differences(const cli_context& with, const family_descriptor& of, std::span<const uint8_t> left,
                      std::span<const uint8_t> right) {
    std::vector<std::vector<std::string>> rows;
    std::vector<std::string> edits;
    std::vector<std::string> fixed;
    for (const image_difference& one : image_differences(of, left, right)) {
        const std::string before = value_with_unit(*one.what, one.left);
        const std::string after = value_with_unit(*one.what, one.right);
        const char* remark = one.always_same ? "(always written the same)" : "";
        rows.push_back(
            {one.what->key, of.pages[one.what->shown.page], one.what->label, before + " → " + after, remark});
        json_object member;
        member.add("key", one.what->key).add("left", value_shown(*one.what, one.left));
        (one.always_same ? fixed : edits).push_back(member.add("right", value_shown(*one.what, one.right)).text());
    }
    if (with.options.json) {
        json_object result;
        result.add_json("differences", json_list(edits)).add_json("always_same", json_list(fixed));
        with.print(result.text() + "\n");
    } else {
        with.print(rows.empty() ? "一致\n" : table_text(rows));
    }
    return edits.empty() ? exit_good : exit_different;
}
