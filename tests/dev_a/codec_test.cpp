// What each key of VKT510A feeds in the image, and what comes back.
#include "dev_a/family.h"
#include "dev_a/fields.h"

#include <gmock/gmock.h>
#include <random>

using testing::ElementsAreArray;

namespace {

using image_bytes = std::array<uint8_t, 60>;

// The same bytes as the generic family's defaults give.
constexpr image_bytes default_image = {
    0x01, 0x08, 0x01, 0x00, 0x08, 0x00, 0x00, 0x00, 0x00, 0x08, // 0
    0xFF, 0xFF, 0xFF, 0xFF, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 10
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 20
    0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00, // 30
    0x00, 0x00, 0x02, 0x00, 0x02, 0x00, 0x00, 0x08, 0x00, 0x00, // 40
    0x00, 0x00, 0x04, 0x00, 0x40, 0x1A, 0x0F, 0x05, 0x01, 0x01, // 50
};

class vkt510a : public testing::Test {
  protected:
    image_bytes image() const {
        image_bytes out{};
        std::ranges::copy(dev.image, out.begin());
        return out;
    }
    void hold(const image_bytes& bytes) { std::ranges::copy(bytes, dev.image.begin()); }
    uint32_t value(const char* key) const { return tk_object_get_prop_uint32(props(), key, 0xDEAD); }
    tk_object* props() const { return dev.props.get(); }
    void encode() { ASSERT_EQ(dev_encode(dev), RET_OK); }
    void decode() { dev.of.decode(dev); }

