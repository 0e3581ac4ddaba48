// What each key of VKT530A and VKT531A feeds in the image, and what comes back.
#include "dev_generic/family.h"
#include "dev_generic/fields.h"

#include <gmock/gmock.h>
#include <random>

using testing::ElementsAreArray;

namespace {

using image_bytes = std::array<uint8_t, 60>;

// What the module's documentation gives for the defaults.
constexpr image_bytes default_image = {
    0x01, 0x08, 0x01, 0x00, 0x08, 0x00, 0x00, 0x00, 0x00, 0x08, // 0
    0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 10
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 20
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 30
    0x00, 0x00, 0x02, 0x00, 0x02, 0x00, 0x00, 0x08, 0x00, 0x00, // 40
    0x00, 0x00, 0x04, 0x00, 0x40, 0x1A, 0x0F, 0x05, 0x01, 0x01, // 50
};

class cfg_image : public testing::Test {
  protected:
    tk_object* store() { return dev.props.get(); }
    image_bytes image() const {
        image_bytes out{};
        std::ranges::copy(dev.image, out.begin());
        return out;
    }
    void hold(const image_bytes& bytes) { std::ranges::copy(bytes, dev.image.begin()); }
    std::string text(const char* key) { return tk_object_get_prop_str(store(), key, "?"); }
    int number(const char* key) { return tk_object_get_prop_int(store(), key, -1); }

