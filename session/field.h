// A field is one value that a module keeps, and everything that the program knows of it without a widget: its key
// in the store, its place in the module's image, how it is packed and unpacked, its default, and what a person
// sees. A family is a table of such rows; stores, codecs, pages, profiles and listings are loops over it.
#pragma once

#include "toolkit/core/object.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

/// A value that a person can choose: the module's own code, and its text.
struct choice_option {
    int32_t value;
    const char* text;
};

/// Where a field lives in its family's image. `at` counts what the image is made of: bytes, or 32-bit registers.
struct field_place {
    uint8_t at = 0;
    uint8_t bit = 0;  ///< lowest bit
    uint8_t bits = 0; ///< width; 0: no place in the image
    constexpr std::size_t bytes() const { return bits / 8; }
};

/// Where a field stands on the screen.
struct field_spot {
    uint8_t page = 0; ///< of family_descriptor::pages
    uint8_t row = 0;  ///< on that page from its top, counted from 1; 0: it belongs there, but is not shown
};

/// How a property holds its value.
enum class value_form : uint8_t {
    number,   ///< uint8
    flag,     ///< bool, 1 or 0 in the image
    yes_no,   ///< text; exactly "是" is 1, anything else 0
    hex_text, ///< pairs of hex digits with one character between them, one pair for each image byte
    text,     ///< text that the image does not hold
    word,     ///< uint32
};
enum class encode_rule : uint8_t {
    from_key, ///< the property's value, `fallback` when it is missing
    constant, ///< always `fallback`, whatever the property says
    leave,    ///< the image keeps what it holds
};
enum class decode_rule : uint8_t {
    from_image,
    to_default, ///< whatever the image holds
    none,       ///< the property stays as it is
};

struct field {
    const char* key = nullptr; ///< null: no property behind these bits
    field_place place{};
    value_form form = value_form::number;
    uint32_t fallback = 0; ///< packed when the store lacks the key; not always the default, on purpose
    uint32_t number = 0;   ///< default of a number, a flag or a word
    const char* text = ""; ///< default of a text
    encode_rule encode = encode_rule::from_key;
    decode_rule decode = decode_rule::from_image;
    bool adds = false; ///< packed by addition instead of OR: differs only for a value wider than its place

    // What a person sees.
    const char* label = "";  ///< as the layout shows it
    const char* unit = "";   ///< empty where it has none
    uint32_t lowest = 0;     ///< as stored
    uint32_t highest = 0;    ///< as stored; 0: what choices, width and form allow (field_highest)
    int32_t shown_above = 0; ///< what is shown is the stored number plus this
    std::span<const choice_option> choices{};
    field_spot shown{};
};
/// What has neither key nor place nor anything to show.
inline constexpr field no_field{};

/// The highest number that a field takes, as stored; of a text without choices 0.
constexpr uint32_t field_highest(const field& row) {
    if (row.highest != 0) return row.highest;
    int32_t highest = 0;
    for (const choice_option& option : row.choices) highest = std::max(highest, option.value);
    if (!row.choices.empty()) return static_cast<uint32_t>(highest);
    if (row.form == value_form::flag) return 1;
    if (row.form == value_form::word) return 0xFFFFFFFF;
    if (row.form != value_form::number) return 0;
    return row.place.bits == 0 || row.place.bits > 8 ? 0xFF : (1u << row.place.bits) - 1;
}

using field_rows = std::span<const field>;

/// The row of a key, null when there is none.
constexpr const field* field_find(field_rows rows, std::string_view key) {
    for (const field& row : rows)
        if (row.key != nullptr && key == row.key) return &row;
    return nullptr;
}
/// True when no key stands in two rows.
constexpr bool field_keys_unique(field_rows rows) {
    for (std::size_t i = 0; i < rows.size(); i++)
        if (rows[i].key != nullptr && field_find(rows.first(i), rows[i].key) != nullptr) return false;
    return true;
}

/// Stores one field's default. RET_FAIL when the store refuses it. Any thread.
ret_t field_set_default(const field& row, tk_object* props);
/// Stores every default, but that of the key `except` (null: all). Any thread.
void fields_set_defaults(field_rows rows, tk_object* props, const char* except = nullptr);

/// The stored number (of a flag 0 or 1), the default when the key is missing. Any thread.
uint8_t field_byte(const field& row, const tk_object* props);
uint32_t field_word(const field& row, const tk_object* props);
/// The stored text, the default when the key is missing. Any thread.
std::string field_text(const field& row, const tk_object* props);
