// From the form to the frame: byte for byte for every channel and kind of frame, and what the text becomes.
#include "assistant/send_frame.h"
#include "toolkit/core/hex_text.h"

namespace {

std::string frame(const assistant_form& form) { return hex_pairs_from_bytes(assistant_frame(form).bytes()); }

std::vector<uint8_t> data_of(const std::string& text) {
    const traffic_wire wire = assistant_frame({.speed = 128, .data = text});
    return {wire.bytes().begin() + 9, wire.bytes().end() - 2};
}

struct golden {
    uint32_t channel, format, speed, identifier;
    const char* bytes;
};
constexpr golden all[] = {
    {1, 0, 0, 0x123, "AA 0B 04 01 00 23 01 00 00 DE AD 00 00 CC 60"},
    {1, 8, 0, 0x12345678, "AA 0B 04 01 08 78 56 34 12 DE AD 00 00 80 46"},
    {1, 0, 128, 0x123, "AA 0B 04 01 80 23 01 00 00 DE AD 00 00 1B A4"},
    {1, 8, 128, 0x12345678, "AA 0B 04 01 88 78 56 34 12 DE AD 00 00 57 82"},
    {2, 0, 0, 0x123, "AA 0B 04 02 00 23 01 00 00 DE AD 00 00 A5 14"},
    {2, 8, 0, 0x12345678, "AA 0B 04 02 08 78 56 34 12 DE AD 00 00 E9 32"},
    {2, 0, 128, 0x123, "AA 0B 04 02 80 23 01 00 00 DE AD 00 00 72 D0"},
    {2, 8, 128, 0x12345678, "AA 0B 04 02 88 78 56 34 12 DE AD 00 00 3E F6"},
    {3, 0, 0, 0x123, "AB 0B 04 03 00 23 01 00 00 DE AD 00 00 2F 3D"},
    {3, 8, 0, 0x12345678, "AB 0B 04 03 08 78 56 34 12 DE AD 00 00 63 1B"},
    {3, 0, 128, 0x123, "AB 0B 04 03 80 23 01 00 00 DE AD 00 00 F8 F9"},
    {3, 8, 128, 0x12345678, "AB 0B 04 03 88 78 56 34 12 DE AD 00 00 B4 DF"},
    {4, 0, 0, 0x123, "AC 0B 04 04 00 23 01 00 00 DE AD 00 00 99 E1"},
    {4, 8, 0, 0x12345678, "AC 0B 04 04 08 78 56 34 12 DE AD 00 00 D5 C7"},
    {4, 0, 128, 0x123, "AC 0B 04 04 80 23 01 00 00 DE AD 00 00 4E 25"},
    {4, 8, 128, 0x12345678, "AC 0B 04 04 88 78 56 34 12 DE AD 00 00 02 03"},
    {5, 0, 0, 0x123, "AC 0B 04 05 00 23 01 00 00 DE AD 00 00 BE CD"},
    {5, 8, 0, 0x12345678, "AC 0B 04 05 08 78 56 34 12 DE AD 00 00 F2 EB"},
    {5, 0, 128, 0x123, "AC 0B 04 05 80 23 01 00 00 DE AD 00 00 69 09"},
    {5, 8, 128, 0x12345678, "AC 0B 04 05 88 78 56 34 12 DE AD 00 00 25 2F"},
};

TEST(send_frame, every_channel_and_every_kind_of_frame) {
    for (const golden& one : all)
        EXPECT_EQ(frame({one.channel, one.format, one.speed, one.identifier, "dEaD"}), one.bytes);
}

TEST(send_frame, a_channel_that_is_none_gives_no_frame) {
    EXPECT_EQ(frame({.channel = 0, .data = "11"}), "");
    EXPECT_EQ(frame({.channel = 6, .data = "11"}), "");
}

TEST(send_frame, the_length_is_the_number_of_characters) {
    EXPECT_EQ(data_of(""), std::vector<uint8_t>{});
    EXPECT_EQ(data_of("1"), std::vector<uint8_t>{0x10});
    EXPECT_EQ(data_of("123"), (std::vector<uint8_t>{0x12, 0x30, 0}));
    EXPECT_EQ(data_of("0011223344556677").size(), 16u);
}

TEST(send_frame, of_a_long_text_64_characters_count_and_make_32_bytes) {
    std::vector<uint8_t> expected(32, 0x11);
    expected.resize(64);
    EXPECT_EQ(data_of(std::string(64, '1')), expected);
    EXPECT_EQ(data_of(std::string(64, '1') + std::string(64, '2')), expected);
    EXPECT_EQ(assistant_frame({.data = std::string(64, '1')}).size, 75u);
}

TEST(send_frame, what_is_no_hex_digit_counts_as_0) {
    EXPECT_EQ(data_of("g5"), (std::vector<uint8_t>{0x05, 0}));
    EXPECT_EQ(data_of("5 /:@G`g"), (std::vector<uint8_t>{0x50, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(data_of("09afAF")[1], 0xAF);
}

TEST(send_frame, a_character_counts_once_however_many_bytes_it_has) {
    EXPECT_EQ(data_of("中"), std::vector<uint8_t>{0});
    EXPECT_EQ(data_of("1中2é3"), (std::vector<uint8_t>{0x10, 0x20, 0x30, 0, 0}));
    std::string long_text;
    for (int i = 0; i < 63; ++i) long_text += "中";
    std::vector<uint8_t> expected(64);
    expected[31] = 0x0A;
    EXPECT_EQ(data_of(long_text + "aa"), expected) << "64 of them are read";
    EXPECT_EQ(assistant_hint("1中"), "长度 2：数据 1 字节，补 1 个 00；非十六进制字符为 0");
    EXPECT_EQ(assistant_hint(long_text + "aa"),
              "长度 64：数据 32 字节，补 32 个 00；非十六进制字符为 0；只取前 64 个字符");
    EXPECT_EQ(assistant_hint(long_text + "a").find("只取"), std::string::npos);
}

TEST(send_frame, bounds_follow_the_kind_of_frame) {
    EXPECT_EQ(assistant_identifier_max(0), 4096u);
    EXPECT_EQ(assistant_identifier_max(8), 0x40000000u);
    EXPECT_EQ(assistant_text_max(0), 16u);
    EXPECT_EQ(assistant_text_max(128), 128u);
}

TEST(send_frame, the_hint_says_what_the_frame_carries) {
    EXPECT_EQ(assistant_hint(""), "");
    EXPECT_EQ(assistant_hint("1"), "长度 1：数据 1 字节");
    EXPECT_EQ(assistant_hint("09afAF"), "长度 6：数据 3 字节，补 3 个 00") << "digits all";
    EXPECT_EQ(assistant_hint("1122"), "长度 4：数据 2 字节，补 2 个 00");
    EXPECT_EQ(assistant_hint("11x2"), "长度 4：数据 2 字节，补 2 个 00；非十六进制字符为 0");
    EXPECT_EQ(assistant_hint(std::string(65, 'a')), "长度 64：数据 32 字节，补 32 个 00；只取前 64 个字符");
}

TEST(send_frame, values_have_texts) {
    EXPECT_STREQ(assistant_option_text(assistant_channels, 5), "SPI2_TO_CANFD2");
    EXPECT_STREQ(assistant_option_text(assistant_formats, 8), "扩展帧");
    EXPECT_STREQ(assistant_option_text(assistant_speeds, 0), "CANFD不加速");
    EXPECT_STREQ(assistant_option_text(assistant_channels, 9), "未知");
}

} // namespace
