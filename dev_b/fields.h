// The B family's values: which bits of which 32-bit register hold which property.
#pragma once

#include "dev_b/choices.h"

#include <algorithm>
#include <array>

inline constexpr std::size_t vkt610b_register_count = 35; ///< the last one is the version, read only
inline constexpr std::size_t vkt610b_writable_count = 34;

namespace vkt610b_detail {

/// A text of the program, with the channel's number in the place of '#'.
template <std::size_t N>
struct literal {
    char text[N] = {};
    constexpr literal(const char (&from)[N]) { std::copy_n(from, N, text); }
    constexpr literal of(int channel) const {
        literal out = *this;
        std::replace(std::begin(out.text), std::end(out.text), '#', static_cast<char>('0' + channel));
        return out;
    }
};
template <literal Text, int Channel>
inline constexpr auto kept = Text.of(Channel);

template <std::size_t... N>
constexpr auto join(const std::array<field, N>&... parts) {
    std::array<field, (N + ...)> out{};
    std::size_t at = 0;
    auto append = [&](const auto& part) {
        for (const auto& row : part) out[at++] = row;
    };
    (append(parts), ...);
    return out;
}

constexpr uint64_t bits_of(const field& f) {
    return ((f.place.bits == 32 ? 0xFFFFFFFFull : (1ull << f.place.bits) - 1)) << f.place.bit;
}

/// Every width suits its form, and every fallback its width.
constexpr bool fits(field_rows rows) {
    return std::all_of(rows.begin(), rows.end(), [](const field& f) {
        const bool whole = f.place.bits == 32;
        return f.place.at < vkt610b_register_count &&
               (whole ? f.form == value_form::word : f.form == value_form::number) &&
               (whole || f.place.bits <= 8) && f.place.bit + f.place.bits <= 32 &&
               (whole || (f.fallback >> f.place.bits) == 0);
    });
}
/// No bit is named twice, and every register is named.
constexpr bool words_shared_out(field_rows rows) {
    std::array<uint64_t, vkt610b_register_count> used{};
    for (const field& f : rows) {
        if ((used[f.place.at] & bits_of(f)) != 0) return false;
        used[f.place.at] |= bits_of(f);
    }
    return std::none_of(used.begin(), used.end(), [](uint64_t bits) { return bits == 0; });
}

} // namespace vkt610b_detail

/// "canfd#_mode" of channel 1 is "canfd1_mode". A key is known by its characters: they are kept for the program's
/// life.
template <vkt610b_detail::literal Text, int Channel>
inline constexpr const char* vkt610b_named = vkt610b_detail::kept<Text, Channel>.text;

