// One step over the bytes that wait.
#include "assistant/frame_walk.h"

namespace {

using bytes = std::vector<uint8_t>;

/// Channel 3, extended CAN FD, identifier 0x12345678, data DE AD 01.
const bytes good = {0xAB, 0x0A, 0x03, 0x03, 0x88, 0x78, 0x56, 0x34, 0x12, 0xDE, 0xAD, 0x01, 0x23, 0x3E};

walk_step look(const bytes& waiting) { return walk_look(waiting, waiting.size()); }

bytes with(bytes head, std::size_t size) {
    head.resize(size, 0x55);
    return head;
}

TEST(frame_walk, nothing_waits) { EXPECT_EQ(look({}).advance, 0u); }

TEST(frame_walk, a_byte_that_starts_nothing_is_one_step) {
    for (const uint8_t byte : bytes{0x00, 0xA9, 0xAD, 0xFF}) {
        const walk_step step = look({byte, 0xAA});
        EXPECT_EQ(step.advance, 1u) << int{byte};
        EXPECT_FALSE(step.frame);
    }
}

TEST(frame_walk, a_start_byte_that_waits_last_has_no_length_yet) {
    EXPECT_EQ(look({0xAA}).advance, 0u);
    EXPECT_EQ(look({0xAC}).advance, 0u);
}

TEST(frame_walk, a_frame_is_looked_at_when_all_of_it_is_there) {
    EXPECT_EQ(look(bytes(good.begin(), good.end() - 1)).advance, 0u);
    const walk_step step = look(good);
    EXPECT_EQ(step.advance, 14u);
    ASSERT_TRUE(step.good);
    EXPECT_EQ(step.parsed.channel, 3);
    EXPECT_EQ(step.parsed.type, 0x88);
    EXPECT_EQ(step.parsed.identifier, 0x12345678u);
    EXPECT_EQ(bytes(step.parsed.data.begin(), step.parsed.data.end()), (bytes{0xDE, 0xAD, 0x01}));
}

TEST(frame_walk, a_bad_frame_is_passed_by_its_length) {
    bytes bad = good;
    bad.back() ^= 1;
    bad.insert(bad.end(), good.begin(), good.end());
    const walk_step step = look(bad);
    EXPECT_EQ(step.advance, 14u);
    EXPECT_TRUE(step.frame);
    EXPECT_FALSE(step.good);
    EXPECT_EQ(look({0xAA, 0x00, 1, 2, 3}).advance, 4u) << "a length of 0";
    EXPECT_EQ(look(with({0xAA, 0xFF}, 259)).advance, 259u) << "the longest";
    EXPECT_EQ(look(with({0xAA, 0xFF}, 258)).advance, 0u);
}

TEST(frame_walk, a_frame_within_a_bad_one_is_none) {
    bytes outer = {0xAA, static_cast<uint8_t>(good.size() + 1), 0x03};
    outer.insert(outer.end(), good.begin(), good.end());
    outer.resize(good.size() + 5, 0);
    EXPECT_TRUE(look(outer).frame);
    EXPECT_FALSE(look(outer).good);
}

TEST(frame_walk, exactly_76_waiting_bytes_are_left_alone) {
    EXPECT_EQ(look(with({}, 75)).advance, 1u);
    EXPECT_EQ(look(with({}, 76)).advance, 0u);
    EXPECT_EQ(look(with({}, 77)).advance, 1u);
    EXPECT_EQ(look(with(good, 76)).advance, 0u);
    EXPECT_TRUE(look(with(good, 77)).good);
}

} // namespace
