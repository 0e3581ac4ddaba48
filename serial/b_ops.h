// What the B family's codec brings to its sessions; dev_b fills it at start-up.
#pragma once

#include <array>
#include <cstdint>
#include <span>

inline constexpr uint32_t b_register_count = 34; ///< writable registers, one write frame each
inline constexpr uint32_t b_image_bytes = 140;   ///< what a read-all reply carries: 35 words, the version word last

using b_read_request = std::array<uint8_t, 6>;
using b_write_frame = std::array<uint8_t, 11>;

/// Every function is called on a session thread that holds the device object's mutex. None may touch a widget or
/// take that mutex.
struct b_session_ops {
    /// The read-all request; its start byte is 0xAC with `ac`, else 0xAA.
    b_read_request (*read_request)(bool ac) = nullptr;
    /// Write frame of register `r` (0 to 33) from the 0xAC table with `ac`, else from the 0xAA table.
    b_write_frame (*write_frame)(uint32_t r, bool ac) = nullptr;
    /// Takes a checked reply's 140 bytes into the image, decodes it into the properties, and rebuilds both command
    /// tables and listings.
    void (*accept_image)(std::span<const uint8_t, b_image_bytes> image) = nullptr;
};

/// Before the first B session. Read and write sessions of the family cannot be started without it.
void b_session_ops_register(const b_session_ops& ops);
const b_session_ops& b_session_ops_get();
