// The defaults that each family's fields bring into a store.
#include "dev_a/fields.h"
#include "dev_b/fields.h"
#include "dev_generic/fields.h"

#include <gtest/gtest.h>

namespace {

std::string text_of(const tk_object* props, const char* key) { return tk_object_get_prop_str(props, key, "?"); }

TEST(defaults, generic_store_has_every_key_with_its_default) {
    const tk_object_ptr store(object_default_create());
    fields_set_defaults(generic_fields, store.get());
    const std::pair<const char*, int> numbers[] = {
        {"change_mode", 2},  {"change_dir", 0},      {"change_can_serial", 0}, {"change_id_serial", 0},
        {"change_star", 0},  {"change_len", 4},      {"spi_ff_fnum", 15},      {"spi_ff_time", 5},
        {"spi_data_len", 8}, {"spi_cpol", 1},        {"spi_cpha", 1},          {"uart_baud_rate", 1},
        {"uart_bit_num", 8}, {"uart_f_distance", 2}, {"uart_stop", 1},         {"can_baud_rate", 8},
        {"can_check", 0},    {"can_filtration", 8},  {"can_sendf_kind", 8},
    };
    const std::pair<const char*, const char*> texts[] = {
        {"change_err_check", "否"},
        {"change_fh", "40"},
        {"change_fe", "1A"},
        {"spi_bit_tran", "MSB"},
        {"uart_check", "无校验"},
        {"uart_control", "无"},
        {"can_sendf_flage", "00 00 00 00"},
        {"can_scherm", "FF FF FF FF"},
        {"can_check0", "00 00 00 00"},
        {"can_check1", "00 00 00 00"},
        {"can_check2", "00 00 00 00"},
        {"can_check3", "00 00 00 00"},
        {"can_check4", "00 00 00 00"},
        {"can_check5", "00 00 00 00"},
    };
    for (const auto& [key, value] : numbers) EXPECT_EQ(tk_object_get_prop_int(store.get(), key, -1), value) << key;
    for (const auto& [key, value] : texts) EXPECT_EQ(text_of(store.get(), key), value) << key;
    EXPECT_EQ(tk_object_keys(store.get()).size(), std::size(numbers) + std::size(texts));
}

TEST(defaults, a_family_has_every_key_with_its_default) {
    const tk_object_ptr props(object_default_create());
    fields_set_defaults(vkt510a_fields, props.get());
    const std::pair<const char*, uint32_t> numbers[] = {
        {"change_mode_vkt510a", 2},       {"change_dir_vkt510a", 0},
        {"change_can_c_vkt510a", 0},      {"change_can_id_vkt510a", 0},
        {"change_can_star_vkt510a", 0},   {"change_can_len_vkt510a", 4},
        {"change_f_h_vkt510a", 64},       {"change_f_e_vkt510a", 26},
        {"spi_number_vkt510a", 15},       {"spi_time_vkt510a", 5},
        {"uart_bps_vkt510a", 1},          {"uart_distance_vkt510a", 2},
        {"can_bps_vkt510a", 8},           {"can_filtration_mode_vkt510a", 8},
        {"can_filtration_en_vkt510a", 0}, {"can_send_kind_vkt510a", 8},
        {"can_send_data_vkt510a", 0},     {"can_send_shield_vkt510a", 0xFFFFFFFF},
        {"can_send_check0_vkt510a", 0},   {"can_send_check1_vkt510a", 0},
        {"can_send_check2_vkt510a", 0},   {"can_send_check3_vkt510a", 0},
        {"can_send_check4_vkt510a", 0},   {"can_send_check5_vkt510a", 0},
    };
    for (const auto& [key, value] : numbers)
        EXPECT_EQ(tk_object_get_prop_uint32(props.get(), key, 0xDEAD), value) << key;
    EXPECT_EQ(tk_object_keys(props.get()).size(), std::size(numbers));
}

TEST(defaults, b_family_has_every_key_of_both_channels) {
    const tk_object_ptr props(object_default_create());
    fields_set_defaults(vkt610b_fields, props.get());
    const std::pair<const char*, uint32_t> common[] = {
        {"change_mode_vkt610b", 1},
        {"change_can_channel_vkt610b", 1},
        {"change_protcol_vkt610b", 1},
        {"uart1_bps_vkt610b", 10},
        {"uart2_bps_vkt610b", 10},
        {"spi_picture_vkt610b", 9},
        {"spi_time_vkt610b", 9},
        {"canfd_bps_do_div_vkt610b", 0x40004},
        {"canfd_bps_do_brp_z_vkt610b", 0x10001},
        {"canfd_bps_do_tseg1_z_vkt610b", 0x200020},
        {"canfd_bps_do_tseg2_z_vkt610b", 0x80008},
        {"canfd_bps_do_brp_c_vkt610b", 0x10001},
        {"canfd_bps_do_tseg1_c_vkt610b", 0x60006},
        {"canfd_bps_do_tseg2_c_vkt610b", 0x20002},
        {"version", 0},
    };
    const std::pair<const char*, uint32_t> channel[] = {
        {"speed_zc", 10}, {"speed_data", 6},    {"mode", 2},     {"leach_mode", 2},
        {"brs", 1},       {"brs_do_button", 0}, {"scherm", 0},   {"check0", 0},
        {"check1", 0},    {"check2", 0},        {"check3", 0},   {"scherm_e", 0},
        {"check0_e", 0},  {"check1_e", 0},      {"check2_e", 0}, {"check3_e", 0},
    };
    for (const auto& [key, value] : common)
        EXPECT_EQ(tk_object_get_prop_uint32(props.get(), key, 0xDEAD), value) << key;
    for (const char* prefix : {"canfd1_", "canfd2_"})
        for (const auto& [key, value] : channel) {
            const std::string name = std::string(prefix) + key + "_vkt610b";
            EXPECT_EQ(tk_object_get_prop_uint32(props.get(), name.c_str(), 0xDEAD), value) << name;
        }
    EXPECT_EQ(tk_object_keys(props.get()).size(), std::size(common) + 2 * std::size(channel));
}

TEST(defaults, one_key_can_be_left_alone) {
    const tk_object_ptr props(object_default_create());
    tk_object_set_prop_uint32(props.get(), "version", 7);
    fields_set_defaults(vkt610b_fields, props.get(), "version");
    EXPECT_EQ(tk_object_get_prop_uint32(props.get(), "version", 0), 7U);
    EXPECT_TRUE(tk_object_has_prop(props.get(), "canfd2_check3_e_vkt610b"));
}

TEST(defaults, are_found_by_key_of_either_channel) {
    for (const char* key : {"canfd1_mode_vkt610b", "canfd2_mode_vkt610b"}) {
        const field* row = field_find(vkt610b_fields, key);
        ASSERT_NE(row, nullptr) << key;
        EXPECT_EQ(row->number, 2U) << key;
    }
    EXPECT_EQ(field_find(vkt610b_fields, "canfd3_mode_vkt610b"), nullptr);
    const field* end = field_find(generic_fields, "change_fe");
    ASSERT_NE(end, nullptr);
    EXPECT_STREQ(end->text, "1A");
    EXPECT_EQ(field_find(generic_fields, "nothing"), nullptr);
}

} // namespace
