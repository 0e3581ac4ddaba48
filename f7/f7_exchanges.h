// What the sessions of families with a 60-byte image share: exchanges, requests and the checks of replies.
#pragma once

#include "f7/f7_texts.h"
#include "f7/frame.h"
#include "session/session_run.h"

inline constexpr uint32_t f7_ack_bytes = 6;       ///< handshake and write acknowledgement
inline constexpr uint32_t f7_firmware_bytes = 11; ///< firmware information

// Checks.
std::optional<reply_fault> f7_firmware_fault(const session_run& run);
std::optional<reply_fault> f7_image_check_fault(const session_run& run);
std::optional<reply_fault> f7_image_header_fault(const session_run& run);

/// Keeps the image of a good configuration reply for step_image.
void f7_accept_image(session_run& run);

// Fixed requests.
inline constexpr auto f7_firmware_request = f7_frame(f7_command_firmware, std::span<const uint8_t, 0>());
inline constexpr auto f7_read_request = f7_frame(f7_command_read, std::span<const uint8_t, 0>());

// The exchanges that every such family has word for word.
extern const exchange f7_handshake;
extern const exchange f7_write;

/// The requests of a write: the one frame that carries the image.
std::vector<session_bytes> f7_requests(const dev_obj& dev, session_kind kind, bool alternative);
/// A write's acknowledgement.
session_bytes f7_acknowledgement(std::span<const uint8_t> request);
/// A device's image as what it is.
f7_image f7_image_of(dev_obj& dev);
f7_image_view f7_image_of(const dev_obj& dev);
