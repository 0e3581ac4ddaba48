// What the sessions of the generic and the A family share: frames F7 F8 command length payload XOR, their requests
// and the checks of their replies.
#pragma once

#include "serial/session_engine.h"

#include <cstdint>
#include <optional>

/// XOR of all bytes.
uint8_t xor_check(std::span<const uint8_t> bytes);

// Requests.
void f7_handshake_request(session_run& run);
void f7_firmware_request(session_run& run);
void f7_read_request(session_run& run);
void f7_write_request(session_run& run); ///< carries the family's image as it stands

inline constexpr uint32_t f7_ack_bytes = 6;       ///< handshake and write acknowledgement
inline constexpr uint32_t f7_firmware_bytes = 11; ///< firmware information
inline constexpr uint32_t f7_image_bytes = 65;    ///< configuration

// Checks.
std::optional<reply_fault> f7_handshake_fault(const session_run& run);
std::optional<reply_fault> f7_firmware_fault(const session_run& run);
std::optional<reply_fault> f7_image_check_fault(const session_run& run);
std::optional<reply_fault> f7_image_header_fault(const session_run& run);
std::optional<reply_fault> f7_ack_check_fault(const session_run& run);
std::optional<reply_fault> f7_ack_header_fault(const session_run& run);

/// Takes the image of a good configuration reply over.
void f7_accept_image(session_run& run);

// The exchanges that both families have word for word.
extern const exchange f7_handshake;
extern const exchange f7_write;
