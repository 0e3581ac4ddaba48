// What differs between two images of one family. Comparing is comparing bytes; fields only give names to them.
#pragma once

#include "profile/value.h"
#include "session/dev_obj.h"

struct image_difference {
    const field* what = nullptr;
    field_value left, right;
    /// No edit: a write puts the same value there whatever the store says, or both numbers mean the same.
    bool always_same = false;
};

/// The fields whose bits differ, in the order of the pages. Bits that no field names are not looked at, nor is the
/// module's own value. Any thread.
std::vector<image_difference> image_differences(const family_descriptor& of, std::span<const uint8_t> left,
                                                std::span<const uint8_t> right);

/// The image of a family's defaults. The devices' thread.
std::span<const uint8_t> image_of_defaults(const family_descriptor& of);
/// What a write would change: of what the module holds, as far as that is known, else of the defaults. `left` is
/// the module's or default value, `right` the current one; what is always_same is no edit, and is not among them.
/// The device's thread.
std::vector<image_difference> dev_unwritten(const dev_obj& dev);
