#include "config/cfg_image.h"

#include "config/defaults.h"
#include "config/dev_obj.h"
#include "toolkit/core/text.h"

#include <atomic>
#include <gmock/gmock.h>
#include <random>
#include <thread>

using testing::ElementsAreArray;

namespace {

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
    void SetUp() override {
        ASSERT_EQ(config_objects_create(), RET_OK);
        cfg_image_set(family::generic, {});
        cfg_image_set(family::a, {});
        cfg_image_from_props();
    }
    void TearDown() override { config_objects_destroy(); }

    static tk_object* store() { return config_store(); }
    static image_bytes image() { return cfg_image_get(family::generic); }
    static std::string text(const char* key) { return tk_object_get_prop_str(store(), key, "?"); }
    static int number(const char* key) { return tk_object_get_prop_int(store(), key, -1); }
};

TEST_F(cfg_image, store_defaults_encode_to_the_default_image) {
    EXPECT_THAT(image(), ElementsAreArray(default_image));
}

TEST_F(cfg_image, an_empty_store_encodes_the_fallbacks) {
    for (const std::string& key : tk_object_keys(store())) tk_object_remove_prop(store(), key.c_str());
    cfg_image_from_props();
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
    cfg_image_from_props();
    EXPECT_EQ(image()[42], 4);
}

struct edit_case {
    const char* key;
    prop_type type;
    uint32_t number;
    const char* text;
    std::size_t at;
    std::vector<uint8_t> bytes;
};
const edit_case edits[] = {
    {"uart_baud_rate", prop_type::u8, 19, nullptr, 0, {19}},
    {"can_baud_rate", prop_type::u8, 16, nullptr, 4, {16}},
    {"change_err_check", prop_type::text, 0, "是", 5, {1}},
    {"can_check", prop_type::flag, 1, nullptr, 8, {1}},
    {"can_filtration", prop_type::u8, 0, nullptr, 9, {0}},
    {"can_scherm", prop_type::text, 0, "12 34 56 78", 10, {0x12, 0x34, 0x56, 0x78}},
    {"can_check0", prop_type::text, 0, "ab CD 0e 0F", 14, {0xAB, 0xCD, 0x0E, 0x0F}},
    {"can_check1", prop_type::text, 0, "01 02 03 04", 18, {1, 2, 3, 4}},
    {"can_check2", prop_type::text, 0, "11 12 13 14", 26, {0x11, 0x12, 0x13, 0x14}},
    {"can_check3", prop_type::text, 0, "21 22 23 24", 30, {0x21, 0x22, 0x23, 0x24}},
    {"can_check4", prop_type::text, 0, "31 32 33 34", 34, {0x31, 0x32, 0x33, 0x34}},
    {"can_check5", prop_type::text, 0, "41 42 43 44", 38, {0x41, 0x42, 0x43, 0x44}},
    {"change_mode", prop_type::u8, 3, nullptr, 42, {3}},
    {"change_dir", prop_type::u8, 2, nullptr, 43, {2}},
    {"uart_f_distance", prop_type::u8, 255, nullptr, 44, {255}},
    {"change_can_serial", prop_type::flag, 1, nullptr, 45, {1}},
    {"change_id_serial", prop_type::flag, 1, nullptr, 46, {1}},
    {"can_sendf_kind", prop_type::u8, 0, nullptr, 47, {0}},
    {"can_sendf_flage", prop_type::text, 0, "18 FF 50 E5", 48, {0x18, 0xFF, 0x50, 0xE5}},
    {"change_len", prop_type::u8, 2, nullptr, 52, {2}},
    {"change_star", prop_type::u8, 7, nullptr, 53, {7}},
    {"change_fh", prop_type::text, 0, "7e", 54, {0x7E}},
    {"change_fe", prop_type::text, 0, "7F", 55, {0x7F}},
    {"spi_ff_fnum", prop_type::u8, 200, nullptr, 56, {200}},
    {"spi_ff_time", prop_type::u8, 100, nullptr, 57, {100}},
};

void set(tk_object* props, const edit_case& edit) {
    switch (edit.type) {
    case prop_type::u8:
        tk_object_set_prop_uint8(props, edit.key, static_cast<uint8_t>(edit.number));
        break;
    case prop_type::u32:
        tk_object_set_prop_uint32(props, edit.key, edit.number);
        break;
    case prop_type::flag:
        tk_object_set_prop_bool(props, edit.key, edit.number != 0);
        break;
    case prop_type::text:
        tk_object_set_prop_str(props, edit.key, edit.text);
        break;
    }
}