namespace vkt610b_field {

using enum value_form;
namespace options = vkt610b_options;
namespace page = vkt610b_page;

// clang-format off
inline constexpr field change_mode{.key = "change_mode_vkt610b",        .place = {0, 0, 8}, .fallback = 1, .number = 1,                .label = "转换模式", .choices = options::modes, .shown = {page::change, 1}};
inline constexpr field can_channel{.key = "change_can_channel_vkt610b", .place = {1, 0, 1}, .fallback = 0, .number = 1, .adds = true,  .label = "CAN FD 通道数", .unit = "路", .shown_above = 1, .shown = {page::change, 3}};
inline constexpr field protocol   {.key = "change_protcol_vkt610b",     .place = {1, 1, 2}, .fallback = 3, .number = 1, .adds = true,  .label = "转换通道", .choices = options::protocols, .shown = {page::change, 2}};
inline constexpr field spi_count  {.key = "spi_picture_vkt610b",        .place = {4, 0, 8}, .fallback = 7, .number = 9,                .label = "帧数", .unit = "帧", .highest = 99, .shown_above = 1, .shown = {page::spi, 1}};
inline constexpr field spi_time   {.key = "spi_time_vkt610b",           .place = {4, 8, 8}, .fallback = 4, .number = 9,                .label = "时间", .unit = "ms", .shown_above = 1, .shown = {page::spi, 2}};
inline constexpr field version    {.key = "version",                    .place = {34, 0, 32}, .form = word,                            .label = "固件版本", .shown = {page::change, 4}};

template <int N>
struct uart {
    static constexpr field rate{.key = vkt610b_named<"uart#_bps_vkt610b", N>, .place = {1 + N, 0, 8}, .fallback = 15, .number = 10, .label = "波特率", .unit = "bps", .choices = options::uart_rates, .shown = {page::uart + N - 1, 1}};
};

/// A mask or code: shown and typed within what the frame kind has bits for, stored as it is.
constexpr field filter(const char* key, int at, uint32_t fallback, const char* label, uint32_t highest, field_spot spot) {
    return {.key = key, .place = {static_cast<uint8_t>(at), 0, 32}, .form = word, .fallback = fallback, .label = label, .unit = "Hex", .highest = highest, .shown = spot};
}
constexpr field standard(const char* key, int at, uint32_t fallback, const char* label, field_spot spot) { return filter(key, at, fallback, label, 0x7FF, spot); }
constexpr field extended(const char* key, int at, uint32_t fallback, const char* label, field_spot spot) { return filter(key, at, fallback, label, 0x1FFFFFFF, spot); }

/// Channel 1 or 2: its mode register and its ten filter registers. The bounds of the two rates are one above their
/// choices: intended.
template <int N>
struct canfd {
    static constexpr int first = 10 * N - 3;
    static constexpr field nominal_rate {.key = vkt610b_named<"canfd#_speed_zc_vkt610b", N>,      .place = {4 + N,  0, 8}, .fallback = 10, .number = 10, .label = "仲裁段速率", .highest = 11, .choices = options::nominal_rates, .shown = {page::canfd + N - 1, 2}};
    static constexpr field data_rate    {.key = vkt610b_named<"canfd#_speed_data_vkt610b", N>,    .place = {4 + N,  8, 8}, .fallback = 6,  .number = 6,  .label = "数据段速率", .highest = 7, .choices = options::data_rates, .shown = {page::canfd + N - 1, 3}};
    static constexpr field bus_mode     {.key = vkt610b_named<"canfd#_mode_vkt610b", N>,          .place = {4 + N, 16, 2}, .fallback = 1,  .number = 2,  .label = "总线模式", .choices = options::bus_modes, .shown = {page::canfd + N - 1, 1}};
    static constexpr field filter_mode  {.key = vkt610b_named<"canfd#_leach_mode_vkt610b", N>,    .place = {4 + N, 18, 2}, .fallback = 2,  .number = 2,  .label = "滤波模式", .choices = options::filter_modes, .shown = {page::canfd + N - 1, 4}};
    static constexpr field rate_switch  {.key = vkt610b_named<"canfd#_brs_vkt610b", N>,           .place = {4 + N, 20, 1}, .fallback = 0,  .number = 1,  .label = "速率切换 BRS", .shown = {page::canfd + N - 1, 5}};
    static constexpr field user_timing  {.key = vkt610b_named<"canfd#_brs_do_button_vkt610b", N>, .place = {4 + N, 21, 1}, .fallback = 0,  .number = 0,  .label = "自定义位定时", .shown = {page::canfd + N - 1, 6}};
    static constexpr field standard_mask  = standard(vkt610b_named<"canfd#_scherm_vkt610b", N>,   first + 0, 0xFFFFFFFF, "屏蔽码", {page::canfd + N - 1, 7});
    static constexpr field standard_code0 = standard(vkt610b_named<"canfd#_check0_vkt610b", N>,   first + 1, 0,          "验收码 0", {page::canfd + N - 1, 8});
    static constexpr field standard_code1 = standard(vkt610b_named<"canfd#_check1_vkt610b", N>,   first + 2, 0,          "验收码 1", {page::canfd + N - 1, 9});
    static constexpr field standard_code2 = standard(vkt610b_named<"canfd#_check2_vkt610b", N>,   first + 3, 0,          "验收码 2", {page::canfd + N - 1, 10});
    static constexpr field standard_code3 = standard(vkt610b_named<"canfd#_check3_vkt610b", N>,   first + 4, 0,          "验收码 3", {page::canfd + N - 1, 11});
    static constexpr field extended_mask  = extended(vkt610b_named<"canfd#_scherm_e_vkt610b", N>, first + 5, 0xFFFFFFFF, "屏蔽码", {page::canfd + N - 1, 12});
    static constexpr field extended_code0 = extended(vkt610b_named<"canfd#_check0_e_vkt610b", N>, first + 6, 0,          "验收码 0", {page::canfd + N - 1, 13});
    static constexpr field extended_code1 = extended(vkt610b_named<"canfd#_check1_e_vkt610b", N>, first + 7, 0,          "验收码 1", {page::canfd + N - 1, 14});
    static constexpr field extended_code2 = extended(vkt610b_named<"canfd#_check2_e_vkt610b", N>, first + 8, 0,          "验收码 2", {page::canfd + N - 1, 15});
    static constexpr field extended_code3 = extended(vkt610b_named<"canfd#_check3_e_vkt610b", N>, first + 9, 0,          "验收码 3", {page::canfd + N - 1, 16});

