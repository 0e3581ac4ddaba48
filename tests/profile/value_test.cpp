// Values as they are typed and shown, and what differs between two images.
#include "dev_a/fields.h"
#include "dev_b/fields.h"
#include "dev_generic/fields.h"
#include "profile/compare.h"
#include "tests/support/session_fixture.h"

namespace {

using testing::ElementsAre;

/// What a typed text becomes, as it is shown; or "! WHY".
std::string typed(const field& row, const std::string& text) {
    std::string why;
    const auto value = value_typed(row, text, &why);
    return value ? value_shown(row, *value) : "! " + why;
}

TEST(typed_values, choices_by_text_or_number) {
    const field& rate = generic_field::can_rate;
    EXPECT_EQ(typed(rate, "500K"), "500K");
    EXPECT_EQ(typed(rate, "500k"), "500K");
    EXPECT_EQ(typed(rate, "12"), "500K");
    EXPECT_THAT(typed(rate, "17"), testing::StartsWith("! 超出范围，应为 5K | 10K"));
    EXPECT_THAT(typed(rate, "501K"), testing::StartsWith("! 超出范围"));
    EXPECT_THAT(typed(rate, ""), testing::StartsWith("! 超出范围"));
    EXPECT_EQ(typed(generic_field::uart_rate, "9600"), "9600"); // a text, whose number is 6
    EXPECT_EQ(typed(generic_field::uart_rate, "6"), "9600");
    EXPECT_EQ(typed(vkt510a_field::filter_frame, "15"), "15"); // its family takes more than the choices
}

TEST(typed_values, numbers_as_they_are_shown) {
    EXPECT_EQ(typed(generic_field::id_start, "7"), "7");
    EXPECT_EQ(typed(generic_field::id_start, "0x7"), "7");
    EXPECT_EQ(typed(generic_field::id_start, "8"), "! 超出范围，应为 0–7");
    EXPECT_EQ(typed(generic_field::id_start, "-1"), "! 超出范围，应为 0–7");
    EXPECT_EQ(typed(generic_field::id_start, "1.0"), "! 超出范围，应为 0–7");
    EXPECT_EQ(typed(generic_field::id_start, "99999999999999999999"), "! 超出范围，应为 0–7");
    EXPECT_EQ(typed(vkt610b_field::spi_count, "100"), "100");
    EXPECT_EQ(typed(vkt610b_field::spi_count, "101"), "! 超出范围，应为 1–100");
    EXPECT_EQ(typed(vkt610b_field::spi_count, "0"), "! 超出范围，应为 1–100");
    EXPECT_EQ(typed(vkt610b_field::nominal_brp, "0x20003"), "0x00020003");
    EXPECT_EQ(typed(vkt610b_field::nominal_brp, "4294967296"), "! 超出范围，应为 0x00000000–0xFFFFFFFF");
    std::string why;
    EXPECT_EQ(value_typed(vkt610b_field::spi_count, "10", &why)->number, 9u);
}

TEST(typed_values, hex_digits_where_the_unit_is_hex) {
    EXPECT_EQ(typed(generic_field::mask, "12 34 56 78"), "12 34 56 78");
    EXPECT_EQ(typed(generic_field::mask, "0x7ff"), "00 00 07 FF");
    EXPECT_EQ(typed(generic_field::mask, "123456789"), "! 应为 4 个字节的十六进制数，如 00 00 00 00");
    EXPECT_EQ(typed(generic_field::frame_head, "1a"), "1A");
    EXPECT_EQ(typed(generic_field::frame_head, "100"), "! 应为 1 个字节的十六进制数，如 00");
    EXPECT_EQ(typed(vkt510a_field::frame_head, "10"), "10");
    EXPECT_EQ(typed(vkt510a_field::mask, "10"), "00 00 00 10");
    EXPECT_EQ(typed(vkt610b_field::canfd<1>::standard_mask, "7FF"), "00 00 07 FF");
    EXPECT_EQ(typed(vkt610b_field::canfd<1>::standard_mask, "800"), "! 超出范围，应为 00 00 00 00–00 00 07 FF");
}

TEST(typed_values, switches_and_texts) {
    for (const char* on : {"1", "true", "on", "ON", "是"})
        EXPECT_EQ(typed(generic_field::filter_on, on), "是") << on;
    for (const char* off : {"0", "false", "off", "否"})
        EXPECT_EQ(typed(generic_field::filter_on, off), "否") << off;
    EXPECT_EQ(typed(generic_field::filter_on, "2"), "! 超出范围，应为 否 | 是");
    EXPECT_EQ(typed(generic_field::filter_on, "maybe"), "! 超出范围，应为 否 | 是");
    EXPECT_EQ(typed(generic_field::check_byte, "是"), "是");
    EXPECT_EQ(typed(generic_field::check_byte, "1"), "是");
    EXPECT_EQ(typed(generic_field::check_byte, "maybe"), "! 超出范围，应为 否 | 是");
    EXPECT_EQ(typed(generic_field::uart_parity, "无校验"), "无校验");
}

TEST(typed_values, what_is_shown_of_any_value_that_can_be_set_can_be_typed) {
    for (const family_descriptor* of : all_families)
        for (const field* row : fields_by_page(*of)) {
            SCOPED_TRACE(row->key);
            std::vector<field_value> values = {value_default(*row)};
            if (!value_is_text(*row)) {
                values.push_back({row->lowest});
                values.push_back({field_highest(*row)});
                for (const choice_option& choice : row->choices)
                    values.push_back({static_cast<uint32_t>(choice.value)});
            }
            for (const field_value& value : values) {
                if (!value_refusal(*row, value).empty()) continue; // below the lowest choice
                std::string why;
                EXPECT_EQ(value_typed(*row, value_shown(*row, value), &why), value) << why;
            }
            EXPECT_EQ(value_refusal(*row, value_default(*row)), "");
        }
}

TEST(shown_values, with_units_and_places) {
    EXPECT_EQ(value_with_unit(vkt610b_field::spi_time, {9}), "10 ms");
    EXPECT_EQ(value_with_unit(vkt510a_field::mask, {0x7FF}), "00 00 07 FF");
    EXPECT_EQ(value_shown(generic_field::can_rate, {200}), "200"); // no such code
    EXPECT_EQ(value_range(vkt510a_field::send_frame), "扩展帧 | 标准帧 (0–15)");
    EXPECT_EQ(value_place(generic_family, generic_field::can_rate), "byte 4");
    EXPECT_EQ(value_place(generic_family, generic_field::mask), "bytes 10-13");
    EXPECT_EQ(value_place(generic_family, generic_field::uart_control), "");
    EXPECT_EQ(value_place(vkt610b_family, vkt610b_field::canfd<2>::bus_mode), "register 6, bits 16-17");
    EXPECT_EQ(value_place(vkt610b_family, vkt610b_field::canfd<2>::rate_switch), "register 6, bit 20");
    EXPECT_EQ(value_place(vkt610b_family, vkt610b_field::nominal_brp), "register 28");
}

// ---- images ----

std::vector<std::string> differences(const family_descriptor& of, const std::vector<uint8_t>& left,
                                     const std::vector<uint8_t>& right) {
    std::vector<std::string> lines;
    for (const image_difference& one : image_differences(of, left, right))
        lines.push_back(std::string(one.what->key) + " " + value_shown(*one.what, one.left) + " " +
                        value_shown(*one.what, one.right) + (one.always_same ? " always" : ""));
    return lines;
}

TEST(images, differ_by_field_in_the_order_of_the_pages) {
    const auto dev = dev_open(all_families, "VKT531A");
    std::vector<uint8_t> other = dev->image;
    EXPECT_THAT(differences(dev->of, dev->image, other), ElementsAre());
    other[4] = 12;
    other[21] = 5; // an acceptance code that a reply does not bring into the store
    other[42] = 1;
    other[1] = 7; // always written as 8
    other[6] = 1; // no field
    EXPECT_THAT(differences(dev->of, dev->image, other),
                ElementsAre("change_mode 透明带标识转换 透明转换", "uart_bit_num 8 7 always",
                            "can_baud_rate 125K 500K", "can_check1 00 00 00 00 00 00 00 05"));
}

TEST(images, of_registers) {
    const auto dev = dev_open(all_families, "VKT610B");
    std::vector<uint8_t> other = dev->image;
    other[4 * 5 + 2] ^= 0x10; // register 5, bit 20
    other[4 * 26 + 3] = 0x10; // the last extended code's highest byte
    other[4 * 34] = 9;        // the version
    other[4 * 1] ^= 0x01;     // channels
    EXPECT_THAT(differences(dev->of, dev->image, other),
                ElementsAre("change_can_channel_vkt610b 2 1", "canfd1_brs_vkt610b 1 0",
                            "canfd2_check3_e_vkt610b 00 00 00 00 10 00 00 00"));
}

TEST(images, a_default_image_holds_the_defaults) {
    for (const family_descriptor* of : all_families) {
        const auto dev = dev_open(all_families, of->device);
        for (const field* row : fields_by_page(*of)) {
            const auto value = value_in_image(*of, *row, dev->image);
            if (!value) continue;
            EXPECT_EQ(value_shown(*row, *value), value_shown(*row, value_default(*row))) << row->key;
        }
    }
}

TEST(images, hold_a_text_without_a_number) {
    const auto dev = dev_open(all_families, "VKT531A");
    for (const field* row : fields_by_page(dev->of)) {
        const auto value = value_in_image(dev->of, *row, dev->image);
        if (!value) continue;
        EXPECT_EQ(value->text.empty(), !value_is_text(*row)) << row->key;
        EXPECT_TRUE(!value_is_text(*row) || value->number == 0) << row->key;
    }
}

TEST(images, that_end_too_early_hold_nothing) {
    for (const family_descriptor* of : all_families) {
        const auto dev = dev_open(all_families, of->device);
        for (const field& row : of->fields) {
            if (row.key == nullptr || row.place.bits == 0) continue;
            const std::size_t end = of->of_registers ? 4u * row.place.at + 4 : row.place.at + row.place.bytes();
            const std::span<const uint8_t> image = dev->image;
            EXPECT_TRUE(value_in_image(*of, row, image.first(end))) << row.key;
            EXPECT_FALSE(value_in_image(*of, row, image.first(end - 1))) << row.key;
        }
    }
}

} // namespace
