// The 60-byte register image that the generic and the A family share: one layout, and per family one table of rows
// that says which property feeds which bytes. Encoder and decoder are loops over the rows.
#pragma once

#include "toolkit/core/object.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

inline constexpr std::size_t image_size = 60;
using image_bytes = std::array<uint8_t, image_size>;

/// A run of image bytes; groups of four hold their most significant byte first.
struct reg_place {
    uint8_t at = 0;
    uint8_t bytes = 0; ///< 0: no place in the image
};

namespace layout {
inline constexpr reg_place none{};
inline constexpr reg_place uart_rate{0, 1}, uart_bits{1, 1}, uart_stop{2, 1}, uart_parity{3, 1};
inline constexpr reg_place can_rate{4, 1}, check_byte{5, 1}, spare{6, 2};
inline constexpr reg_place filter_on{8, 1}, filter_frame{9, 1}, mask{10, 4}, code0{14, 4}, code1{18, 4};
inline constexpr reg_place gap{22, 4}; // the module leaves a hole between code 1 and code 2
inline constexpr reg_place code2{26, 4}, code3{30, 4}, code4{34, 4}, code5{38, 4};
inline constexpr reg_place mode{42, 1}, direction{43, 1}, uart_interval{44, 1};
inline constexpr reg_place can_to_serial{45, 1}, id_to_serial{46, 1}, send_frame{47, 1}, send_id{48, 4};
inline constexpr reg_place length{52, 1}, start{53, 1}, frame_head{54, 1}, frame_end{55, 1};
inline constexpr reg_place spi_count{56, 1}, spi_time{57, 1}, spi_polarity{58, 1}, spi_phase{59, 1};
} // namespace layout

/// How a property holds its value.
enum class value_form : uint8_t {
    number,   ///< uint8
    flag,     ///< bool, 1 or 0 in the image
    yes_no,   ///< text; exactly "是" is 1, anything else 0
    hex_text, ///< pairs of hex digits with one character between them, one pair for each image byte
    word,     ///< uint32, four bytes, most significant first
};
enum class encode_rule : uint8_t {
    from_key, ///< the property's value, `fallback` when it is missing
    constant, ///< always `fallback`, whatever the property says
    leave,    ///< the image keeps what it holds
};
enum class decode_rule : uint8_t {
    from_image,
    constant, ///< always `text` (hex_text, yes_no and plain texts) or `number`
    none,     ///< the property stays as it is
};

/// One field of a family's map.
struct reg_field {
    reg_place place;
    const char* key = nullptr; ///< null: no property behind these bytes
    value_form form = value_form::number;
    uint32_t fallback = 0;
    encode_rule encode = encode_rule::from_key;
    decode_rule decode = decode_rule::from_image;
    uint32_t number = 0;
    const char* text = nullptr;
};

/// Bytes without a property: `value` in each of them.
constexpr reg_field fixed_bytes(reg_place place, uint32_t value) {
    return {.place = place, .fallback = value, .encode = encode_rule::constant, .decode = decode_rule::none};
}
/// Bytes that the program never writes: they keep what the last reply put there.
constexpr reg_field kept_bytes(reg_place place) {
    return {.place = place, .encode = encode_rule::leave, .decode = decode_rule::none};
}

/// True when the rows name every image byte exactly once and nothing beyond the image.
constexpr bool map_covers_image(std::span<const reg_field> rows) {
    std::array<int, image_size> named{};
    for (const auto& row : rows)
        for (std::size_t i = 0; i < row.place.bytes; i++) {
            if (row.place.at + i >= image_size) return false;
            named[row.place.at + i]++;
        }
    for (int n : named)
        if (n != 1) return false;
    return true;
}
/// True when no key stands in two rows.
constexpr bool map_keys_unique(std::span<const reg_field> rows) {
    for (std::size_t i = 0; i < rows.size(); i++)
        for (std::size_t k = i + 1; k < rows.size(); k++)
            if (rows[i].key != nullptr && rows[k].key != nullptr && std::string_view(rows[i].key) == rows[k].key)
                return false;
    return true;
}
/// True when every width suits its form.
constexpr bool map_widths_fit(std::span<const reg_field> rows) {
    for (const auto& row : rows) {
        if (row.encode != encode_rule::from_key) continue;
        const bool wide = row.place.bytes == 4;
        if (row.form == value_form::word ? !wide : row.form != value_form::hex_text && row.place.bytes != 1)
            return false;
    }
    return true;
}

/// The row of a key, null when the map has none.
constexpr const reg_field* map_find(std::span<const reg_field> rows, std::string_view key) {
    for (const auto& row : rows)
        if (row.key != nullptr && key == row.key) return &row;
    return nullptr;
}

/// Writes one row's bytes from `props` into `image`. Any thread; the caller guards `image`.
void field_encode(const reg_field& row, const tk_object* props, image_bytes& image);
/// Writes all rows' bytes. Any thread; the caller guards `image`.
void map_encode(std::span<const reg_field> rows, const tk_object* props, image_bytes& image);
/// Writes all rows' properties from `image`. Any thread.
void map_decode(std::span<const reg_field> rows, tk_object* props, const image_bytes& image);