    static constexpr const family_descriptor* families[] = {&generic_family};
    const std::unique_ptr<dev_obj> made = dev_open(families, "VKT531A");
    dev_obj& dev = *made;
};

TEST_F(cfg_image, store_defaults_encode_to_the_default_image) {
    EXPECT_THAT(image(), ElementsAreArray(default_image));
}

TEST_F(cfg_image, an_empty_store_encodes_the_fallbacks) {
    for (const std::string& key : tk_object_keys(store())) tk_object_remove_prop(store(), key.c_str());
    cfg_image_from_props(dev);
    image_bytes expected{};
    expected[0] = 0;
    expected[1] = 8;
    expected[2] = 1;
    expected[4] = 8;
    expected[9] = 8;
    expected[42] = 4;
    expected[44] = 2;
    expected[47] = 0;
    expected[52] = 1;
    expected[53] = 0;
    expected[56] = 8;
    expected[57] = 1;
    expected[58] = 1;
    expected[59] = 1;
    EXPECT_THAT(image(), ElementsAreArray(expected));
}

TEST_F(cfg_image, a_store_without_change_mode_encodes_mode_4) {
    tk_object_remove_prop(store(), "change_mode");
    cfg_image_from_props(dev);
    EXPECT_EQ(image()[42], 4);
}

struct edit_case {
    const char* key;
    value_form form;
    uint32_t number;
    const char* text;
    std::size_t at;
    std::vector<uint8_t> bytes;
};
const edit_case edits[] = {
    {"uart_baud_rate", value_form::number, 19, nullptr, 0, {19}},
    {"can_baud_rate", value_form::number, 16, nullptr, 4, {16}},
    {"change_err_check", value_form::text, 0, "是", 5, {1}},
    {"can_check", value_form::flag, 1, nullptr, 8, {1}},
    {"can_filtration", value_form::number, 0, nullptr, 9, {0}},
    {"can_scherm", value_form::text, 0, "12 34 56 78", 10, {0x12, 0x34, 0x56, 0x78}},
    {"can_check0", value_form::text, 0, "ab CD 0e 0F", 14, {0xAB, 0xCD, 0x0E, 0x0F}},
    {"can_check1", value_form::text, 0, "01 02 03 04", 18, {1, 2, 3, 4}},
    {"can_check2", value_form::text, 0, "11 12 13 14", 26, {0x11, 0x12, 0x13, 0x14}},
    {"can_check3", value_form::text, 0, "21 22 23 24", 30, {0x21, 0x22, 0x23, 0x24}},
    {"can_check4", value_form::text, 0, "31 32 33 34", 34, {0x31, 0x32, 0x33, 0x34}},
    {"can_check5", value_form::text, 0, "41 42 43 44", 38, {0x41, 0x42, 0x43, 0x44}},
    {"change_mode", value_form::number, 3, nullptr, 42, {3}},
    {"change_dir", value_form::number, 2, nullptr, 43, {2}},
    {"uart_f_distance", value_form::number, 255, nullptr, 44, {255}},
    {"change_can_serial", value_form::flag, 1, nullptr, 45, {1}},
    {"change_id_serial", value_form::flag, 1, nullptr, 46, {1}},
    {"can_sendf_kind", value_form::number, 0, nullptr, 47, {0}},
    {"can_sendf_flage", value_form::text, 0, "18 FF 50 E5", 48, {0x18, 0xFF, 0x50, 0xE5}},
    {"change_len", value_form::number, 2, nullptr, 52, {2}},
    {"change_star", value_form::number, 7, nullptr, 53, {7}},
    {"change_fh", value_form::text, 0, "7e", 54, {0x7E}},
    {"change_fe", value_form::text, 0, "7F", 55, {0x7F}},
    {"spi_ff_fnum", value_form::number, 200, nullptr, 56, {200}},
    {"spi_ff_time", value_form::number, 100, nullptr, 57, {100}},
};

void set(tk_object* props, const edit_case& edit) {
    switch (edit.form) {
    case value_form::number:
        tk_object_set_prop_uint8(props, edit.key, static_cast<uint8_t>(edit.number));
        break;
    case value_form::word:
        tk_object_set_prop_uint32(props, edit.key, edit.number);
        break;
    case value_form::flag:
        tk_object_set_prop_bool(props, edit.key, edit.number != 0);
        break;
    default:
        tk_object_set_prop_str(props, edit.key, edit.text);
        break;
    }
}

TEST_F(cfg_image, every_key_feeds_its_own_bytes_and_no_others) {
    for (const edit_case& edit : edits) {
        fields_set_defaults(generic_fields, store());
        cfg_image_from_props(dev);
        set(store(), edit);
        image_bytes expected = default_image;
        std::copy(edit.bytes.begin(), edit.bytes.end(), expected.begin() + static_cast<long>(edit.at));
        cfg_image_from_props(dev);
        EXPECT_THAT(image(), ElementsAreArray(expected)) << edit.key;
    }
}

TEST_F(cfg_image, refresh_brings_one_key_up_to_date_and_leaves_the_rest) {
    for (const edit_case& edit : edits) {
        image_bytes expected;
        expected.fill(0x5A);
        hold(expected);
        set(store(), edit);
        ASSERT_EQ(cfg_image_refresh(dev, edit.key), RET_OK);
        std::copy(edit.bytes.begin(), edit.bytes.end(), expected.begin() + static_cast<long>(edit.at));
        EXPECT_THAT(image(), ElementsAreArray(expected)) << edit.key;
    }
    EXPECT_EQ(cfg_image_refresh(dev, "nothing"), RET_FAIL);
}

TEST_F(cfg_image, keys_that_the_encoder_does_not_consult_change_nothing) {
    for (const char* key : {"spi_data_len", "spi_cpol", "spi_cpha", "uart_bit_num", "uart_stop"})
        tk_object_set_prop_uint8(store(), key, 99);
    for (const char* key : {"spi_bit_tran", "uart_check", "uart_control"})
        tk_object_set_prop_str(store(), key, "99");
    cfg_image_from_props(dev);
    EXPECT_THAT(image(), ElementsAreArray(default_image));
}

TEST_F(cfg_image, err_check_is_1_for_exactly_the_yes_text) {
    for (const char* other : {"否", "是 ", " 是", "yes", "1", "", "是是"}) {
        tk_object_set_prop_str(store(), "change_err_check", "是");
        cfg_image_from_props(dev);
        ASSERT_EQ(image()[5], 1);
        tk_object_set_prop_str(store(), "change_err_check", other);
        cfg_image_from_props(dev);
        EXPECT_EQ(image()[5], 0) << other;
    }
}

TEST_F(cfg_image, encoding_writes_zeros_into_the_spare_bytes_and_the_gap) {
    image_bytes full;
    full.fill(0xAA);
    hold(full);
    cfg_image_from_props(dev);
    for (std::size_t at : {6U, 7U, 22U, 23U, 24U, 25U}) EXPECT_EQ(image()[at], 0) << at;
}

TEST_F(cfg_image, a_long_hex_text_is_cut_and_read_at_its_start) {
    tk_object_set_prop_str(store(), "can_scherm", ("12 34 56 78" + std::string(500, 'F')).c_str());
    cfg_image_from_props(dev);
    EXPECT_EQ(image()[13], 0x78);
    EXPECT_EQ(image()[14], 0);
}

TEST_F(cfg_image, decode_writes_every_key) {
    image_bytes reply{};
    for (std::size_t i = 0; i < reply.size(); i++) reply[i] = static_cast<uint8_t>(0xA0 + i); // 0xA0 .. 0xDB
    hold(reply);
    cfg_image_to_props(dev);
    const std::pair<const char*, int> numbers[] = {
        {"uart_baud_rate", 0xA0},  {"uart_bit_num", 0xA1},   {"uart_stop", 0xA2},     {"can_baud_rate", 0xA4},
        {"can_check", 1},          {"can_filtration", 0xA9}, {"change_mode", 0xCA},   {"change_dir", 0xCB},
        {"uart_f_distance", 0xCC}, {"change_can_serial", 1}, {"change_id_serial", 1}, {"can_sendf_kind", 0xCF},
        {"change_len", 0xD4},      {"change_star", 0xD5},    {"spi_ff_fnum", 0xD8},   {"spi_ff_time", 0xD9},
        {"spi_cpol", 0xDA},        {"spi_cpha", 0xDB},       {"spi_data_len", 8},
    };
    const std::pair<const char*, const char*> texts[] = {
        {"change_err_check", "是"},    {"can_scherm", "aa ab ac ad"}, {"can_check0", "ae af b0 b1"},
        {"can_check1", "00 00 00 00"}, {"can_check2", "00 00 00 00"}, {"can_check3", "00 00 00 00"},
        {"can_check4", "00 00 00 00"}, {"can_check5", "00 00 00 00"}, {"can_sendf_flage", "00 00 00 00"},
        {"change_fh", "d6"},           {"change_fe", "d7"},           {"spi_bit_tran", "MSB"},
        {"uart_check", "无校验"},      {"uart_control", "无"},
    };
    for (const auto& [key, value] : numbers) EXPECT_EQ(number(key), value) << key;
    for (const auto& [key, value] : texts) EXPECT_EQ(text(key), value) << key;
    EXPECT_EQ(std::size(numbers) + std::size(texts), tk_object_keys(store()).size());
    EXPECT_THAT(image(), ElementsAreArray(reply));
}

TEST_F(cfg_image, decoding_a_zero_image_clears_flags) {
    hold({});
    cfg_image_to_props(dev);
    EXPECT_EQ(text("change_err_check"), "否");
    EXPECT_FALSE(tk_object_get_prop_bool(store(), "can_check", true));
    EXPECT_FALSE(tk_object_get_prop_bool(store(), "change_can_serial", true));
    EXPECT_FALSE(tk_object_get_prop_bool(store(), "change_id_serial", true));
    EXPECT_EQ(number("uart_bit_num"), 0);
}

TEST_F(cfg_image, decoding_an_image_with_code_1_leaves_can_check1_at_zeros) {
    image_bytes reply = default_image;
    reply[18] = 0x12;
    reply[21] = 0x34;
    tk_object_set_prop_str(store(), "can_check1", "55 55 55 55");
    hold(reply);
    cfg_image_to_props(dev);
    EXPECT_EQ(text("can_check1"), "00 00 00 00");
    EXPECT_EQ(image()[18], 0x12); // the image keeps what the module sent
}

TEST_F(cfg_image, an_all_ones_mask_decodes_in_lower_case) {
    cfg_image_to_props(dev);
    EXPECT_EQ(text("can_scherm"), "ff ff ff ff");
}

TEST_F(cfg_image, encode_gives_back_what_decode_took_where_the_store_keeps_it) {
    std::mt19937 random(20250929);
    for (int round = 0; round < 200; round++) {
        image_bytes reply{};
        for (uint8_t& b : reply) b = static_cast<uint8_t>(random());
        hold(reply);
        cfg_image_to_props(dev);
        cfg_image_from_props(dev);
        image_bytes expected = reply;
        for (std::size_t at : {5U, 8U, 45U, 46U}) expected[at] = reply[at] != 0 ? 1 : 0;
        const auto fix = [&expected](std::size_t from, std::size_t to, uint8_t value) {
            for (std::size_t i = from; i <= to; i++) expected[i] = value;
        };
        fix(1, 1, 8);
        fix(2, 2, 1);
        fix(3, 3, 0);
        fix(6, 7, 0);
        fix(18, 41, 0);
        fix(48, 51, 0);
        fix(58, 59, 1);
        ASSERT_THAT(image(), ElementsAreArray(expected)) << "round " << round;
    }
}

} // namespace
