// How the sessions of the two families with a 60-byte image (generic and A) reach that image. The generic family's
// slot is built in; dev_a registers the A family's at start-up. Encoding and decoding go through the operations of
// the device object (config/dev_obj.h).
#pragma once

#include "config/models.h"

#include <cstdint>
#include <span>

inline constexpr uint32_t session_image_bytes = 60;

/// Both functions are called on a session thread that holds the family's session lock; neither may take that lock
/// or touch a widget.
struct image_ops {
    /// Copies the image as it stands into a write frame.
    void (*copy_out)(std::span<uint8_t, session_image_bytes> image) = nullptr;
    /// Takes the image of a checked reply over.
    void (*put_in)(std::span<const uint8_t, session_image_bytes> image) = nullptr;
};

/// Replaces the slot of a family. Before the first read or write session of that family, which cannot be started
/// without it.
void image_ops_register(family of, const image_ops& ops);
const image_ops& image_ops_of(family of);
