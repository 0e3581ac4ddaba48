// Stand-ins for what the A and B families' rooms bring to their sessions.
#pragma once

#include "serial/b_ops.h"
#include "serial/image_ops.h"

#include <array>
#include <cstdint>
#include <vector>

/// What the fakes were asked, in order, and what they hold.
struct fake_families {
    std::array<uint8_t, session_image_bytes> a_image{};
    std::array<uint8_t, b_image_bytes> b_image{};
    std::vector<const char*> calls;
    bool lock_was_held = true; ///< at each call that needs it
};
fake_families& fakes();

/// Registers both families' operations and empties fakes(). Before dev_open.
void fake_families_register();
