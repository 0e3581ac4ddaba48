// Traffic frames, byte by byte.
#include "serial/traffic_frame.h"

#include "serial/crc16_x25.h"

#include <gmock/gmock.h>

#include <vector>

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

using bytes = std::vector<uint8_t>;

bytes built(const traffic_request& request, bool check) {
    const traffic_wire wire = traffic_frame_build(request, check);
    return {wire.bytes().begin(), wire.bytes().end()};
}

traffic_request request_of(uint32_t channel, uint32_t identifier, uint32_t format, uint32_t protocol,
                           const bytes& data) {
    traffic_request request{.channel = channel, .identifier = identifier, .format = format, .protocol = protocol};
    request.length = static_cast<uint32_t>(data.size());
    std::copy(data.begin(), data.end(), request.data.begin());
    return request;
}

// ---- to the module

TEST(traffic_frame_build, standard_can_without_check) {
    EXPECT_THAT(built(request_of(0, 0x123, 0, 0, {0x11, 0x22, 0x33}), false),
                ElementsAre(0xAA, 0x08, 0x04, 0x01, 0x00, 0x23, 0x01, 0x00, 0x00, 0x11, 0x22, 0x33));
}

TEST(traffic_frame_build, extended_can_fd_with_check) {
    EXPECT_THAT(built(request_of(2, 0x1FFFFFFF, 1, 1, {0x5A}), true),
                ElementsAre(0xAB, 0x08, 0x04, 0x03, 0x88, 0xFF, 0xFF, 0xFF, 0x1F, 0x5A, 0x06, 0x88));
}

TEST(traffic_frame_build, start_and_channel_bytes) {
    const std::vector<bytes> heads = {{0xAA, 1}, {0xAA, 2}, {0xAB, 3}, {0xAC, 4}, {0xAC, 5}};
    for (uint32_t channel = 0; channel < heads.size(); ++channel) {
        const bytes frame = built(request_of(channel, 1, 0, 0, {}), false);
        ASSERT_EQ(frame.size(), 9u);
        EXPECT_EQ(frame[0], heads[channel][0]);
        EXPECT_EQ(frame[3], heads[channel][1]);
    }
}

TEST(traffic_frame_build, types) {
    EXPECT_EQ(built(request_of(0, 1, 0, 0, {}), false)[4], 0x00);
    EXPECT_EQ(built(request_of(0, 1, 1, 0, {}), false)[4], 0x08);
    EXPECT_EQ(built(request_of(0, 1, 0, 1, {}), false)[4], 0x80);
    EXPECT_EQ(built(request_of(0, 1, 1, 1, {}), false)[4], 0x88);
}

TEST(traffic_frame_build, without_data) {
    EXPECT_THAT(built(request_of(1, 0x7FF, 0, 0, {}), false),
                ElementsAre(0xAA, 0x05, 0x04, 0x02, 0x00, 0xFF, 0x07, 0x00, 0x00));
    EXPECT_EQ(built(request_of(1, 0x7FF, 0, 0, {}), true).size(), 11u);
    EXPECT_EQ(built(request_of(1, 0x7FF, 0, 0, {}), true)[1], 0x07);
}

TEST(traffic_frame_build, the_longest) {
    const bytes frame = built(request_of(4, 0, 0, 1, bytes(64, 0xEE)), true);
    EXPECT_EQ(frame.size(), 75u);
    EXPECT_EQ(frame[1], 71u);
}

TEST(traffic_frame_build, what_cannot_be_sent_is_empty) {
    EXPECT_THAT(built(request_of(5, 1, 0, 0, {}), false), IsEmpty());
    EXPECT_THAT(built(request_of(0xFFFFFFFF, 1, 0, 0, {}), true), IsEmpty());
    traffic_request request = request_of(0, 1, 0, 1, {});
    request.length = 65;
    EXPECT_THAT(built(request, false), IsEmpty());
    EXPECT_EQ(request.bytes().size(), 64u);
}

