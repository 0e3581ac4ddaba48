#include "profile/compare.h"

std::vector<image_difference> image_differences(const family_descriptor& of, std::span<const uint8_t> left,
                                                std::span<const uint8_t> right) {
    std::vector<image_difference> out;
    for (const field* row : fields_by_page(of)) {
        const std::optional<field_value> one = value_in_image(of, *row, left);
        const std::optional<field_value> other = value_in_image(of, *row, right);
        if (!one || !other || *one == *other) continue;
        out.push_back({row, *one, *other, row->encode != encode_rule::from_key});
    }
    return out;
}
