// One value of a field as people and files have it: what it may be, how it is shown, how it is typed, where it
// stands in an image. No function here looks at a store's other values. Any thread.
#pragma once

#include "session/family.h"

#include <compare>
#include <optional>
#include <string>
#include <vector>

/// What a field holds: a number (of a flag 0 or 1), or a text where the field's form is one.
struct field_value {
    uint32_t number = 0;
    std::string text{};
    bool operator==(const field_value&) const = default;
};

/// Whether the field's values are texts.
bool value_is_text(const field& row);
/// The default.
field_value value_default(const field& row);
/// What a store holds; the default when it lacks the key. A hex text comes as it would be encoded.
field_value value_of(const field& row, const tk_object* props);
/// Stores it. RET_FAIL when the store refuses the key.
ret_t value_store(const field& row, const field_value& value, tk_object* props);

/// The field's bits in an image, as a number; nothing for one without a place.
std::optional<uint64_t> place_bits(const family_descriptor& of, const field& row, std::span<const uint8_t> image);
/// What an image holds for the field; nothing for one without a place.
std::optional<field_value> value_in_image(const family_descriptor& of, const field& row,
                                          std::span<const uint8_t> image);

/// As the window shows it, without the unit: "500K", "10", "FF FF FF FF". A number that no choice names is shown as
/// a number.
std::string value_shown(const field& row, const field_value& value);
/// The same with its unit.
std::string value_with_unit(const field& row, const field_value& value);
/// What can be set, as it is shown: "0–255", or the choices' texts.
std::string value_range(const field& row);
/// Why the value cannot be set, in the user's words; empty when it can.
std::string value_refusal(const field& row, const field_value& value);
/// What was typed: as the window shows it (with hex digits where the unit is Hex), or the number of a choice.
/// Nothing, and `why` in the user's words, when it cannot be read or set.
std::optional<field_value> value_typed(const field& row, const std::string& typed, std::string* why);

/// "byte 4", "bytes 10-13", "register 5, bits 16-17"; empty for a field without a place.
std::string value_place(const family_descriptor& of, const field& row);

/// The fields that a person can set, page by page as they are shown; what is not shown comes last on its page. The
/// module's own value is not among them.
std::vector<const field*> fields_by_page(const family_descriptor& of);
