#include "dev_a/vkt510a_codec.h"

#include "config/cfg_image.h"
#include "config/dev_obj.h"
#include "serial/image_ops.h"

#include <algorithm>

namespace {

using enum value_form;

constexpr reg_field rows[] = {
    {.place = layout::uart_rate, .key = "uart_bps_vkt510a", .fallback = 1},
    fixed_bytes(layout::uart_bits, 8),
    fixed_bytes(layout::uart_stop, 1),
    fixed_bytes(layout::uart_parity, 0),
    {.place = layout::can_rate, .key = "can_bps_vkt510a", .fallback = 8},
    kept_bytes(layout::check_byte),
    kept_bytes(layout::spare),
    {.place = layout::filter_on, .key = "can_filtration_en_vkt510a", .fallback = 0},
    {.place = layout::filter_frame, .key = "can_filtration_mode_vkt510a", .fallback = 8},
    {.place = layout::mask, .key = "can_send_shield_vkt510a", .form = word, .fallback = 0xFFFFFFFF},
    {.place = layout::code0, .key = "can_send_check0_vkt510a", .form = word, .fallback = 0},
    {.place = layout::code1, .key = "can_send_check1_vkt510a", .form = word, .fallback = 0},
    kept_bytes(layout::gap),
    {.place = layout::code2, .key = "can_send_check2_vkt510a", .form = word, .fallback = 0},
    {.place = layout::code3, .key = "can_send_check3_vkt510a", .form = word, .fallback = 0},
    {.place = layout::code4, .key = "can_send_check4_vkt510a", .form = word, .fallback = 0},
    {.place = layout::code5, .key = "can_send_check5_vkt510a", .form = word, .fallback = 0},
    {.place = layout::mode, .key = "change_mode_vkt510a", .fallback = 2},
    {.place = layout::direction, .key = "change_dir_vkt510a", .fallback = 0},
    {.place = layout::uart_interval, .key = "uart_distance_vkt510a", .fallback = 2},
    {.place = layout::can_to_serial, .key = "change_can_c_vkt510a", .fallback = 0},
    {.place = layout::id_to_serial, .key = "change_can_id_vkt510a", .fallback = 0},
    {.place = layout::send_frame, .key = "can_send_kind_vkt510a", .fallback = 8},
    {.place = layout::send_id, .key = "can_send_data_vkt510a", .form = word, .fallback = 0},
    {.place = layout::length, .key = "change_can_len_vkt510a", .fallback = 4},
    {.place = layout::start, .key = "change_can_star_vkt510a", .fallback = 0},
    {.place = layout::frame_head, .key = "change_f_h_vkt510a", .fallback = 64},
    {.place = layout::frame_end, .key = "change_f_e_vkt510a", .fallback = 26},
    {.place = layout::spi_count, .key = "spi_number_vkt510a", .fallback = 15},
    {.place = layout::spi_time, .key = "spi_time_vkt510a", .fallback = 5},
    fixed_bytes(layout::spi_polarity, 1),
    fixed_bytes(layout::spi_phase, 1),
};
static_assert(map_covers_image(rows) && map_keys_unique(rows) && map_widths_fit(rows));

void copy_out(std::span<uint8_t, session_image_bytes> image) {
    std::ranges::copy(cfg_image_get(family::a), image.begin());
}

void put_in(std::span<const uint8_t, session_image_bytes> bytes) {
    cfg_image_change(family::a, [bytes](image_bytes& image) { std::ranges::copy(bytes, image.begin()); });
}

} // namespace

std::span<const reg_field> vkt510a_map() { return rows; }

ret_t vkt510a_encode(void* /*context*/) {
    const dev_obj* dev = dev_get(family::a);
    if (dev == nullptr) return RET_FAIL;
    cfg_image_change(family::a, [dev](image_bytes& image) { map_encode(rows, dev->props, image); });
    return RET_OK;
}

ret_t vkt510a_decode(void* /*context*/) {
    const dev_obj* dev = dev_get(family::a);
    if (dev == nullptr) return RET_FAIL;
    map_decode(rows, dev->props, cfg_image_get(family::a));
    return RET_OK;
}

void vkt510a_codec_register() {
    family_ops ops = family_ops_of(family::a);
    ops.encode = vkt510a_encode;
    ops.decode = vkt510a_decode;
    family_ops_register(family::a, ops);
    image_ops_register(family::a, {.copy_out = copy_out, .put_in = put_in});
}
