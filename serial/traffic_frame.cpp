#include "serial/traffic_frame.h"

#include "serial/crc16_x25.h"

#include <algorithm>

namespace {

constexpr uint8_t first_start = 0xAA; // and the two after it
constexpr uint8_t command_received = 0x03;
constexpr uint8_t command_sent = 0x04;
constexpr std::size_t beside_length = 4; ///< a frame's bytes that L does not count
constexpr std::size_t length_head = traffic_head - beside_length;

constexpr std::array<uint8_t, traffic_channels> start_of_channel = {0xAA, 0xAA, 0xAB, 0xAC, 0xAC};

bool is_start(uint8_t byte) { return static_cast<uint8_t>(byte - first_start) < 3; }

constexpr std::size_t check_size(bool check) { return check ? traffic_check : 0; }

uint8_t byte_of(std::size_t number, int at = 0) { return static_cast<uint8_t>((number >> (8 * at)) & 0xFF); }

std::size_t data_limit(uint8_t type) {
    return (type & traffic_type_fd) != 0 ? traffic_data_max : traffic_data_classic;
}

/// Where the first start byte stands that has a head's length of bytes; size() without one.
std::size_t find_start(std::span<const uint8_t> bytes) {
    for (std::size_t at = 0; at + traffic_head <= bytes.size(); ++at)
        if (is_start(bytes[at])) return at;
    return bytes.size();
}

/// `size` bytes without the check value behind them.
bool check_is_good(const uint8_t* frame, std::size_t size) {
    const uint16_t crc = crc16_x25(frame, size);
    return frame[size] == byte_of(crc) && frame[size + 1] == byte_of(crc, 1);
}

} // namespace

traffic_wire traffic_frame_build(const traffic_request& request, bool check) {
    traffic_wire wire;
    if (request.channel >= traffic_channels || request.length > traffic_data_max) return wire;
    auto& to = wire.room;
    to[0] = start_of_channel[request.channel];
    to[1] = byte_of(request.length + length_head + check_size(check));
    to[2] = command_sent;
    to[3] = byte_of(request.channel + 1);
    to[4] =
        byte_of((request.format != 0 ? traffic_type_extended : 0) | (request.protocol != 0 ? traffic_type_fd : 0));
    for (int i = 0; i < 4; ++i) to[5 + i] = byte_of(request.identifier, i);
    std::copy_n(request.data.begin(), request.length, to.begin() + traffic_head);
    wire.size = traffic_head + request.length;
    if (!check) return wire;
    const uint16_t crc = crc16_x25(to.data(), wire.size);
    to[wire.size++] = byte_of(crc);
    to[wire.size++] = byte_of(crc, 1);
    return wire;
}

int traffic_frame_parse(std::span<const uint8_t> bytes, bool check, traffic_parsed* found) {
    *found = {};
    found->skipped = find_start(bytes);
    const auto rest = bytes.subspan(found->skipped);
    if (rest.empty()) return traffic_no_start;
    const std::size_t length = rest[1];
    if (length < length_head + check_size(check)) return traffic_length;
    const std::size_t size = length + beside_length;
    if (rest.size() < size) return traffic_cut;
    if (rest[2] != command_received) return traffic_command;
    const std::size_t end = size - check_size(check);
    if (check && !check_is_good(rest.data(), end)) return traffic_check_failed;
    const uint8_t type = rest[4];
    if (end - traffic_head > data_limit(type)) return traffic_data_too_long;
    found->advance = found->skipped + size;
    found->channel = rest[3];
    found->type = type;
    found->identifier = static_cast<uint32_t>(rest[5]) | static_cast<uint32_t>(rest[6]) << 8 |
                        static_cast<uint32_t>(rest[7]) << 16 | static_cast<uint32_t>(rest[8]) << 24;
    found->data = rest.subspan(traffic_head, end - traffic_head);
    return 0;
}
