// VKT510A: its values as rows of the 60-byte image, in its order.
#pragma once

#include "f7/choices.h"
#include "f7/image.h"

namespace vkt510a_field {

using enum value_form;
namespace page = f7_page;

inline constexpr choice_option can_rates[] = {
    {1, "5k"},   {2, "10k"},   {3, "20k"},   {4, "40k"},   {5, "50k"},   {6, "80k"},   {7, "100k"}, {8, "125k"},
    {9, "200k"}, {10, "250k"}, {11, "400k"}, {12, "500k"}, {13, "666k"}, {14, "800k"}, {15, "1M"},
};
inline constexpr choice_option filter_frames[] = {{8, "仅扩展帧滤波"}, {0, "仅标准帧滤波"}};
inline constexpr choice_option send_frames[] = {{8, "扩展帧"}, {0, "标准帧"}};
// This module goes up to 921600: the three fastest codes are kept out.
inline constexpr auto uart_rates = std::span(options::uart_rates).first<16>();

// The bounds are intended as they stand, also where they are wider than what can be chosen: 16 ends the interval, a
// switch takes 2 and more, and an SPI value may be anything that a byte holds below 255.
// clang-format off
inline constexpr field uart_rate    {.key = "uart_bps_vkt510a",            .place = f7_place::uart_rate,     .fallback = 1,  .number = 1,  .label = "波特率", .unit = "bps", .choices = uart_rates, .shown = {page::uart, 1}};
inline constexpr field can_rate     {.key = "can_bps_vkt510a",             .place = f7_place::can_rate,      .fallback = 8,  .number = 8,  .label = "波特率", .unit = "bps", .choices = can_rates, .shown = {page::can, 1}};
inline constexpr field filter_on    {.key = "can_filtration_en_vkt510a",   .place = f7_place::filter_on,     .fallback = 0,  .number = 0,  .label = "启用接收滤波", .highest = 15, .shown = {page::can, 4}};
inline constexpr field filter_frame {.key = "can_filtration_mode_vkt510a", .place = f7_place::filter_frame,  .fallback = 8,  .number = 8,  .label = "滤波帧类型", .highest = 15, .choices = filter_frames, .shown = {page::can, 5}};
inline constexpr field mask         {.key = "can_send_shield_vkt510a",     .place = f7_place::mask,          .form = word, .fallback = 0xFFFFFFFF, .number = 0xFFFFFFFF, .label = "屏蔽码", .unit = "Hex", .shown = {page::can, 6}};
inline constexpr field code0        {.key = "can_send_check0_vkt510a",     .place = f7_place::code0,         .form = word, .label = "验收码 0", .unit = "Hex", .shown = {page::can, 7}};
inline constexpr field code1        {.key = "can_send_check1_vkt510a",     .place = f7_place::code1,         .form = word, .label = "验收码 1", .unit = "Hex", .shown = {page::can, 8}};
inline constexpr field code2        {.key = "can_send_check2_vkt510a",     .place = f7_place::code2,         .form = word, .label = "验收码 2", .unit = "Hex", .shown = {page::can, 9}};
inline constexpr field code3        {.key = "can_send_check3_vkt510a",     .place = f7_place::code3,         .form = word, .label = "验收码 3", .unit = "Hex", .shown = {page::can, 10}};
inline constexpr field code4        {.key = "can_send_check4_vkt510a",     .place = f7_place::code4,         .form = word, .label = "验收码 4", .unit = "Hex", .shown = {page::can, 11}};
inline constexpr field code5        {.key = "can_send_check5_vkt510a",     .place = f7_place::code5,         .form = word, .label = "验收码 5", .unit = "Hex", .shown = {page::can, 12}};
inline constexpr field change_mode  {.key = "change_mode_vkt510a",         .place = f7_place::mode,          .fallback = 2,  .number = 2,  .label = "转换模式", .choices = options::modes, .shown = {page::change, 1}};
inline constexpr field direction    {.key = "change_dir_vkt510a",          .place = f7_place::direction,     .fallback = 0,  .number = 0,  .label = "转换方向", .choices = options::directions, .shown = {page::change, 2}};
inline constexpr field uart_interval{.key = "uart_distance_vkt510a",       .place = f7_place::uart_interval, .fallback = 2,  .number = 2,  .label = "帧间隔", .unit = "bit", .highest = 16, .shown = {page::uart, 4}};
inline constexpr field can_to_serial{.key = "change_can_c_vkt510a",        .place = f7_place::can_to_serial, .fallback = 0,  .number = 0,  .label = "CAN 帧信息转到串口", .highest = 2, .shown = {page::change, 5}};
inline constexpr field id_to_serial {.key = "change_can_id_vkt510a",       .place = f7_place::id_to_serial,  .fallback = 0,  .number = 0,  .label = "CAN 帧标识转到串口", .highest = 2, .shown = {page::change, 6}};
inline constexpr field send_frame   {.key = "can_send_kind_vkt510a",       .place = f7_place::send_frame,    .fallback = 8,  .number = 8,  .label = "帧类型", .highest = 15, .choices = send_frames, .shown = {page::can, 2}};
inline constexpr field send_id      {.key = "can_send_data_vkt510a",       .place = f7_place::send_id,       .form = word, .label = "帧标识", .unit = "Hex", .shown = {page::can, 3}};
inline constexpr field id_length    {.key = "change_can_len_vkt510a",      .place = f7_place::length,        .fallback = 4,  .number = 4,  .label = "标识长度", .unit = "字节", .highest = 4, .shown = {page::change, 4}};
inline constexpr field id_start     {.key = "change_can_star_vkt510a",     .place = f7_place::start,         .fallback = 0,  .number = 0,  .label = "起始位置", .unit = "字节", .highest = 7, .shown = {page::change, 3}};
inline constexpr field frame_head   {.key = "change_f_h_vkt510a",          .place = f7_place::frame_head,    .fallback = 64, .number = 64, .label = "帧头", .unit = "Hex", .shown = {page::change, 7}};
inline constexpr field frame_end    {.key = "change_f_e_vkt510a",          .place = f7_place::frame_end,     .fallback = 26, .number = 26, .label = "帧尾", .unit = "Hex", .shown = {page::change, 8}};
inline constexpr field spi_count    {.key = "spi_number_vkt510a",          .place = f7_place::spi_count,     .fallback = 15, .number = 15, .label = "帧字节数", .unit = "字节", .highest = 254, .shown = {page::spi, 1}};
inline constexpr field spi_time     {.key = "spi_time_vkt510a",            .place = f7_place::spi_time,      .fallback = 5,  .number = 5,  .label = "帧时间", .unit = "ms", .highest = 254, .shown = {page::spi, 2}};
// They stand on a page with one choice each; no value of the store is behind them.
inline constexpr field uart_parity  {.label = "校验位", .choices = options::uart_parities};
inline constexpr field uart_control {.label = "流控制", .choices = options::uart_controls};
inline constexpr field bit_order    {.label = "位传输顺序", .choices = options::bit_orders};

inline constexpr field rows[] = {
    uart_rate, f7_fixed(f7_place::uart_bits, 8), f7_fixed(f7_place::uart_stop, 1), f7_fixed(f7_place::uart_parity, 0),
    can_rate, f7_kept(f7_place::check_byte), f7_kept(f7_place::spare),
    filter_on, filter_frame, mask, code0, code1, f7_kept(f7_place::gap), code2, code3, code4, code5,
    change_mode, direction, uart_interval, can_to_serial, id_to_serial, send_frame, send_id, id_length, id_start, frame_head, frame_end,
    spi_count, spi_time, f7_fixed(f7_place::spi_polarity, 1), f7_fixed(f7_place::spi_phase, 1),
};
// clang-format on
static_assert(f7_covers_image(rows) && field_keys_unique(rows) && f7_widths_fit(rows));

} // namespace vkt510a_field

inline constexpr field_rows vkt510a_fields = vkt510a_field::rows;
