// What periodic sending counts up.
#include "monitor/periodic.h"

#include <gmock/gmock.h>

#include <vector>

using testing::ElementsAre;

namespace {

using bytes = std::vector<uint8_t>;

bytes added(bytes data, uint8_t step) {
    periodic_add_data(data, step);
    return data;
}

TEST(periodic_data, the_last_byte_counts) {
    EXPECT_EQ(added({0x00, 0x00}, 1), (bytes{0x00, 0x01}));
    EXPECT_EQ(added({0x12, 0xEF}, 0x10), (bytes{0x12, 0xFF}));
    EXPECT_EQ(added({0x12, 0x34}, 0), (bytes{0x12, 0x34}));
    EXPECT_EQ(added({}, 5), bytes{});
    EXPECT_EQ(added({0xFF}, 1), bytes{0x00});
}

// A carry is the sum less 255.
TEST(periodic_data, a_carry_is_what_the_sum_has_above_255) {
    EXPECT_EQ(added({0xFF, 0xFF}, 1), (bytes{0x00, 0x00}));
    EXPECT_EQ(added({0x00, 0xFF}, 0x10), (bytes{0x10, 0x0F}));
    EXPECT_EQ(added({0x00, 0x00, 0xFF}, 1), (bytes{0x00, 0x01, 0x00}));
    EXPECT_EQ(added({0x00, 0xFF, 0xFF}, 0xFF), (bytes{0xFF, 0xFE, 0xFE}));
    // 0x110 hands on 0x11, 0x109 hands on 0x0A.
    EXPECT_EQ(added({0x07, 0xF8, 0xF0}, 0x20), (bytes{0x11, 0x09, 0x10}));
}

TEST(periodic_identifier, a_standard_one_wraps_above_7ff) {
    EXPECT_EQ(periodic_add_identifier(0x7FE, 1, 0), 0x7FFu);
    EXPECT_EQ(periodic_add_identifier(0x7FF, 1, 0), 0u);
    EXPECT_EQ(periodic_add_identifier(0x700, 0x200, 0), 0u);
    EXPECT_EQ(periodic_add_identifier(5, 0, 0), 5u);
}

TEST(periodic_identifier, an_extended_one_wraps_above_1fffffff) {
    EXPECT_EQ(periodic_add_identifier(0x7FF, 1, 1), 0x800u);
    EXPECT_EQ(periodic_add_identifier(0x1FFFFFFE, 1, 1), 0x1FFFFFFFu);
    EXPECT_EQ(periodic_add_identifier(0x1FFFFFFF, 1, 1), 0u);
}

TEST(periodic_identifier, others_wrap_at_32_bits) {
    EXPECT_EQ(periodic_add_identifier(0x20000000, 1, 2), 0x20000001u);
    EXPECT_EQ(periodic_add_identifier(0xFFFFFFFF, 2, 2), 1u);
    EXPECT_EQ(periodic_add_identifier(10, 0xFFFFFFFF, 0), 9u) << "a step of -1";
    EXPECT_EQ(periodic_add_identifier(0, 0xFFFFFFFF, 0), 0u);
}

TEST(periodic_period, is_a_millisecond_to_an_hour) {
    struct {
        const char* text;
        uint32_t ms;
    } const cases[] = {{"1", 1},
                       {"100", 100},
                       {" 50", 50},
                       {"50 ms", 50},
                       {"3600000", 3600000},
                       {"3600001", 3600000},
                       {"2147483648", 3600000},
                       {"99999999999999999999", 3600000},
                       {"0", 1},
                       {"-1", 1},
                       {"-99999999999999999999", 1},
                       {"", 1},
                       {"soon", 1},
                       {"0x10", 1}};
    for (const auto& one : cases) EXPECT_EQ(periodic_period_ms(one.text), one.ms) << one.text;
}

TEST(periodic_sender_test, counts_up_from_what_was_sent_first) {
    periodic_sender sender;
    traffic_request first{.channel = 3, .identifier = 0x7FE, .length = 2};
    first.data = {0x00, 0xFE, 0x55};
    sender.start(first, {.to_identifier = true, .to_data = true, .identifier = 1, .data = 1});
    EXPECT_EQ(sender.request().identifier, 0x7FEu);
    ASSERT_TRUE(sender.tick(true));
    EXPECT_EQ(sender.request().identifier, 0x7FFu);
    EXPECT_THAT(sender.request().bytes(), ElementsAre(0x00, 0xFF));
    ASSERT_TRUE(sender.tick(true));
    EXPECT_EQ(sender.request().identifier, 0u);
    EXPECT_THAT(sender.request().bytes(), ElementsAre(0x01, 0x00));
    EXPECT_EQ(sender.request().data[2], 0x55) << "behind the data nothing counts";
    EXPECT_EQ(sender.request().channel, 3u);
    EXPECT_EQ(sender.sent(), 2u);
}

TEST(periodic_sender_test, only_what_is_asked_for_counts_up) {
    periodic_sender sender;
    traffic_request first{.identifier = 7, .length = 1};
    sender.start(first, {.identifier = 1, .data = 1});
    ASSERT_TRUE(sender.tick(true));
    EXPECT_EQ(sender.request().identifier, 7u);
    EXPECT_EQ(sender.request().data[0], 0);
    sender.start(first, {.to_identifier = true, .identifier = 2, .data = 1});
    ASSERT_TRUE(sender.tick(true));
    EXPECT_EQ(sender.request().identifier, 9u);
    EXPECT_EQ(sender.request().data[0], 0);
    sender.start(first, {.to_data = true, .identifier = 2, .data = 3});
    ASSERT_TRUE(sender.tick(true));
    EXPECT_EQ(sender.request().identifier, 7u);
    EXPECT_EQ(sender.request().data[0], 3);
}

TEST(periodic_sender_test, a_tick_whose_predecessor_is_not_done_is_left_out_and_counted) {
    periodic_sender sender;
    sender.start({.length = 1}, {.to_identifier = true, .to_data = true, .identifier = 1, .data = 1});
    EXPECT_FALSE(sender.tick(false));
    EXPECT_FALSE(sender.tick(false));
    EXPECT_EQ(sender.request().identifier, 0u);
    EXPECT_EQ(sender.request().data[0], 0);
    EXPECT_EQ(sender.skipped(), 2u);
    EXPECT_EQ(sender.sent(), 0u);
    EXPECT_TRUE(sender.tick(true));
    EXPECT_EQ(sender.request().identifier, 1u);
    sender.start({}, {});
    EXPECT_EQ(sender.skipped(), 0u);
    EXPECT_EQ(sender.sent(), 0u);
}

TEST(periodic_sender_test, nothing_to_count_in_an_empty_frame) {
    periodic_sender sender;
    sender.start({}, {.to_data = true, .data = 1});
    EXPECT_TRUE(sender.tick(true));
    EXPECT_EQ(sender.request().length, 0u);
    EXPECT_EQ(sender.request().data[0], 0);
}

} // namespace
