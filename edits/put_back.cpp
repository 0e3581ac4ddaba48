#include "edits/put_back.h"

namespace {

std::span<const uint8_t> reference_of(const dev_obj& dev, put_back_to to) {
    if (to == put_back_to::module && dev.in_module) return dev.in_module->bytes;
    return image_of_defaults(dev.of);
}

} // namespace

ret_t edit_put_back(dev_obj& dev, const field& what, put_back_to to) {
    const std::optional<field_value> value = value_in_image(dev.of, what, reference_of(dev, to));
    if (!value || what.key == nullptr) return RET_BAD_PARAMS;
    const ret_t stored = value_store(what, *value, dev.props.get());
    return stored == RET_OK ? dev_encode(dev, what.key) : stored;
}

std::size_t edit_put_all_back(dev_obj& dev, put_back_to to) {
    std::size_t stored = 0;
    for (const image_difference& one : image_differences(dev.of, reference_of(dev, to), dev.image))
        if (!one.always_same && edit_put_back(dev, *one.what, to) == RET_OK) ++stored;
    return stored;
}
