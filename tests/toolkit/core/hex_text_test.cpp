#include "toolkit/core/hex_text.h"

#include <array>
#include <gmock/gmock.h>

using testing::ElementsAre;

namespace {

std::array<uint8_t, 4> four(std::string_view text) {
    std::array<uint8_t, 4> bytes{0xEE, 0xEE, 0xEE, 0xEE};
    hex_pairs_to_bytes(text, bytes);
    return bytes;
}

TEST(hex_pairs, are_taken_from_fixed_positions) {
    EXPECT_THAT(four("12 34 56 78"), ElementsAre(0x12, 0x34, 0x56, 0x78));
    EXPECT_THAT(four("ff FF aB Cd"), ElementsAre(0xFF, 0xFF, 0xAB, 0xCD));
    EXPECT_THAT(four("12-34x56/78 more"), ElementsAre(0x12, 0x34, 0x56, 0x78));
}

TEST(hex_pairs, missing_or_foreign_ones_parse_as_far_as_digits_go) {
    EXPECT_THAT(four(""), ElementsAre(0, 0, 0, 0));
    EXPECT_THAT(four("1"), ElementsAre(1, 0, 0, 0));
    EXPECT_THAT(four("1g zz 5"), ElementsAre(1, 0, 5, 0));
    EXPECT_THAT(four("12345678"), ElementsAre(0x12, 0x45, 0x78, 0)); // without blanks the positions miss digits
    EXPECT_THAT(four(" 1 -1 +2"), ElementsAre(1, 0xFF, 2, 0));
    EXPECT_THAT(four("\xE4\xB8\xAD\xE6"), ElementsAre(0, 0, 0, 0));
}

TEST(hex_pairs, are_printed_in_either_case) {
    const std::array<uint8_t, 4> bytes{0x00, 0xAB, 0x0C, 0xFF};
    EXPECT_EQ(hex_pairs_from_bytes(bytes), "00 AB 0C FF");
    EXPECT_EQ(hex_pairs_from_bytes(bytes, false), "00 ab 0c ff");
    EXPECT_EQ(hex_digits_from_bytes(bytes), "00AB0CFF");
    EXPECT_EQ(hex_pairs_from_word(0x12345678), "12 34 56 78");
    EXPECT_EQ(hex_pairs_from_word(0xA), "00 00 00 0A");
}

TEST(hex_edit_form, typing_123456789A_gives_12_34_56_78) { EXPECT_EQ(hex_edit_form("123456789A"), "12 34 56 78"); }

TEST(hex_edit_form, typing_FF_gives_00_00_00_FF) { EXPECT_EQ(hex_edit_form("FF"), "00 00 00 FF"); }

TEST(hex_edit_form, typing_1A2_gives_00_00_01_A2) { EXPECT_EQ(hex_edit_form("1A2"), "00 00 01 A2"); }

TEST(hex_edit_form, an_empty_text_gives_zeros) { EXPECT_EQ(hex_edit_form(""), "00 00 00 00"); }

TEST(hex_edit_form, a_text_whose_third_character_is_a_blank_is_left_alone) {
    EXPECT_EQ(hex_edit_form("00 00 00 00"), "00 00 00 00");
    EXPECT_EQ(hex_edit_form("12 3"), "12 3");
    EXPECT_EQ(hex_edit_form("zz "), "zz ");
}

TEST(hex_edit_form, takes_any_character) {
    EXPECT_EQ(hex_edit_form("xyz"), "00 00 0x yz");
    EXPECT_EQ(hex_edit_form("1 2"), "00 00 01  2");
    // Characters of several bytes count by bytes, and the cut at 8 may split one.
    EXPECT_EQ(hex_edit_form("1234567\xE4\xB8\xAD"), "12 34 56 7\xE4");
}

TEST(hex_edit_filter, drops_blanks_then_cuts_then_looks_at_the_last_character) {
    EXPECT_EQ(hex_edit_filter("12G"), "12");
    EXPECT_EQ(hex_edit_filter("12 "), "12");
    EXPECT_EQ(hex_edit_filter("12 34 56 78"), "12345678");
    EXPECT_EQ(hex_edit_filter("123456789"), "12345678");
    EXPECT_EQ(hex_edit_filter("abcdefAF"), "abcdefAF");
    EXPECT_EQ(hex_edit_filter("12型"), "12");
    EXPECT_EQ(hex_edit_filter("1234567型9"), "1234567");
    EXPECT_EQ(hex_edit_filter("1X2"), "1X2"); // only the last character is looked at
    EXPECT_EQ(hex_edit_filter("X"), "");
    EXPECT_EQ(hex_edit_filter("   "), "");
    EXPECT_EQ(hex_edit_filter(""), "");
    EXPECT_EQ(hex_edit_filter("\xAD\xAD"), ""); // no start of a character anywhere
}

TEST(hex_scan, takes_what_a_hex_number_starts_with) {
    uint32_t word = 7;
    EXPECT_TRUE(hex_scan("12345678", &word));
    EXPECT_EQ(word, 0x12345678U);
    EXPECT_TRUE(hex_scan("1x2", &word));
    EXPECT_EQ(word, 1U);
    EXPECT_TRUE(hex_scan("FFFFFFFF", &word));
    EXPECT_EQ(word, 0xFFFFFFFFU);
    EXPECT_TRUE(hex_scan("0x1F", &word));
    EXPECT_EQ(word, 0x1FU);
    EXPECT_FALSE(hex_scan("", &word));
    EXPECT_FALSE(hex_scan("xyz", &word));
    EXPECT_EQ(word, 0x1FU);
}

TEST(hex_edit_filter, keeps_a_last_character_that_is_a_digit_and_no_other) {
    const std::string digits = "0123456789abcdefABCDEF";
    for (int c = '!'; c < 0x7F; c++) {
        const std::string typed = "1" + std::string(1, static_cast<char>(c));
        const bool digit = digits.find(static_cast<char>(c)) != std::string::npos;
        EXPECT_EQ(hex_edit_filter(typed), digit ? typed : "1") << typed;
    }
}

} // namespace
