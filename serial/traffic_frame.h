// The frames that carry CAN traffic between a module in transfer mode and the program. Builder and parser stand
// side by side.
//
//   start AA, AB or AC | L | 03 from the module, 04 to it | channel 1 to 5 | type | identifier, 4 bytes, low first
//   | data | with a check: CRC-16/X-25 over all before it, low byte first
//
// The whole frame has L + 4 bytes. Bit 3 of the type: extended identifier; bit 7: CAN FD.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

inline constexpr std::size_t traffic_data_max = 64;    ///< data bytes of a CAN FD frame
inline constexpr std::size_t traffic_data_classic = 8; ///< of a CAN frame
inline constexpr std::size_t traffic_head = 9;         ///< bytes before the data
inline constexpr std::size_t traffic_check = 2;        ///< bytes of the check value
inline constexpr std::size_t traffic_frame_max = traffic_head + traffic_data_max + traffic_check;
inline constexpr uint32_t traffic_channels = 5;

inline constexpr uint8_t traffic_type_extended = 0x08;
inline constexpr uint8_t traffic_type_fd = 0x80;

// ---- to the module ----

/// What is to be sent.
struct traffic_request {
    uint32_t channel = 0; ///< 0 to 4
    uint32_t identifier = 0;
    uint32_t format = 0;   ///< 0 standard, 1 extended
    uint32_t protocol = 0; ///< 0 CAN, 1 CAN FD
    uint32_t length = 0;   ///< data bytes, 0 to 64
    std::array<uint8_t, traffic_data_max> data{};

    std::span<const uint8_t> bytes() const {
        return std::span(data).first(length < data.size() ? length : data.size());
    }
};

/// A frame as it goes over the wire.
struct traffic_wire {
    std::array<uint8_t, traffic_frame_max> room{};
    std::size_t size = 0;
    std::span<const uint8_t> bytes() const { return std::span(room).first(size); }
};

/// The frame to the module: the one that is shown and the one that is sent. Empty for a channel above 4 or a length
/// above 64. Any thread.
traffic_wire traffic_frame_build(const traffic_request& request, bool check);

// ---- from the module ----

// Why there is no frame.
inline constexpr int traffic_no_start = -10;     ///< no start byte with 9 bytes from it on
inline constexpr int traffic_cut = -9;           ///< the frame's end is not there
inline constexpr int traffic_length = -4;        ///< L is too small for a frame
inline constexpr int traffic_command = -6;       ///< byte 2 is not 03
inline constexpr int traffic_check_failed = -7;  ///< the check value is wrong
inline constexpr int traffic_data_too_long = -8; ///< more data than the type may have: CAN 8, CAN FD 64 bytes

/// What a parse found.
struct traffic_parsed {
    std::size_t skipped = 0; ///< bytes before the start byte; all of them without one
    std::size_t advance = 0; ///< bytes that a good frame uses up, the skipped ones included
    uint8_t channel = 0;     ///< as it stands in the frame
    uint8_t type = 0;
    uint32_t identifier = 0;
    std::span<const uint8_t> data{}; ///< part of the bytes parsed

    bool extended() const { return (type & traffic_type_extended) != 0; }
    bool fd() const { return (type & traffic_type_fd) != 0; }
};

/// The first frame among `bytes`; noise before its start byte is skipped. 0, or one of the above (then only
/// `skipped` counts of what was found). Any thread.
int traffic_frame_parse(std::span<const uint8_t> bytes, bool check, traffic_parsed* found);