    static constexpr std::array rows = {
        nominal_rate, data_rate, bus_mode, filter_mode, rate_switch, user_timing,
        standard_mask, standard_code0, standard_code1, standard_code2, standard_code3,
        extended_mask, extended_code0, extended_code1, extended_code2, extended_code3,
    };
};

// User bit timing: low half of each register for channel 1, high half for channel 2.
inline constexpr field timing_divider{.key = "canfd_bps_do_div_vkt610b",     .place = {27, 0, 32}, .form = word, .number = 0x40004,  .label = "时钟分频", .shown = {page::timing, 0}};
inline constexpr field nominal_brp   {.key = "canfd_bps_do_brp_z_vkt610b",   .place = {28, 0, 32}, .form = word, .number = 0x10001,  .label = "BRP", .shown = {page::timing, 0}};
inline constexpr field nominal_tseg1 {.key = "canfd_bps_do_tseg1_z_vkt610b", .place = {29, 0, 32}, .form = word, .number = 0x200020, .label = "TSEG1", .unit = "tq", .shown = {page::timing, 0}};
inline constexpr field nominal_tseg2 {.key = "canfd_bps_do_tseg2_z_vkt610b", .place = {30, 0, 32}, .form = word, .number = 0x80008,  .label = "TSEG2", .unit = "tq", .shown = {page::timing, 0}};
inline constexpr field data_brp      {.key = "canfd_bps_do_brp_c_vkt610b",   .place = {31, 0, 32}, .form = word, .number = 0x10001,  .label = "BRP", .shown = {page::timing, 0}};
inline constexpr field data_tseg1    {.key = "canfd_bps_do_tseg1_c_vkt610b", .place = {32, 0, 32}, .form = word, .number = 0x60006,  .label = "TSEG1", .unit = "tq", .shown = {page::timing, 0}};
inline constexpr field data_tseg2    {.key = "canfd_bps_do_tseg2_c_vkt610b", .place = {33, 0, 32}, .form = word, .number = 0x20002,  .label = "TSEG2", .unit = "tq", .shown = {page::timing, 0}};

inline constexpr auto rows = vkt610b_detail::join(
    std::array{change_mode, can_channel, protocol, uart<1>::rate, uart<2>::rate, spi_count, spi_time},
    canfd<1>::rows, canfd<2>::rows,
    std::array{timing_divider, nominal_brp, nominal_tseg1, nominal_tseg2, data_brp, data_tseg1, data_tseg2, version});
// clang-format on
static_assert(vkt610b_detail::fits(rows) && vkt610b_detail::words_shared_out(rows) && field_keys_unique(rows));

} // namespace vkt610b_field

/// Every property of the B family, in register order within each group.
inline constexpr field_rows vkt610b_fields = vkt610b_field::rows;
