#include "serial/crc16_x25.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

uint16_t crc_of(const std::vector<uint8_t>& bytes) { return crc16_x25(bytes.data(), bytes.size()); }

TEST(crc16_x25, check_value) { EXPECT_EQ(crc_of({'1', '2', '3', '4', '5', '6', '7', '8', '9'}), 0x906E); }

TEST(crc16_x25, nothing_is_zero) { EXPECT_EQ(crc16_x25(nullptr, 0), 0x0000); }

// The bytes that follow on the wire are the low byte, then the high byte.
TEST(crc16_x25, read_all_requests) {
    EXPECT_EQ(crc_of({0xAA, 0x02, 0x05, 0xFF}), 0x4635);
    EXPECT_EQ(crc_of({0xAC, 0x02, 0x05, 0xFF}), 0x0DAF);
}

TEST(crc16_x25, write_command_of_register_0) {
    EXPECT_EQ(crc_of({0xAA, 0x07, 0x02, 0xFF, 0x00, 0x01, 0x00, 0x00, 0x00}), 0x2C1D);
}

// Lengths on both sides of whole blocks of eight.
TEST(crc16_x25, bytes_that_count_up) {
    std::vector<uint8_t> bytes;
    for (int i = 0; i < 511; ++i) bytes.push_back(static_cast<uint8_t>(i & 0xFF));
    const auto first = [&bytes](std::size_t size) { return crc16_x25(bytes.data(), size); };
    EXPECT_EQ(first(7), 0xC3F1);
    EXPECT_EQ(first(8), 0x6202);
    EXPECT_EQ(first(9), 0x5F40);
    EXPECT_EQ(first(15), 0xBFAB);
    EXPECT_EQ(first(16), 0x13E9);
    EXPECT_EQ(first(17), 0x9A25);
    EXPECT_EQ(first(511), 0x3606);
}

} // namespace