// ---- from the module

struct outcome {
    int code;
    traffic_parsed found;
};
outcome parse(const bytes& from, bool check = false) {
    outcome out{};
    out.code = traffic_frame_parse(from, check, &out.found);
    return out;
}

const bytes standard = {0xAA, 0x0D, 0x03, 0x01, 0x00, 0x23, 0x01, 0x00, 0x00, 0, 1, 2, 3, 4, 5, 6, 7};

/// Makes the last two bytes the check value of those before them.
bytes with_check(bytes frame) {
    const uint16_t crc = crc16_x25(frame.data(), frame.size());
    frame.push_back(static_cast<uint8_t>(crc & 0xFF));
    frame.push_back(static_cast<uint8_t>(crc >> 8));
    return frame;
}

TEST(traffic_frame_parse, a_standard_frame) {
    const auto [code, found] = parse(standard);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(found.skipped, 0u);
    EXPECT_EQ(found.advance, 17u);
    EXPECT_EQ(found.channel, 1);
    EXPECT_EQ(found.type, 0);
    EXPECT_FALSE(found.extended());
    EXPECT_FALSE(found.fd());
    EXPECT_EQ(found.identifier, 0x123u);
    EXPECT_THAT(found.data, ElementsAre(0, 1, 2, 3, 4, 5, 6, 7));
}

TEST(traffic_frame_parse, an_extended_fd_frame_with_check) {
    const bytes frame = {0xAC, 0x09, 0x03, 0x05, 0x88, 0x78, 0x56, 0x34, 0x12, 0x01, 0x02, 0x79, 0x5F};
    const auto [code, found] = parse(frame, true);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(found.advance, 13u);
    EXPECT_EQ(found.channel, 5);
    EXPECT_TRUE(found.extended());
    EXPECT_TRUE(found.fd());
    EXPECT_EQ(found.identifier, 0x12345678u);
    EXPECT_THAT(found.data, ElementsAre(0x01, 0x02));
}

TEST(traffic_frame_parse, noise_before_the_start_is_skipped_and_counts_as_used) {
    for (const uint8_t start : bytes{0xAA, 0xAB, 0xAC}) {
        bytes frame = standard;
        frame.at(0) = start;
        frame.insert(frame.begin(), {0x00, 0xA9, 0xAD, 0xFF});
        const auto [code, found] = parse(frame);
        EXPECT_EQ(code, 0);
        EXPECT_EQ(found.skipped, 4u);
        EXPECT_EQ(found.advance, 21u);
    }
}

TEST(traffic_frame_parse, no_start) {
    for (std::size_t size = 0; size <= 40; ++size) {
        const auto [code, found] = parse(bytes(size, 0x55));
        EXPECT_EQ(code, traffic_no_start);
        EXPECT_EQ(found.skipped, size);
    }
    EXPECT_EQ(traffic_no_start, -10);
}

// A start byte with fewer than nine bytes from it on is none.
TEST(traffic_frame_parse, a_start_too_near_the_end_is_none) {
    EXPECT_EQ(parse({0xAA, 5, 3, 1, 0, 1, 0, 0}).code, -10);
    EXPECT_EQ(parse({0xAA, 5, 3, 1, 0, 1, 0, 0, 0}).code, 0);
    EXPECT_EQ(parse({0x55, 0xAA, 5, 3, 1, 0, 1, 0, 0}).code, -10);
}

TEST(traffic_frame_parse, cut_at_every_byte) {
    for (std::size_t size = 0; size < standard.size(); ++size) {
        const bytes part(standard.begin(), standard.begin() + static_cast<std::ptrdiff_t>(size));
        EXPECT_EQ(parse(part).code, size < 9 ? -10 : -9) << size;
    }
    EXPECT_EQ(traffic_cut, -9);
}

