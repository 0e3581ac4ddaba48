// Frames F7 F8 command length payload check (XOR of all before it): one builder, one parser, and the text of the
// frame that carries an image. Plain values in, plain values out: any thread.
#pragma once

#include "f7/image.h"
#include "session/code_span.h"

#include <algorithm>
#include <optional>

inline constexpr uint8_t f7_command_write = 0x01, f7_command_handshake = 0x02, f7_command_read = 0x03,
                         f7_command_firmware = 0x04;
inline constexpr uint8_t f7_acknowledged = 0x13; ///< in the place of the length
inline constexpr std::size_t f7_head_size = 4;

/// XOR of all bytes.
constexpr uint8_t f7_check(std::span<const uint8_t> bytes) {
    uint8_t check = 0;
    for (uint8_t byte : bytes) check = static_cast<uint8_t>(check ^ byte);
    return check;
}

/// A whole frame around a payload of N bytes (at most 255).
template <std::size_t N>
constexpr std::array<uint8_t, f7_head_size + N + 1> f7_frame(uint8_t command, std::span<const uint8_t, N> payload) {
    std::array<uint8_t, f7_head_size + N + 1> out = {0xF7, 0xF8, command, static_cast<uint8_t>(N)};
    std::copy(payload.begin(), payload.end(), out.begin() + f7_head_size);
    out.back() = f7_check(std::span<const uint8_t>(out).first(f7_head_size + N));
    return out;
}

inline constexpr std::size_t f7_image_frame_size = f7_head_size + f7_image_size + 1;
using f7_image_frame = std::array<uint8_t, f7_image_frame_size>;
/// The frame that a write sends and that the code view shows.
f7_image_frame f7_write_frame(f7_image_view image);

/// A right XOR at byte `at`, and a zero byte behind it where the reply holds one.
bool f7_check_is_good(std::span<const uint8_t> reply, std::size_t at);
/// Whether a reply begins with F7 F8, the command, and, if given, the byte in the place of the length.
bool f7_starts_with(std::span<const uint8_t> reply, uint8_t command, std::optional<uint8_t> length = {});

/// Two sets of blanks: the code view's own, and those that restoring the generic defaults shows.
enum class listing_blanks : uint8_t { show, restore };
/// The write frame as text: a brace list of "0x%02X" when `list`, else "%02X" items. The list has no comma after
/// the items 14, 24, .. 64: that is the form that readers of the text expect. `spans`, where given, receives where
/// the image's bytes stand.
std::string f7_listing(f7_image_view image, bool list, listing_blanks blanks = listing_blanks::show,
                       code_spans* spans = nullptr);