TEST_F(cfg_image, every_key_feeds_its_own_bytes_and_no_others) {
    for (const edit_case& edit : edits) {
        defaults_write(family::generic, store());
        cfg_image_from_props();
        set(store(), edit);
        image_bytes expected = default_image;
        std::copy(edit.bytes.begin(), edit.bytes.end(), expected.begin() + static_cast<long>(edit.at));
        cfg_image_from_props();
        EXPECT_THAT(image(), ElementsAreArray(expected)) << edit.key;
    }
}

TEST_F(cfg_image, refresh_brings_one_key_up_to_date_and_leaves_the_rest) {
    for (const edit_case& edit : edits) {
        image_bytes expected;
        expected.fill(0x5A);
        cfg_image_set(family::generic, expected);
        set(store(), edit);
        ASSERT_EQ(cfg_image_refresh(edit.key), RET_OK);
        std::copy(edit.bytes.begin(), edit.bytes.end(), expected.begin() + static_cast<long>(edit.at));
        EXPECT_THAT(image(), ElementsAreArray(expected)) << edit.key;
    }
    EXPECT_EQ(cfg_image_refresh("nothing"), RET_FAIL);
}

TEST_F(cfg_image, keys_that_the_encoder_does_not_consult_change_nothing) {
    for (const char* key : {"spi_data_len", "spi_cpol", "spi_cpha", "uart_bit_num", "uart_stop"})
        tk_object_set_prop_uint8(store(), key, 99);
    for (const char* key : {"spi_bit_tran", "uart_check", "uart_control"})
        tk_object_set_prop_str(store(), key, "99");
    cfg_image_from_props();
    EXPECT_THAT(image(), ElementsAreArray(default_image));
}

TEST_F(cfg_image, err_check_is_1_for_exactly_the_yes_text) {
    for (const char* other : {"否", "是 ", " 是", "yes", "1", "", "是是"}) {
        tk_object_set_prop_str(store(), "change_err_check", "是");
        cfg_image_from_props();
        ASSERT_EQ(image()[5], 1);
        tk_object_set_prop_str(store(), "change_err_check", other);
        cfg_image_from_props();
        EXPECT_EQ(image()[5], 0) << other;
    }
}

TEST_F(cfg_image, encoding_writes_zeros_into_the_spare_bytes_and_the_gap) {
    image_bytes full;
    full.fill(0xAA);
    cfg_image_set(family::generic, full);
    cfg_image_from_props();
    for (std::size_t at : {6U, 7U, 22U, 23U, 24U, 25U}) EXPECT_EQ(image()[at], 0) << at;
}

TEST_F(cfg_image, a_long_hex_text_is_cut_and_read_at_its_start) {
    tk_object_set_prop_str(store(), "can_scherm", ("12 34 56 78" + std::string(500, 'F')).c_str());
    cfg_image_from_props();
    EXPECT_EQ(image()[13], 0x78);
    EXPECT_EQ(image()[14], 0);
}

TEST_F(cfg_image, decode_writes_every_key) {
    image_bytes reply{};
    for (std::size_t i = 0; i < reply.size(); i++) reply[i] = static_cast<uint8_t>(0xA0 + i); // 0xA0 .. 0xDB
    cfg_image_set(family::generic, reply);
    cfg_image_to_props();
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
    cfg_image_set(family::generic, {});
    cfg_image_to_props();
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
    cfg_image_set(family::generic, reply);
    cfg_image_to_props();
    EXPECT_EQ(text("can_check1"), "00 00 00 00");
    EXPECT_EQ(image()[18], 0x12); // the image keeps what the module sent
}

TEST_F(cfg_image, an_all_ones_mask_decodes_in_lower_case) {
    cfg_image_to_props();
    EXPECT_EQ(text("can_scherm"), "ff ff ff ff");
}

