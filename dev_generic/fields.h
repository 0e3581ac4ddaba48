// VKT530A and VKT531A: their values as rows of the 60-byte image, in its order.
#pragma once

#include "f7/choices.h"
#include "f7/image.h"

namespace generic_field {

using enum value_form;
namespace page = f7_page;
inline constexpr auto constant = encode_rule::constant;
inline constexpr auto to_default = decode_rule::to_default;
inline constexpr const char* zeros = "00 00 00 00";

inline constexpr choice_option yes_or_no[] = {{0, "否"}, {1, "是"}};
inline constexpr choice_option can_rates[] = {
    {1, "5K"},   {2, "10K"},  {3, "20K"},   {16, "25K"},  {4, "40K"},   {5, "50K"},   {6, "80K"},   {7, "100K"},
    {8, "125K"}, {9, "200K"}, {10, "250K"}, {11, "400K"}, {12, "500K"}, {13, "666K"}, {14, "800K"}, {15, "1M"},
};
inline constexpr choice_option filter_frames[] = {{0, "仅标准滤波"}, {8, "仅扩展滤波"}};
inline constexpr choice_option send_frames[] = {{0, "标准帧"}, {8, "扩展帧"}};

// The fallbacks differ from the defaults on purpose: they only matter for a key that is missing. Data bits, stop
// bits, polarity and phase are read from a reply but always written with the one value that the modules support.
// Acceptance codes 1 to 5 and the send identifier become zeros whatever a reply holds: the store then shows them as
// not set.
// clang-format off
inline constexpr field uart_rate    {.key = "uart_baud_rate",    .place = f7_place::uart_rate,     .fallback = 0, .number = 1, .label = "波特率", .unit = "bps", .choices = options::uart_rates, .shown = {page::uart, 1}};
inline constexpr field uart_bits    {.key = "uart_bit_num",      .place = f7_place::uart_bits,     .fallback = 8, .number = 8, .encode = constant, .label = "数据位", .unit = "位", .lowest = 8, .highest = 8, .shown = {page::uart, 0}};
inline constexpr field uart_stop    {.key = "uart_stop",         .place = f7_place::uart_stop,     .fallback = 1, .number = 1, .encode = constant, .label = "停止位", .unit = "位", .lowest = 1, .highest = 1, .shown = {page::uart, 0}};
inline constexpr field uart_parity  {.key = "uart_check",        .place = f7_place::uart_parity,   .form = text, .text = "无校验", .encode = constant, .decode = to_default, .label = "校验位", .choices = options::uart_parities, .shown = {page::uart, 2}};
inline constexpr field uart_control {.key = "uart_control",      .form = text, .text = "无", .encode = constant, .decode = to_default, .label = "流控制", .choices = options::uart_controls, .shown = {page::uart, 3}};
inline constexpr field can_rate     {.key = "can_baud_rate",     .place = f7_place::can_rate,      .fallback = 8, .number = 8, .label = "波特率", .unit = "bps", .choices = can_rates, .shown = {page::can, 1}};
inline constexpr field check_byte   {.key = "change_err_check",  .place = f7_place::check_byte,    .form = yes_no, .text = "否", .label = "校验字节", .choices = yes_or_no, .shown = {page::change, 3}};
inline constexpr field filter_on    {.key = "can_check",         .place = f7_place::filter_on,     .form = flag, .fallback = 0, .number = 0, .label = "启用接收滤波", .shown = {page::can, 4}};
inline constexpr field filter_frame {.key = "can_filtration",    .place = f7_place::filter_frame,  .fallback = 8, .number = 8, .label = "滤波帧类型", .choices = filter_frames, .shown = {page::can, 5}};
inline constexpr field mask         {.key = "can_scherm",        .place = f7_place::mask,          .form = hex_text, .text = "FF FF FF FF", .label = "屏蔽码", .unit = "Hex", .shown = {page::can, 6}};
inline constexpr field code0        {.key = "can_check0",        .place = f7_place::code0,         .form = hex_text, .text = zeros, .label = "验收码 0", .unit = "Hex", .shown = {page::can, 7}};
inline constexpr field code1        {.key = "can_check1",        .place = f7_place::code1,         .form = hex_text, .text = zeros, .decode = to_default, .label = "验收码 1", .unit = "Hex", .shown = {page::can, 8}};
inline constexpr field code2        {.key = "can_check2",        .place = f7_place::code2,         .form = hex_text, .text = zeros, .decode = to_default, .label = "验收码 2", .unit = "Hex", .shown = {page::can, 9}};
inline constexpr field code3        {.key = "can_check3",        .place = f7_place::code3,         .form = hex_text, .text = zeros, .decode = to_default, .label = "验收码 3", .unit = "Hex", .shown = {page::can, 10}};
inline constexpr field code4        {.key = "can_check4",        .place = f7_place::code4,         .form = hex_text, .text = zeros, .decode = to_default, .label = "验收码 4", .unit = "Hex", .shown = {page::can, 11}};
inline constexpr field code5        {.key = "can_check5",        .place = f7_place::code5,         .form = hex_text, .text = zeros, .decode = to_default, .label = "验收码 5", .unit = "Hex", .shown = {page::can, 12}};
inline constexpr field change_mode  {.key = "change_mode",       .place = f7_place::mode,          .fallback = 4, .number = 2, .label = "转换模式", .choices = options::modes, .shown = {page::change, 1}};
inline constexpr field direction    {.key = "change_dir",        .place = f7_place::direction,     .fallback = 0, .number = 0, .label = "转换方向", .choices = options::directions, .shown = {page::change, 2}};
inline constexpr field uart_interval{.key = "uart_f_distance",   .place = f7_place::uart_interval, .fallback = 2, .number = 2, .label = "帧间隔", .unit = "bit", .shown = {page::uart, 4}};
inline constexpr field can_to_serial{.key = "change_can_serial", .place = f7_place::can_to_serial, .form = flag, .fallback = 0, .number = 0, .label = "CAN 帧信息转到串口", .shown = {page::change, 6}};
inline constexpr field id_to_serial {.key = "change_id_serial",  .place = f7_place::id_to_serial,  .form = flag, .fallback = 0, .number = 0, .label = "CAN 帧标识转到串口", .shown = {page::change, 7}};
inline constexpr field send_frame   {.key = "can_sendf_kind",    .place = f7_place::send_frame,    .fallback = 0, .number = 8, .label = "帧类型", .choices = send_frames, .shown = {page::can, 2}};
inline constexpr field send_id      {.key = "can_sendf_flage",   .place = f7_place::send_id,       .form = hex_text, .text = zeros, .decode = to_default, .label = "帧标识", .unit = "Hex", .shown = {page::can, 3}};
inline constexpr field id_length    {.key = "change_len",        .place = f7_place::length,        .fallback = 1, .number = 4, .label = "标识长度", .unit = "字节", .highest = 8, .shown = {page::change, 5}};
inline constexpr field id_start     {.key = "change_star",       .place = f7_place::start,         .fallback = 0, .number = 0, .label = "起始位置", .unit = "字节", .highest = 7, .shown = {page::change, 4}};
inline constexpr field frame_head   {.key = "change_fh",         .place = f7_place::frame_head,    .form = hex_text, .text = "40", .label = "帧头", .unit = "Hex", .shown = {page::change, 8}};
inline constexpr field frame_end    {.key = "change_fe",         .place = f7_place::frame_end,     .form = hex_text, .text = "1A", .label = "帧尾", .unit = "Hex", .shown = {page::change, 9}};
inline constexpr field spi_count    {.key = "spi_ff_fnum",       .place = f7_place::spi_count,     .fallback = 8, .number = 15, .label = "帧字节数", .unit = "字节", .shown = {page::spi, 1}};
inline constexpr field spi_time     {.key = "spi_ff_time",       .place = f7_place::spi_time,      .fallback = 1, .number = 5, .label = "帧时间", .unit = "ms", .shown = {page::spi, 2}};
inline constexpr field spi_bits     {.key = "spi_data_len",      .number = 8, .encode = constant, .decode = to_default, .label = "数据长度", .unit = "位", .lowest = 8, .highest = 8, .shown = {page::spi, 0}};
inline constexpr field bit_order    {.key = "spi_bit_tran",      .form = text, .text = "MSB", .encode = constant, .decode = to_default, .label = "位传输顺序", .choices = options::bit_orders, .shown = {page::spi, 3}};
inline constexpr field spi_polarity {.key = "spi_cpol",          .place = f7_place::spi_polarity,  .fallback = 1, .number = 1, .encode = constant, .label = "时钟极性", .lowest = 1, .highest = 1, .shown = {page::spi, 0}};
inline constexpr field spi_phase    {.key = "spi_cpha",          .place = f7_place::spi_phase,     .fallback = 1, .number = 1, .encode = constant, .label = "时钟相位", .lowest = 1, .highest = 1, .shown = {page::spi, 0}};

inline constexpr field rows[] = {
    uart_rate, uart_bits, uart_stop, uart_parity, uart_control, can_rate, check_byte, f7_fixed(f7_place::spare, 0),
    filter_on, filter_frame, mask, code0, code1, f7_fixed(f7_place::gap, 0), code2, code3, code4, code5,
    change_mode, direction, uart_interval, can_to_serial, id_to_serial, send_frame, send_id, id_length, id_start, frame_head, frame_end,
    spi_count, spi_time, spi_bits, bit_order, spi_polarity, spi_phase,
};
// clang-format on
static_assert(f7_covers_image(rows) && field_keys_unique(rows) && f7_widths_fit(rows));

} // namespace generic_field

inline constexpr field_rows generic_fields = generic_field::rows;