    static constexpr const family_descriptor* families[] = {&vkt510a_family};
    const std::unique_ptr<dev_obj> made = dev_open(families, "VKT510A");
    dev_obj& dev = *made;
};

TEST_F(vkt510a, defaults_encode_to_the_generic_default_image) {
    hold({});
    encode();
    EXPECT_THAT(image(), ElementsAreArray(default_image));
}

TEST_F(vkt510a, missing_keys_encode_as_the_defaults) {
    for (const std::string& key : tk_object_keys(props())) tk_object_remove_prop(props(), key.c_str());
    encode();
    EXPECT_THAT(image(), ElementsAreArray(default_image));
}

struct field_case {
    const char* key;
    uint32_t value;
    std::size_t at;
    std::vector<uint8_t> bytes;
};
const field_case fields[] = {
    {"uart_bps_vkt510a", 16, 0, {16}},
    {"can_bps_vkt510a", 15, 4, {15}},
    {"can_filtration_en_vkt510a", 1, 8, {1}},
    {"can_filtration_mode_vkt510a", 0, 9, {0}},
    {"can_send_shield_vkt510a", 0x12345678, 10, {0x12, 0x34, 0x56, 0x78}},
    {"can_send_check0_vkt510a", 0xA1A2A3A4, 14, {0xA1, 0xA2, 0xA3, 0xA4}},
    {"can_send_check1_vkt510a", 0xB1B2B3B4, 18, {0xB1, 0xB2, 0xB3, 0xB4}},
    {"can_send_check2_vkt510a", 0xC1C2C3C4, 26, {0xC1, 0xC2, 0xC3, 0xC4}},
    {"can_send_check3_vkt510a", 0xD1D2D3D4, 30, {0xD1, 0xD2, 0xD3, 0xD4}},
    {"can_send_check4_vkt510a", 0xE1E2E3E4, 34, {0xE1, 0xE2, 0xE3, 0xE4}},
    {"can_send_check5_vkt510a", 0xF1F2F3F4, 38, {0xF1, 0xF2, 0xF3, 0xF4}},
    {"change_mode_vkt510a", 3, 42, {3}},
    {"change_dir_vkt510a", 2, 43, {2}},
    {"uart_distance_vkt510a", 16, 44, {16}},
    {"change_can_c_vkt510a", 1, 45, {1}},
    {"change_can_id_vkt510a", 1, 46, {1}},
    {"can_send_kind_vkt510a", 0, 47, {0}},
    {"can_send_data_vkt510a", 0x12345678, 48, {0x12, 0x34, 0x56, 0x78}},
    {"change_can_len_vkt510a", 2, 52, {2}},
    {"change_can_star_vkt510a", 7, 53, {7}},
    {"change_f_h_vkt510a", 0x7E, 54, {0x7E}},
    {"change_f_e_vkt510a", 0xFF, 55, {0xFF}},
    {"spi_number_vkt510a", 254, 56, {254}},
    {"spi_time_vkt510a", 100, 57, {100}},
};

TEST_F(vkt510a, every_key_feeds_its_own_bytes_and_comes_back) {
    for (const field_case& one : fields) {
        fields_set_defaults(vkt510a_fields, props());
        tk_object_set_prop_uint32(props(), one.key, one.value);
        image_bytes expected = default_image;
        std::copy(one.bytes.begin(), one.bytes.end(), expected.begin() + static_cast<long>(one.at));
        encode();
        EXPECT_THAT(image(), ElementsAreArray(expected)) << one.key;
        fields_set_defaults(vkt510a_fields, props());
        decode();
        EXPECT_EQ(value(one.key), one.value) << one.key;
    }
    EXPECT_EQ(std::size(fields), tk_object_keys(props()).size());
}

TEST_F(vkt510a, send_identifier_0x12345678_goes_out_and_comes_back) {
    tk_object_set_prop_uint32(props(), "can_send_data_vkt510a", 0x12345678);
    encode();
    const image_bytes encoded = image();
    EXPECT_EQ(encoded[48], 0x12);
    EXPECT_EQ(encoded[49], 0x34);
    EXPECT_EQ(encoded[50], 0x56);
    EXPECT_EQ(encoded[51], 0x78);
    tk_object_set_prop_uint32(props(), "can_send_data_vkt510a", 0);
    decode();
    EXPECT_EQ(value("can_send_data_vkt510a"), 0x12345678U);
}

TEST_F(vkt510a, bytes_5_to_7_and_22_to_25_keep_the_last_reply) {
    image_bytes reply;
    reply.fill(0x77);
    hold(reply);
    fields_set_defaults(vkt510a_fields, props());
    encode();
    image_bytes expected = default_image;
    for (std::size_t at : {5U, 6U, 7U, 22U, 23U, 24U, 25U}) expected[at] = 0x77;
    EXPECT_THAT(image(), ElementsAreArray(expected));
}

TEST_F(vkt510a, fixed_bytes_are_written_whatever_the_reply_said) {
    image_bytes reply;
    reply.fill(0x77);
    hold(reply);
    encode();
    EXPECT_EQ(image()[1], 8);
    EXPECT_EQ(image()[2], 1);
    EXPECT_EQ(image()[3], 0);
    EXPECT_EQ(image()[58], 1);
    EXPECT_EQ(image()[59], 1);
}

TEST_F(vkt510a, encode_gives_back_what_decode_took) {
    std::mt19937 random(20250929);
    for (int round = 0; round < 200; round++) {
        image_bytes reply{};
        for (uint8_t& b : reply) b = static_cast<uint8_t>(random());
        hold(reply);
        decode();
        encode();
        image_bytes expected = reply;
        expected[1] = 8;
        expected[2] = 1;
        expected[3] = 0;
        expected[58] = 1;
        expected[59] = 1;
        ASSERT_THAT(image(), ElementsAreArray(expected)) << "round " << round;
    }
}

TEST_F(vkt510a, fallbacks_are_the_defaults) {
    for (const field& row : vkt510a_fields) {
        if (row.key != nullptr) {
            EXPECT_EQ(row.fallback, row.number) << row.key;
        }
    }
}

TEST_F(vkt510a, a_reply_is_taken_over_and_shown_as_it_will_be_written) {
    image_bytes reply{};
    for (std::size_t i = 0; i < reply.size(); i++) reply[i] = static_cast<uint8_t>(i + 100);
    dev_accept(dev, reply);
    image_bytes expected = reply;
    expected[1] = 8;
    expected[2] = expected[58] = expected[59] = 1;
    expected[3] = 0;
    EXPECT_THAT(image(), ElementsAreArray(expected));
    EXPECT_EQ(value("uart_bps_vkt510a"), 100U);
}

} // namespace