TEST_F(cfg_image, encode_gives_back_what_decode_took_where_the_store_keeps_it) {
    std::mt19937 random(20250929);
    for (int round = 0; round < 200; round++) {
        image_bytes reply{};
        for (uint8_t& b : reply) b = static_cast<uint8_t>(random());
        cfg_image_set(family::generic, reply);
        cfg_image_to_props();
        cfg_image_from_props();
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

TEST_F(cfg_image, the_families_have_images_of_their_own) {
    image_bytes other;
    other.fill(7);
    cfg_image_set(family::a, other);
    EXPECT_THAT(image(), ElementsAreArray(default_image));
    EXPECT_THAT(cfg_image_get(family::a), ElementsAreArray(other));
}

TEST_F(cfg_image, frame_is_head_image_and_check_byte) {
    const image_frame_bytes frame = image_frame(default_image);
    EXPECT_EQ(frame[0], 0xF7);
    EXPECT_EQ(frame[1], 0xF8);
    EXPECT_EQ(frame[2], 0x01);
    EXPECT_EQ(frame[3], 0x3C);
    EXPECT_EQ(frame[4], 0x01);
    EXPECT_EQ(frame[63], 0x01);
    EXPECT_EQ(frame[64], 0x66);
    EXPECT_EQ(image_check(default_image), 0x66);
    EXPECT_EQ(image_check({}), 0x32);
}

constexpr const char* plain_show =
    "F7 F8 01 3C 01 08 01 00 08 00 00 00 00 08 FF FF FF FF 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 00 "
    "00 "
    "00 00 00 00 00 00 00 00 00 02 00 02 00 00 08 00 00 00 00 04 00 40 1A 0F 05 01 01 66";
constexpr const char* list_show =
    "{0xF7, 0xF8, 0x01, 0x3C, 0x01, 0x08, 0x01, 0x00, 0x08, 0x00, 0x00, 0x00, 0x00, 0x08 "
    "0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00 "
    "0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00 "
    "0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00 "
    "0x00, 0x00, 0x02, 0x00, 0x02, 0x00, 0x00, 0x08, 0x00, 0x00 "
    "0x00, 0x00, 0x04, 0x00, 0x40, 0x1A, 0x0F, 0x05, 0x01, 0x01 "
    "0x66}";
constexpr const char* plain_restore =
    "  F7 F8 01 3C   01 08 01 00 08 00 00 00 00 08   FF FF FF FF 00 00 00 00 00 00   "
    "00 00 00 00 00 00 00 00 00 00   00 00 00 00 00 00 00 00 00 00   00 00 02 00 02 00 00 08 00 00   "
    "00 00 04 00 40 1A 0F 05 01 01   66";
constexpr const char* list_restore =
    "{  0xF7, 0xF8, 0x01, 0x3C,   0x01, 0x08, 0x01, 0x00, 0x08, 0x00, 0x00, 0x00, 0x00, 0x08   "
    "0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00   "
    "0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00   "
    "0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00   "
    "0x00, 0x00, 0x02, 0x00, 0x02, 0x00, 0x00, 0x08, 0x00, 0x00   "
    "0x00, 0x00, 0x04, 0x00, 0x40, 0x1A, 0x0F, 0x05, 0x01, 0x01   "
    "0x66}";

TEST_F(cfg_image, listings_have_their_forms_and_blanks) {
    EXPECT_EQ(image_listing(default_image, false), plain_show);
    EXPECT_EQ(image_listing(default_image, true), list_show);
    EXPECT_EQ(image_listing(default_image, false, listing_blanks::restore), plain_restore);
    EXPECT_EQ(image_listing(default_image, true, listing_blanks::restore), list_restore);
}

TEST_F(cfg_image, map_checks_find_what_is_wrong) {
    static constexpr reg_field beyond[] = {{.place = {59, 4}, .key = "x"}};
    static constexpr reg_field twice[] = {{.place = {0, 2}, .key = "x"}, {.place = {1, 1}, .key = "x"}};
    static constexpr reg_field narrow[] = {{.place = {0, 2}, .key = "x", .form = value_form::word}};
    static constexpr reg_field whole[] = {kept_bytes({0, 59}), {.place = {59, 1}, .key = "x"}};
    static_assert(!map_covers_image(beyond) && !map_covers_image(twice) && map_covers_image(whole));
    static_assert(!map_keys_unique(twice) && map_keys_unique(whole));
    static_assert(!map_widths_fit(narrow) && map_widths_fit(whole));
    static_assert(map_find(whole, "x") == &whole[1] && map_find(whole, "y") == nullptr);
    EXPECT_EQ(map_find(generic_map(), "can_check2")->place.at, 26);
}

TEST_F(cfg_image, reader_and_writers_on_two_threads_see_whole_images) {
    cfg_image_set(family::generic, {}); // all bytes alike, as every later image
    std::atomic<bool> stop{false};
    std::thread reader([&stop] {
        while (!stop) {
            const image_bytes seen = cfg_image_get(family::generic);
            for (uint8_t b : seen) ASSERT_EQ(b, seen[0]);
        }
    });
    for (int i = 0; i < 2000; i++) {
        image_bytes next;
        next.fill(static_cast<uint8_t>(i));
        cfg_image_set(family::generic, next);
        cfg_code_mode_set(i % 2 == 0);
    }
    stop = true;
    reader.join();
    EXPECT_FALSE(cfg_code_mode());
}

} // namespace
