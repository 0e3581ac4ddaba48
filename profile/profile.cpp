#include "profile/profile.h"

const profile_value* profile::find(std::string_view key) const {
    for (const profile_value& one : values)
        if (key == one.what->key) return &one;
    return nullptr;
}

std::string profile_refusal_line(const profile_refusal& refusal) {
    return refusal.key.empty() ? refusal.reason : refusal.key + ": " + refusal.reason;
}

const char* program_version() { return "VKTCfgTools " VKT_VERSION; }

std::optional<profile> profile_default(family_list families, const std::string& model) {
    const family_descriptor* of = family_of_model(families, model);
    if (of == nullptr) return std::nullopt;
    profile out{of, model, program_version()};
    for (const field* row : fields_by_page(*of)) out.values.push_back({row, value_default(*row)});
    return out;
}

namespace {

/// The image has what a write sends: after a reply there are values of which the store keeps the default.
field_value value_sent(const dev_obj& dev, const field& row) {
    const bool from_key = row.encode == encode_rule::from_key;
    const std::optional<field_value> sent = from_key ? value_in_image(dev.of, row, dev.image) : std::nullopt;
    return sent ? *sent : value_of(row, dev.props.get());
}

profile profile_of_store(const dev_obj& dev) {
    profile out{&dev.of, "", ""};
    for (const field* row : fields_by_page(dev.of)) out.values.push_back({row, value_of(*row, dev.props.get())});
    return out;
}

} // namespace

profile profile_of(const dev_obj& dev, const std::string& model) {
    profile out{&dev.of, model, program_version()};
    for (const field* row : fields_by_page(dev.of)) out.values.push_back({row, value_sent(dev, *row)});
    return out;
}

ret_t profile_apply(const profile& from, dev_obj& dev) {
    if (from.of != &dev.of) return RET_BAD_PARAMS;
    const profile before = profile_of_store(dev);
    const auto store = [&dev](const profile& values) {
        bool good = true;
        for (const profile_value& one : values.values)
            good = value_store(*one.what, one.value, dev.props.get()) == RET_OK && good;
        return good;
    };
    if (store(from)) return dev_encode(dev);
    store(before);
    return RET_FAIL;
}
