#include "profile/compare.h"

#include <algorithm>
#include <map>

namespace {

/// Asked for at each edit, so the order is made once.
const std::vector<const field*>& ordered_fields(const family_descriptor& of) {
    thread_local std::map<const family_descriptor*, std::vector<const field*>> known;
    std::vector<const field*>& fields = known[&of];
    if (fields.empty()) fields = fields_by_page(of);
    return fields;
}

/// Where a person sees no difference, or the program writes the same whatever the store says.
bool is_no_edit(const field& row, const field_value& one, const field_value& other) {
    return row.encode != encode_rule::from_key || value_shown(row, one) == value_shown(row, other);
}

} // namespace

std::vector<image_difference> image_differences(const family_descriptor& of, std::span<const uint8_t> left,
                                                std::span<const uint8_t> right) {
    std::vector<image_difference> out;
    for (const field* row : ordered_fields(of)) {
        if (place_bits(of, *row, left) == place_bits(of, *row, right)) continue;
        const std::optional<field_value> one = value_in_image(of, *row, left);
        const std::optional<field_value> other = value_in_image(of, *row, right);
        if (!one || !other) continue;
        out.push_back({row, *one, *other, is_no_edit(*row, *one, *other)});
    }
    return out;
}

std::span<const uint8_t> image_of_defaults(const family_descriptor& of) {
    static auto& made = *new std::map<const family_descriptor*, std::vector<uint8_t>>;
    const auto found = made.find(&of);
    if (found != made.end()) return found->second;
    dev_obj fresh(of, {});
    of.encode(fresh);
    return made[&of] = fresh.image;
}

std::vector<image_difference> dev_unwritten(const dev_obj& dev) {
    const std::span<const uint8_t> reference =
        dev.in_module ? std::span<const uint8_t>(dev.in_module->bytes) : image_of_defaults(dev.of);
    if (std::ranges::equal(reference, dev.image)) return {};
    std::vector<image_difference> out = image_differences(dev.of, reference, dev.image);
    std::erase_if(out, [](const image_difference& one) { return one.always_same; });
    return out;
}
