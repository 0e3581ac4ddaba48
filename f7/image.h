// The 60-byte register image: one layout for every family that speaks F7 frames, and per family one table of fields
// that says which property feeds which bytes. Groups of four bytes hold their most significant byte first.
#pragma once

#include "session/field.h"

#include <array>

inline constexpr std::size_t f7_image_size = 60;
using f7_image = std::span<uint8_t, f7_image_size>;
using f7_image_view = std::span<const uint8_t, f7_image_size>;

namespace f7_place {
constexpr field_place bytes(uint8_t at, uint8_t count) { return {at, 0, static_cast<uint8_t>(8 * count)}; }

inline constexpr field_place none{};
inline constexpr auto uart_rate = bytes(0, 1), uart_bits = bytes(1, 1), uart_stop = bytes(2, 1);
inline constexpr auto uart_parity = bytes(3, 1), can_rate = bytes(4, 1), check_byte = bytes(5, 1);
inline constexpr auto spare = bytes(6, 2), filter_on = bytes(8, 1), filter_frame = bytes(9, 1);
inline constexpr auto mask = bytes(10, 4), code0 = bytes(14, 4), code1 = bytes(18, 4);
inline constexpr auto gap = bytes(22, 4); // the module leaves a hole between code 1 and code 2
inline constexpr auto code2 = bytes(26, 4), code3 = bytes(30, 4), code4 = bytes(34, 4), code5 = bytes(38, 4);
inline constexpr auto mode = bytes(42, 1), direction = bytes(43, 1), uart_interval = bytes(44, 1);
inline constexpr auto can_to_serial = bytes(45, 1), id_to_serial = bytes(46, 1), send_frame = bytes(47, 1);
inline constexpr auto send_id = bytes(48, 4), length = bytes(52, 1), start = bytes(53, 1);
inline constexpr auto frame_head = bytes(54, 1), frame_end = bytes(55, 1), spi_count = bytes(56, 1);
inline constexpr auto spi_time = bytes(57, 1), spi_polarity = bytes(58, 1), spi_phase = bytes(59, 1);
} // namespace f7_place

/// Bytes without a property: `value` in each of them.
constexpr field f7_fixed(field_place place, uint32_t value) {
    return {.place = place, .fallback = value, .encode = encode_rule::constant, .decode = decode_rule::none};
}
/// Bytes that the program never writes: they keep what the last reply put there.
constexpr field f7_kept(field_place place) {
    return {.place = place, .encode = encode_rule::leave, .decode = decode_rule::none};
}

/// True when the rows name every image byte exactly once and nothing beyond the image.
constexpr bool f7_covers_image(field_rows rows) {
    std::array<int, f7_image_size> named{};
    for (const field& row : rows)
        for (std::size_t i = 0; i < row.place.bytes(); i++) {
            if (row.place.at + i >= f7_image_size) return false;
            named[row.place.at + i]++;
        }
    for (int n : named)
        if (n != 1) return false;
    return true;
}
/// True when every width suits its form.
constexpr bool f7_widths_fit(field_rows rows) {
    for (const field& row : rows) {
        if (row.encode != encode_rule::from_key) continue;
        const bool wide = row.place.bytes() == 4;
        if (row.form == value_form::word ? !wide : row.form != value_form::hex_text && row.place.bytes() != 1)
            return false;
    }
    return true;
}

/// Writes one row's bytes from `props` into `image`.
void f7_encode_field(const field& row, const tk_object* props, f7_image image);
/// Writes all rows' bytes.
void f7_encode(field_rows rows, const tk_object* props, f7_image image);
/// Writes all rows' properties from `image`.
void f7_decode(field_rows rows, tk_object* props, f7_image_view image);
