#include "f7/image.h"

#include "toolkit/core/hex_text.h"

#include <string>

namespace {

// As much of a hex text as the encoder looks at, in bytes.
constexpr std::size_t text_bytes = 100;
constexpr const char* yes = "是";
constexpr const char* no = "否";

uint8_t number_of(const field& row, const tk_object* props) {
    switch (row.form) {
    case value_form::flag:
        return tk_object_get_prop_bool(props, row.key, row.fallback != 0) ? 1 : 0;
    case value_form::yes_no:
        return tk_object_get_prop_str(props, row.key, no) == yes ? 1 : 0;
    default:
        return tk_object_get_prop_uint8(props, row.key, static_cast<uint8_t>(row.fallback));
    }
}

void put_word(uint32_t word, std::span<uint8_t> bytes) {
    for (std::size_t i = bytes.size(); i-- > 0; word >>= 8) bytes[i] = static_cast<uint8_t>(word);
}

uint32_t word_of(std::span<const uint8_t> bytes) {
    uint32_t word = 0;
    for (uint8_t b : bytes) word = word << 8 | b;
    return word;
}

void decode_image(const field& row, tk_object* props, std::span<const uint8_t> bytes) {
    switch (row.form) {
    case value_form::number:
        tk_object_set_prop_uint8(props, row.key, bytes[0]);
        break;
    case value_form::flag:
        tk_object_set_prop_bool(props, row.key, bytes[0] != 0);
        break;
    case value_form::yes_no:
        tk_object_set_prop_str(props, row.key, bytes[0] != 0 ? yes : no);
        break;
    case value_form::hex_text:
        // Lower case, unlike the defaults: a text tells whether it came from the module.
        tk_object_set_prop_str(props, row.key, hex_pairs_from_bytes(bytes, false).c_str());
        break;
    case value_form::word:
        tk_object_set_prop_uint32(props, row.key, word_of(bytes));
        break;
    case value_form::text:
        break;
    }
}

} // namespace

void f7_encode_field(const field& row, const tk_object* props, f7_image image) {
    const std::span bytes = image.subspan(row.place.at, row.place.bytes());
    if (bytes.empty() || row.encode == encode_rule::leave) return;
    if (row.encode == encode_rule::constant) {
        for (uint8_t& b : bytes) b = static_cast<uint8_t>(row.fallback);
    } else if (row.form == value_form::hex_text) {
        hex_pairs_to_bytes(tk_object_get_prop_str(props, row.key, "").substr(0, text_bytes), bytes);
    } else if (row.form == value_form::word) {
        put_word(tk_object_get_prop_uint32(props, row.key, row.fallback), bytes);
    } else {
        bytes[0] = number_of(row, props);
    }
}

void f7_encode(field_rows rows, const tk_object* props, f7_image image) {
    for (const field& row : rows) f7_encode_field(row, props, image);
}

void f7_decode(field_rows rows, tk_object* props, f7_image_view image) {
    for (const field& row : rows) {
        if (row.decode == decode_rule::to_default) static_cast<void>(field_set_default(row, props));
        if (row.decode == decode_rule::from_image)
            decode_image(row, props, image.subspan(row.place.at, row.place.bytes()));
    }
}
