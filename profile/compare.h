// What differs between two images of one family. Comparing is comparing bytes; fields only give names to them.
#pragma once

#include "profile/value.h"

struct image_difference {
    const field* what = nullptr;
    field_value left, right;
    /// A write puts the same value there whatever the store says: the module keeps its own, and it is no edit.
    bool always_same = false;
};

/// The fields whose bits differ, in the order of the pages. Bits that no field names are not looked at, nor is the
/// module's own value. Any thread.
std::vector<image_difference> image_differences(const family_descriptor& of, std::span<const uint8_t> left,
                                                std::span<const uint8_t> right);
