#include "config/defaults.h"

namespace {

using enum prop_type;

constexpr prop_default generic_rows[] = {
    {"change_mode", u8, 2},
    {"change_dir", u8, 0},
    {"change_err_check", text, 0, "否"},
    {"change_can_serial", flag, 0},
    {"change_id_serial", flag, 0},
    {"change_star", u8, 0},
    {"change_len", u8, 4},
    {"change_fh", text, 0, "40"},
    {"change_fe", text, 0, "1A"},
    {"spi_ff_fnum", u8, 15},
    {"spi_ff_time", u8, 5},
    {"spi_data_len", u8, 8},
    {"spi_bit_tran", text, 0, "MSB"},
    {"spi_cpol", u8, 1},
    {"spi_cpha", u8, 1},
    {"uart_baud_rate", u8, 1},
    {"uart_f_distance", u8, 2},
    {"uart_bit_num", u8, 8},
    {"uart_check", text, 0, "无校验"},
    {"uart_stop", u8, 1},
    {"uart_control", text, 0, "无"},
    {"can_baud_rate", u8, 8},
    {"can_check", flag, 0},
    {"can_filtration", u8, 8},
    {"can_sendf_kind", u8, 8},
    {"can_sendf_flage", text, 0, "00 00 00 00"},
    {"can_scherm", text, 0, "FF FF FF FF"},
    {"can_check0", text, 0, "00 00 00 00"},
    {"can_check1", text, 0, "00 00 00 00"},
    {"can_check2", text, 0, "00 00 00 00"},
    {"can_check3", text, 0, "00 00 00 00"},
    {"can_check4", text, 0, "00 00 00 00"},
    {"can_check5", text, 0, "00 00 00 00"},
};

constexpr prop_default a_rows[] = {
    {"change_mode_vkt510a", u8, 2},       {"change_dir_vkt510a", u8, 0},
    {"change_can_c_vkt510a", u8, 0},      {"change_can_id_vkt510a", u8, 0},
    {"change_can_star_vkt510a", u8, 0},   {"change_can_len_vkt510a", u8, 4},
    {"change_f_h_vkt510a", u8, 64},       {"change_f_e_vkt510a", u8, 26},
    {"spi_number_vkt510a", u8, 15},       {"spi_time_vkt510a", u8, 5},
    {"uart_bps_vkt510a", u8, 1},          {"uart_distance_vkt510a", u8, 2},
    {"can_bps_vkt510a", u8, 8},           {"can_filtration_mode_vkt510a", u8, 8},
    {"can_filtration_en_vkt510a", u8, 0}, {"can_send_kind_vkt510a", u8, 8},
    {"can_send_data_vkt510a", u32, 0},    {"can_send_shield_vkt510a", u32, 0xFFFFFFFF},
    {"can_send_check0_vkt510a", u32, 0},  {"can_send_check1_vkt510a", u32, 0},
    {"can_send_check2_vkt510a", u32, 0},  {"can_send_check3_vkt510a", u32, 0},
    {"can_send_check4_vkt510a", u32, 0},  {"can_send_check5_vkt510a", u32, 0},
};

constexpr prop_default b_rows[] = {
    {"change_mode_vkt610b", u8, 1},
    {"change_can_channel_vkt610b", u8, 1},
    {"change_protcol_vkt610b", u8, 1},
    {"uart1_bps_vkt610b", u8, 10},
    {"uart2_bps_vkt610b", u8, 10},
    {"spi_picture_vkt610b", u8, 9},
    {"spi_time_vkt610b", u8, 9},
    {"canfd#_speed_zc_vkt610b", u8, 10},
    {"canfd#_speed_data_vkt610b", u8, 6},
    {"canfd#_mode_vkt610b", u8, 2},
    {"canfd#_leach_mode_vkt610b", u8, 2},
    {"canfd#_brs_vkt610b", u8, 1},
    {"canfd#_brs_do_button_vkt610b", u8, 0},
    {"canfd#_scherm_vkt610b", u32, 0},
    {"canfd#_check0_vkt610b", u32, 0},
    {"canfd#_check1_vkt610b", u32, 0},
    {"canfd#_check2_vkt610b", u32, 0},
    {"canfd#_check3_vkt610b", u32, 0},
    {"canfd#_scherm_e_vkt610b", u32, 0},
    {"canfd#_check0_e_vkt610b", u32, 0},
    {"canfd#_check1_e_vkt610b", u32, 0},
    {"canfd#_check2_e_vkt610b", u32, 0},
    {"canfd#_check3_e_vkt610b", u32, 0},
    // One half of the word for each channel.
    {"canfd_bps_do_div_vkt610b", u32, 0x40004},
    {"canfd_bps_do_brp_z_vkt610b", u32, 0x10001},
    {"canfd_bps_do_tseg1_z_vkt610b", u32, 0x200020},
    {"canfd_bps_do_tseg2_z_vkt610b", u32, 0x80008},
    {"canfd_bps_do_brp_c_vkt610b", u32, 0x10001},
    {"canfd_bps_do_tseg1_c_vkt610b", u32, 0x60006},
    {"canfd_bps_do_tseg2_c_vkt610b", u32, 0x20002},
    {"version", u32, 0},
};

ret_t write_one(tk_object* props, const char* key, const prop_default& row) {
    switch (row.type) {
    case u8:
        return tk_object_set_prop_uint8(props, key, static_cast<uint8_t>(row.number));
    case u32:
        return tk_object_set_prop_uint32(props, key, row.number);
    case flag:
        return tk_object_set_prop_bool(props, key, row.number != 0);
    case text:
        return tk_object_set_prop_str(props, key, row.text);
    }
    return RET_FAIL;
}

/// Whether `key` is what `pattern` stands for.
bool key_matches(std::string_view pattern, std::string_view key) {
    if (pattern.size() != key.size()) return false;
    for (std::size_t i = 0; i < key.size(); i++)
        if (pattern[i] == '#' ? key[i] != '1' && key[i] != '2' : pattern[i] != key[i]) return false;
    return true;
}

} // namespace

std::span<const prop_default> defaults_of(family of) {
    switch (of) {
    case family::generic:
        return generic_rows;
    case family::a:
        return a_rows;
    case family::b:
        return b_rows;
    }
    return {};
}

const prop_default* default_find(family of, std::string_view key) {
    for (const auto& row : defaults_of(of))
        if (key_matches(row.key, key)) return &row;
    return nullptr;
}

uint32_t default_number(family of, std::string_view key) {
    const prop_default* row = default_find(of, key);
    return row == nullptr ? 0 : row->number;
}

const char* default_text(family of, std::string_view key) {
    const prop_default* row = default_find(of, key);
    return row == nullptr || row->text == nullptr ? "" : row->text;
}

void defaults_write(family of, tk_object* props, const char* except) {
    for (const auto& row : defaults_of(of)) {
        std::string key = row.key;
        const std::size_t channel = key.find('#');
        for (char digit : {'1', '2'}) {
            if (channel != std::string::npos) key[channel] = digit;
            if (except == nullptr || key != except) write_one(props, key.c_str(), row);
            if (channel == std::string::npos) break;
        }
    }
}
