// Records and their texts.
#include "monitor/record.h"

#include "monitor/names.h"

#include <gmock/gmock.h>

#include <numeric>
#include <vector>

using testing::ElementsAre;

namespace {

constexpr int64_t noon_us = 1759147509000000; // 2025-09-29 12:05:09

traffic_record with_data(std::size_t size) {
    traffic_record record{};
    record.length = static_cast<uint8_t>(size);
    std::iota(record.data.begin(), record.data.end(), uint8_t{0});
    return record;
}

// ---- names

struct named {
    name_table table;
    std::vector<std::string> names;
};
const std::vector<named>& tables() {
    static const std::vector<named> all = {
        {channel_names, {"uart1-can1", "uart1-can2", "uart2-can2", "spi1-can1", "spi1-can2"}},
        {format_names, {"标准帧", "扩展帧"}},
        {protocol_names, {"can", "canfd"}},
        {protocol_page_names, {"CAN", "CANFD"}},
        {direction_names, {"tx", "rx"}},
        {check_names, {"不带校验", "带校验"}},
    };
    return all;
}

TEST(names, every_value_has_its_name_and_every_name_its_value) {
    for (const named& one : tables()) {
        ASSERT_EQ(one.table.size(), one.names.size());
        for (uint32_t value = 0; value < one.names.size(); ++value) {
            EXPECT_EQ(name_of(one.table, value), one.names[value]);
            EXPECT_EQ(value_of(one.table, one.names[value]), static_cast<int32_t>(value));
        }
    }
}

TEST(names, other_values_are_unknown_and_other_names_have_none) {
    for (const named& one : tables()) {
        EXPECT_STREQ(name_of(one.table, static_cast<uint32_t>(one.names.size())), "未知");
        EXPECT_STREQ(name_of(one.table, 0xFFFFFFFF), "未知");
        for (const char* text : {"", " ", "未知", "uart1-can", "uart1-can11", " can", "Can", "canFD", "标准帧 "})
            EXPECT_EQ(value_of(one.table, text), -1) << text;
    }
}

// ---- from frames

TEST(record, of_a_received_frame) {
    const std::vector<uint8_t> data = {0xDE, 0xAD};
    const traffic_parsed frame{.channel = 4, .type = 0x88, .identifier = 0x1ABCDEF0, .data = data};
    const traffic_record record = record_received(frame, {noon_us + 7, 99});
    EXPECT_EQ(record.at.local_us, noon_us + 7);
    EXPECT_EQ(record.at.steady_us, 99);
    EXPECT_EQ(record.identifier, 0x1ABCDEF0u);
    EXPECT_EQ(record.channel, 3);
    EXPECT_EQ(record.format, 1);
    EXPECT_EQ(record.protocol, 1);
    EXPECT_EQ(record.direction, traffic_direction::rx);
    EXPECT_THAT(record.bytes(), ElementsAre(0xDE, 0xAD));
}

TEST(record, a_foreign_channel_number_counts_as_the_first) {
    const std::vector<int> channels = {0, 0, 1, 2, 3, 4, 0, 0};
    for (std::size_t number = 0; number < channels.size(); ++number)
        EXPECT_EQ(record_received({.channel = static_cast<uint8_t>(number)}, {}).channel, channels[number]);
    EXPECT_EQ(record_received({.channel = 255}, {}).channel, 0);
}

TEST(record, format_and_protocol_are_bits_of_the_type) {
    EXPECT_STREQ(record_type_text(record_received({.type = 0x00}, {})).c_str(), "标准帧-can");
    EXPECT_STREQ(record_type_text(record_received({.type = 0x08}, {})).c_str(), "扩展帧-can");
    EXPECT_STREQ(record_type_text(record_received({.type = 0x80}, {})).c_str(), "标准帧-canfd");
    EXPECT_STREQ(record_type_text(record_received({.type = 0x88}, {})).c_str(), "扩展帧-canfd");
}

TEST(record, of_a_request) {
    traffic_request request{.channel = 2, .identifier = 0x7FF, .format = 0, .protocol = 1, .length = 3};
    request.data = {1, 2, 3, 4};
    const traffic_record record = record_sent(request, {noon_us, 5});
    EXPECT_EQ(record.channel, 2);
    EXPECT_EQ(record.identifier, 0x7FFu);
    EXPECT_EQ(record.protocol, 1);
    EXPECT_EQ(record.direction, traffic_direction::tx);
    EXPECT_THAT(record.bytes(), ElementsAre(1, 2, 3));
}

TEST(record, values_without_a_name_stay_unknown) {
    const traffic_record record =
        record_sent({.channel = 0xFFFFFFFF, .format = 256, .protocol = 0x101, .length = 1000}, {});
    EXPECT_STREQ(record_channel_text(record), "未知");
    EXPECT_EQ(record_type_text(record), "未知-未知");
    EXPECT_EQ(record.length, 64);
}

// ---- texts

TEST(record, texts) {
    traffic_record record = with_data(3);
    record.at.local_us = noon_us + 999999;
    record.channel = 4;
    EXPECT_EQ(record_time_text(record), "2025-09-29 12:05:09");
    EXPECT_STREQ(record_channel_text(record), "spi1-can2");
    EXPECT_STREQ(record_direction_text(record), "tx");
    EXPECT_EQ(record_data_text(record), "00 01 02 ");
    record.direction = traffic_direction::rx;
    EXPECT_STREQ(record_direction_text(record), "rx");
}

TEST(record, an_identifier_has_at_least_two_digits) {
    traffic_record record{};
    EXPECT_EQ(record_id_text(record), "0x00");
    record.identifier = 0xA;
    EXPECT_EQ(record_id_text(record), "0x0a");
    record.identifier = 0x7FF;
    EXPECT_EQ(record_id_text(record), "0x7ff");
    record.identifier = 0xFFFFFFFF;
    EXPECT_EQ(record_id_text(record), "0xffffffff");
}

TEST(record, a_cell_shows_31_bytes_and_cuts_32) {
    EXPECT_EQ(record_data_cell(with_data(0)), "");
    EXPECT_EQ(record_data_cell(with_data(31)), record_data_text(with_data(31)));
    EXPECT_EQ(record_data_cell(with_data(31)).size(), 93u);
    const std::string cut = "00 01 02 03 04 05 06 07 08 09 0A 0B 0C 0D 0E 0F 10 11 12 13 14..";
    ASSERT_EQ(cut.size(), 64u);
    EXPECT_EQ(record_data_cell(with_data(32)), cut);
    EXPECT_EQ(record_data_cell(with_data(64)), cut);
    EXPECT_EQ(record_data_text(with_data(64)).size(), 192u);
}

} // namespace
