// From the texts of the send form to a frame, and what is said instead.
#include "monitor/compose.h"

#include <gtest/gtest.h>

#include <optional>
#include <vector>

namespace {

using bytes = std::vector<uint8_t>;

struct identifier_case {
    const char* text;
    std::optional<uint32_t> standard; ///< nothing: refused
    std::optional<uint32_t> extended;
};
const identifier_case identifiers[] = {
    {"1", 1, 1},
    {"7FF", 0x7FF, 0x7FF},
    {"7ff", 0x7FF, 0x7FF},
    {"0x7fF", 0x7FF, 0x7FF},
    {"0X10", 0x10, 0x10},
    {"  3a ", 0x3A, 0x3A},
    {"0", 0, 0},
    {"000000000000", 0, 0},
    {"0000000007FF", 0x7FF, 0x7FF},
    {"800", {}, 0x800},
    {"1FFFFFFF", {}, 0x1FFFFFFF},
    {"20000000", {}, {}},
    {"FFFFFFFF", {}, {}},
    {"100000001", {}, {}},
    {"1FFFFFFFFFFFFFFFF", {}, {}},
    {"", {}, {}},
    {"   ", {}, {}},
    {"0x", {}, {}},
    {"-1", {}, {}},
    {"g", {}, {}},
    {"12 3", {}, {}},
    {"12z", {}, {}},
    {"标", {}, {}},
};

TEST(compose, an_identifier_is_taken_or_refused_by_its_format) {
    for (const auto& row : identifiers)
        for (const uint32_t format : {0u, 1u}) {
            traffic_request made{.identifier = 99};
            const char* said = compose_request({.format = format}, row.text, "", &made);
            const auto wanted = format == 1 ? row.extended : row.standard;
            EXPECT_EQ(made.identifier, wanted.value_or(99)) << row.text;
            EXPECT_STREQ(said, wanted        ? nullptr
                               : format == 1 ? "当前can类型为扩展帧，id不能超过0x1FFFFFFF"
                                             : "当前can类型为标准帧，id不能超过0x7FF")
                << row.text;
        }
}

TEST(compose, a_format_that_is_neither_is_not_checked) {
    traffic_request made;
    EXPECT_STREQ(compose_request({.format = 2}, "FFFFFFFF", "", &made), nullptr);
    EXPECT_EQ(made.identifier, 0xFFFFFFFF);
}

struct data_case {
    const char* text;
    uint32_t length;
    std::optional<bytes> data; ///< nothing: refused
};
const data_case data_cases[] = {
    {"0011223344", 4, bytes{0x00, 0x11, 0x22, 0x33}},
    {"00 11 22 33", 4, bytes{0x00, 0x11, 0x22, 0x33}},
    {"00 11 2", 4, {}},
    {"00 11 22 33 zz", 4, bytes{0x00, 0x11, 0x22, 0x33}},
    {"00112233zz", 4, bytes{0x00, 0x11, 0x22, 0x33}},
    {"aBCd", 2, bytes{0xAB, 0xCD}},
    {"aB Cd", 2, bytes{0xAB, 0xCD}},
    {"aB  Cd", 2, {}},
    {" aBCd", 2, {}},
    {"0011 2233", 4, {}},
    {"00\t11", 2, {}},
    {"0", 1, {}},
    {"0g", 1, {}},
    {"g0", 1, {}},
    {"", 1, {}},
    {"5A", 1, bytes{0x5A}},
    {"", 0, bytes{}},
    {"rubbish", 0, bytes{}},
};

TEST(compose, data_stand_in_one_of_two_forms) {
    for (const auto& row : data_cases) {
        traffic_request made{.length = 99};
        const char* said = compose_request({.length = row.length}, "1", row.text, &made);
        if (row.data) {
            EXPECT_STREQ(said, nullptr) << row.text;
            EXPECT_EQ(bytes(made.bytes().begin(), made.bytes().end()), *row.data) << row.text;
        } else {
            EXPECT_STREQ(said, "数据有误，请检查数据格式和范围。支持格式：1、aabb 2、aa bb") << row.text;
            EXPECT_EQ(made.length, 99u) << "untouched";
        }
    }
}

TEST(compose, sixty_four_bytes_have_room_in_both_forms_and_no_more_is_read) {
    std::string packed;
    std::string spaced;
    for (int i = 0; i < 64; i++) {
        packed += "5A";
        spaced += i == 0 ? "5A" : " 5A";
    }
    for (const std::string& text : {packed, spaced, spaced + " 5A 5A"}) {
        traffic_request made;
        EXPECT_STREQ(compose_request({.length = 64}, "1", text, &made), nullptr);
        EXPECT_EQ(bytes(made.data.begin(), made.data.end()), bytes(64, 0x5A));
    }
    EXPECT_EQ(compose_data_size(packed + "5A"), 64u);
    // Of a text beyond 200 bytes the rest is not looked at.
    uint32_t identifier = 7;
    EXPECT_FALSE(compose_identifier(std::string(200, ' ') + "1", &identifier));
    EXPECT_TRUE(compose_identifier(std::string(199, ' ') + "12", &identifier));
    EXPECT_EQ(identifier, 1u);
}

TEST(compose, what_the_selectors_say_is_in_the_request) {
    traffic_request made;
    EXPECT_STREQ(compose_request({.channel = 3, .format = 1, .protocol = 1, .length = 2}, "1F", "0102", &made),
                 nullptr);
    EXPECT_EQ(made.channel, 3u);
    EXPECT_EQ(made.format, 1u);
    EXPECT_EQ(made.protocol, 1u);
    EXPECT_EQ(made.length, 2u);
    EXPECT_EQ(made.identifier, 0x1Fu);
}

TEST(compose, the_hint_counts_what_is_typed) {
    EXPECT_EQ(compose_hint("00 11 22", 2), "共 3 字节，发送前 2 字节");
    EXPECT_EQ(compose_hint("0011", 2), "共 2 字节，发送前 2 字节");
    EXPECT_EQ(compose_hint("00 1", 2), "只有 1 字节，长度为 2：格式 aabb 或 aa bb");
    EXPECT_EQ(compose_hint("", 0), "共 0 字节，发送前 0 字节");
}

TEST(compose, a_protocol_has_its_lengths) {
    const auto lengths = [](uint32_t protocol) {
        const auto all = compose_lengths(protocol);
        return std::vector<uint32_t>(all.begin(), all.end());
    };
    EXPECT_EQ(lengths(0), (std::vector<uint32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8}));
    EXPECT_EQ(lengths(1), (std::vector<uint32_t>{0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 16, 20, 24, 32, 48, 64}));
}

} // namespace