TEST(traffic_frame_parse, a_length_too_small) {
    for (uint8_t length = 0; length < 8; ++length) {
        bytes frame = standard;
        frame.at(1) = length;
        EXPECT_EQ(parse(frame).code, length < 5 ? -4 : 0) << int{length};
        EXPECT_EQ(parse(frame, true).code, length < 7 ? -4 : -7) << int{length};
    }
}

TEST(traffic_frame_parse, a_foreign_command) {
    for (const uint8_t command : bytes{0x00, 0x02, 0x04, 0xFF}) {
        bytes frame = standard;
        frame.at(2) = command;
        EXPECT_EQ(parse(frame).code, -6);
    }
}

TEST(traffic_frame_parse, every_bit_counts_for_the_check) {
    bytes frame = standard;
    frame.at(1) = 0x0F;
    const bytes good = with_check(frame);
    EXPECT_EQ(parse(good, true).code, 0);
    EXPECT_EQ(parse(good, true).found.data.size(), 8u);
    for (std::size_t at = 3; at < good.size(); ++at)
        for (int bit = 0; bit < 8; ++bit) {
            bytes wrong = good;
            wrong.at(at) = static_cast<uint8_t>(wrong.at(at) ^ (1u << bit));
            EXPECT_EQ(parse(wrong, true).code, -7) << at << ' ' << bit;
        }
}

/// A frame of this type and data length.
bytes frame_of(uint8_t type, std::size_t size, bool check) {
    bytes frame = {0xAA, static_cast<uint8_t>(size + (check ? 7 : 5)), 0x03, 0x01, type, 1, 0, 0, 0};
    frame.resize(9 + size, 0x77);
    return check ? with_check(frame) : frame;
}

TEST(traffic_frame_parse, a_can_frame_has_up_to_8_bytes_and_a_can_fd_frame_64) {
    for (const bool check : {false, true})
        for (std::size_t size = 0; size <= 200; ++size) {
            EXPECT_EQ(parse(frame_of(0x00, size, check), check).code, size <= 8 ? 0 : -8) << size;
            EXPECT_EQ(parse(frame_of(0x08, size, check), check).code, size <= 8 ? 0 : -8) << size;
            EXPECT_EQ(parse(frame_of(0x7F, size, check), check).code, size <= 8 ? 0 : -8) << size;
            EXPECT_EQ(parse(frame_of(0x80, size, check), check).code, size <= 64 ? 0 : -8) << size;
            EXPECT_EQ(parse(frame_of(0x88, size, check), check).code, size <= 64 ? 0 : -8) << size;
        }
}

// The order in which a frame's faults are looked for.
TEST(traffic_frame_parse, the_first_fault_is_answered) {
    EXPECT_EQ(parse({0xAA, 4, 9, 1, 0, 1, 0, 0, 0}).code, -4) << "length before command";
    EXPECT_EQ(parse({0xAA, 6, 9, 1, 0, 1, 0, 0, 0}).code, -9) << "end before command";
    bytes frame = frame_of(0x00, 9, true);
    frame.at(2) = 9;
    EXPECT_EQ(parse(frame, true).code, -6) << "command before check";
    frame.at(2) = 3;
    frame.back() = static_cast<uint8_t>(~frame.back());
    EXPECT_EQ(parse(frame, true).code, -7) << "check before data length";
}

TEST(traffic_frame_parse, a_fault_after_noise_says_how_much_noise_there_was) {
    bytes frame = standard;
    frame.at(2) = 4;
    frame.insert(frame.begin(), {1, 2, 3});
    const auto [code, found] = parse(frame);
    EXPECT_EQ(code, -6);
    EXPECT_EQ(found.skipped, 3u);
    EXPECT_EQ(found.advance, 0u);
}

TEST(traffic_frame_parse, only_the_first_frame_is_taken) {
    bytes two = standard;
    two.insert(two.end(), standard.begin(), standard.end());
    const auto [code, found] = parse(two);
    EXPECT_EQ(code, 0);
    EXPECT_EQ(found.advance, 17u);
    EXPECT_EQ(found.data.size(), 8u);
}

} // namespace
