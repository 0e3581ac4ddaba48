// The register images of the generic and the A family (one buffer each), the frame that carries an image, and its
// text forms. Every function may be called on any thread; the buffers have a lock of their own.
#pragma once

#include "config/models.h"
#include "config/register_map.h"

#include <array>
#include <cstdint>
#include <functional>
#include <span>
#include <string>

/// The configuration frame: F7 F8 01 3C, the image, the check byte.
inline constexpr std::size_t image_frame_size = 65;
using image_frame_bytes = std::array<uint8_t, image_frame_size>;

/// A copy of a family's image (generic or A; all zero before the first encode).
image_bytes cfg_image_get(family of);
/// Replaces a family's image.
void cfg_image_set(family of, const image_bytes& image);
/// Changes a family's image in place, under its lock. `change` must not call back into this header.
void cfg_image_change(family of, const std::function<void(image_bytes&)>& change);

/// The generic family's map.
std::span<const reg_field> generic_map();

/// Generic family: fills the image from config_store().
void cfg_image_from_props();
/// Generic family: writes config_store() from the image. Acceptance codes 1 to 5 and the send identifier become
/// "00 00 00 00" whatever the image holds: the store then shows them as not set.
void cfg_image_to_props();
/// Generic family: brings the bytes that `key` feeds up to date. RET_FAIL when the map has no such key.
ret_t cfg_image_refresh(const char* key);

/// Generic family: the last state of the home page's "code_mode" switch.
bool cfg_code_mode();
void cfg_code_mode_set(bool on);

/// XOR of the four head bytes (0x32) and the 60 image bytes.
uint8_t image_check(const image_bytes& image);
/// The frame that a write sends and that the code view shows.
image_frame_bytes image_frame(const image_bytes& image);

/// Two sets of blanks: the code view's own, and those that restoring the generic defaults shows.
enum class listing_blanks : uint8_t { show, restore };
/// The frame as text: a brace list of "0x%02X" when `list`, else "%02X" items. The list has no comma after the
/// items 14, 24, .. 64: that is the form that readers of the text expect.
std::string image_listing(const image_bytes& image, bool list, listing_blanks blanks = listing_blanks::show);
