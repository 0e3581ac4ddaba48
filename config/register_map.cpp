#include "config/register_map.h"

#include "config/hex_text.h"

#include <string>

namespace {

// As much of a hex text as the encoder looks at, in bytes.
constexpr std::size_t text_bytes = 100;
constexpr const char* yes = "是";
constexpr const char* no = "否";

uint8_t number_of(const reg_field& row, const tk_object* props) {
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

void decode_constant(const reg_field& row, tk_object* props) {
    if (row.text != nullptr)
        tk_object_set_prop_str(props, row.key, row.text);
    else
        tk_object_set_prop_uint8(props, row.key, static_cast<uint8_t>(row.number));
}

void decode_image(const reg_field& row, tk_object* props, std::span<const uint8_t> bytes) {
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
    }
}

} // namespace

void field_encode(const reg_field& row, const tk_object* props, image_bytes& image) {
    const std::span bytes = std::span(image).subspan(row.place.at, row.place.bytes);
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

void map_encode(std::span<const reg_field> rows, const tk_object* props, image_bytes& image) {
    for (const auto& row : rows) field_encode(row, props, image);
}

void map_decode(std::span<const reg_field> rows, tk_object* props, const image_bytes& image) {
    for (const auto& row : rows) {
        if (row.decode == decode_rule::constant) decode_constant(row, props);
        if (row.decode == decode_rule::from_image)
            decode_image(row, props, std::span(image).subspan(row.place.at, row.place.bytes));
    }
}
